// Compares two documents as trees. Each document is equal to itself. The documents have no differences if and only if
// they have none in the other order, and if and only if their roots have the same content. The differences are about
// nodes of the documents, in order, at most one for each node and attribute, and have a text and a JSON object.
// Input: two documents. If the second is missing, the first is compared with itself.
#include <QJsonDocument>

#include <memory>

#include "fuzz/FuzzSupport.h"
#include "vancoreplatform/DecodingException.h"
#include "vanxml/DiffReport.h"

namespace {

using Kind = TreeDifference::Kind;
constexpr std::uint32_t None = TreeDifference::None;

// Returns null for a document with errors.
std::unique_ptr<ComparedTree> Read(const std::string& text, const VString& name, ContentTable& table)
{
    try {
        auto tree = std::make_unique<ComparedTree>(SourceDocument::Decode(text.data(), text.size(), name), table);
        return tree->Errors().empty() ? std::move(tree) : nullptr;
    } catch (const VIO::DecodingException&) {
        return nullptr;
    }
}

std::size_t CountParts(const ComparedTree& tree)
{
    std::size_t parts = tree.Size();
    for (std::uint32_t node = 0; node < tree.Size(); ++node)
        parts += tree.Node(node).attributeCount;
    return parts;
}

void RequireSide(const ComparedTree& tree, std::uint32_t node, const TreeDifference& difference, std::uint32_t value)
{
    Require(node < tree.Size(), "a difference is about a node of the document");
    if (difference.attribute != None)
        Require(tree.FindAttribute(node, difference.attribute) == value, "an attribute has the value of the document");
    else if (tree.Node(node).IsText())
        Require(tree.Node(node).value == value, "a text is the text of the document");
    else
        Require(value == None, "an element has no value");
}

void RequireDifference(const TreeDifference& difference, const ComparedTree& a, const ComparedTree& b)
{
    const bool hasBoth =
        difference.attribute != None || difference.kind == Kind::Changed || difference.kind == Kind::Moved;
    Require(
        hasBoth || (difference.a == None) == (difference.kind == Kind::Added), "only what is added has no node in A");
    Require(
        hasBoth || (difference.b == None) == (difference.kind == Kind::Removed), "only what is removed has none in B");
    if (hasBoth || difference.a != None)
        RequireSide(a, difference.a, difference, difference.valueA);
    if (hasBoth || difference.b != None)
        RequireSide(b, difference.b, difference, difference.valueB);
    if (difference.kind == Kind::Changed)
        Require(difference.valueA != difference.valueB, "a changed value differs");
    if (difference.kind == Kind::Moved)
        Require(a.Node(difference.a).content == b.Node(difference.b).content, "a moved element is equal");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const std::string textA = parts.Next();
    const std::string textB = parts.IsAtEnd() ? textA : parts.Next();
    ContentTable table;
    const std::unique_ptr<ComparedTree> a = Read(textA, "a", table);
    const std::unique_ptr<ComparedTree> again = Read(textA, "a", table);
    const std::unique_ptr<ComparedTree> b = Read(textB, "b", table);
    Require(!a == !again, "a document is always read alike");
    if (!a || !b)
        return 0;
    Require(DiffTrees(*a, *again, table).empty(), "a document is equal to itself");
    const std::vector<TreeDifference> differences = DiffTrees(*a, *b, table);
    const bool isEqual = a->Node(0).content == b->Node(0).content;
    Require(differences.empty() == isEqual, "there are differences if and only if the documents are not equal");
    Require(DiffTrees(*b, *a, table).empty() == isEqual, "both orders give the same answer");
    Require(differences.size() <= CountParts(*a) + CountParts(*b), "each part has at most one difference");
    const TextStyle style(false);
    const DiffReport report(*a, *b, table, style);
    for (const TreeDifference& difference : differences) {
        RequireDifference(difference, *a, *b);
        Require(report.Format(difference).size() < 16384, "the text of a difference is short");
        const std::string json = report.FormatJson(difference);
        Require(QJsonDocument::fromJson(QByteArray::fromStdString(json)).isObject(), "a difference is a JSON object");
    }
    return 0;
}
