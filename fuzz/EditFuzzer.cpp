// Edits a document. The result is well-formed and consists of the original and the edits. It has the tree that the same
// changes make of the original's tree (see CheckTree). Values that were set once are not set again. Adding an attribute
// and removing it restores the document.
// Input: a document, a path, and lines that each begin with the kind of a change (see ReadChange).
#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"

namespace {

ElementChange ReadChange(const std::string& lines)
{
    ElementChange change;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const VString rest = VString::fromStdString(line.substr(std::min<std::size_t>(1, line.size())));
        const auto equalsSign = line.find('=');
        switch (line.empty() ? '\0' : line[0]) {
        case '+':
            change.setAttributes.emplace_back(VString::fromStdString(line.substr(1, equalsSign - 1)),
                equalsSign == std::string::npos ? VString() : VString::fromStdString(line.substr(equalsSign + 1)));
            break;
        case '-': change.removeAttributes.push_back(rest); break;
        case 't': change.text = rest; break;
        case 'n': change.name = rest; break;
        case 'd': change.isDeleted = true; break;
        case '<': change.before.push_back(rest); break;
        case 'p': change.prepended.push_back(rest); break;
        case 'a': change.appended.push_back(rest); break;
        case '>': change.after.push_back(rest); break;
        default: break;
        }
    }
    return change;
}

bool InsertsFragments(const ElementChange& change)
{
    return !change.before.empty() || !change.prepended.empty() || !change.appended.empty() || !change.after.empty();
}

bool OnlySetsValues(const ElementChange& change)
{
    return !change.name && !change.isDeleted && !InsertsFragments(change);
}

// Returns the tree of a document with all white space.
std::unique_ptr<DOM> ParseExactly(const std::string& text)
{
    StringInputSource source(VString::fromStdString(text), "exact", true);
    std::unique_ptr<DOM> tree = DOMParser().ParseXmlInputSource(source, true);
    Require(!tree->HasErrors(), "an edited document and its fragments are well-formed");
    return tree;
}

bool IsBlank(const VString& text)
{
    const std::u16string_view units = text.View();
    return units.find_first_not_of(u" \t\r\n") == std::u16string_view::npos;
}

// The tree of the original, changed by the operations of DOMElement. It shares no code with the editor's own check of
// its result.
class ChangedTree {
public:
    explicit ChangedTree(const std::string& original) : m_tree(ParseExactly(original))
    {
        const std::size_t begin = std::min(original.find_first_not_of(" \t\r\n"), original.size());
        if (original.compare(begin, 5, "<?xml") == 0)
            m_declaration = original.substr(begin, original.find("?>", begin) + 2 - begin);
        for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(m_tree->GetRoot())) {
            if (element.HasChildren())
                m_laidOut.insert(&element);
        }
    }

    void Apply(const VString& path, const ElementChange& change)
    {
        for (DOMElement* element : DOMPath::GetAll(*m_tree->GetDocumentRoot(), path)) {
            for (const auto& [name, value] : change.setAttributes)
                element->SetAttribute(name, value);
            for (const VString& name : change.removeAttributes)
                element->RemoveAttribute(name);
            if (change.text)
                element->SetText(*change.text);
            if (change.name)
                element->SetName(*change.name);
            if (!change.prepended.empty() || !change.appended.empty())
                m_laidOut.insert(element);
            const DOMElementChildren children = element->GetChildren();
            Insert(*element, change.prepended, children.empty() ? nullptr : children[0]);
            Insert(*element, change.appended, nullptr);
            DOMElement& parent = *element->GetParent();
            Insert(parent, change.before, element);
            Insert(parent, change.after, NextSibling(parent, *element));
            if (change.isDeleted)
                m_deleted.push_back(parent.RemoveChild(*element));
        }
    }

    bool IsTreeOf(const std::string& text) const
    {
        const std::unique_ptr<DOM> other = ParseExactly(text);
        DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement> elements(m_tree->GetRoot());
        DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement> others(other->GetRoot());
        while (const DOMElement* const a = elements.Next()) {
            const DOMElement* const b = others.Next();
            // With equal numbers of children, both walks stay in step.
            if (a->GetName() != b->GetName() || a->GetAttributes() != b->GetAttributes() ||
                a->GetChildren().size() != b->GetChildren().size() || !HasSameText(*a, *b))
                return false;
        }
        return true;
    }

private:
    void Insert(DOMElement& parent, const std::vector<VString>& fragments, const DOMElement* before) const
    {
        for (const VString& fragment : fragments) {
            const std::unique_ptr<DOM> tree = ParseExactly(m_declaration + "<f>" + fragment.toStdString() + "</f>");
            Require(IsBlank(tree->GetDocumentRoot()->GetText()), "a fragment has no text outside of its elements");
            for (const DOMElement* element : tree->GetDocumentRoot()->GetChildren())
                parent.InsertChild(std::make_unique<DOMElement>(*element), before);
        }
    }

    static const DOMElement* NextSibling(const DOMElement& parent, const DOMElement& element)
    {
        const DOMElementConstChildren children = parent.GetChildren();
        const auto next = std::find(children.begin(), children.end(), &element) + 1;
        return next == children.end() ? nullptr : *next;
    }

    // White space does not count if it only arranges the lines of children or inserted comments.
    bool HasSameText(const DOMElement& element, const DOMElement& other) const
    {
        const bool isLaidOut = element.HasChildren() || m_laidOut.count(&element) > 0;
        return element.GetText() == other.GetText() ||
            (isLaidOut && IsBlank(element.GetText()) && IsBlank(other.GetText()));
    }

    std::unique_ptr<DOM> m_tree;
    std::string m_declaration;                           // tells the version of XML
    std::unordered_set<const DOMElement*> m_laidOut;     // elements that have had children, or get fragments
    std::vector<std::unique_ptr<DOMElement>> m_deleted;  // alive, because elements in them may change too
};

// Compares the edited document with the changed tree. Leaves out fragments in a document with a document type: it may
// declare entities and default attributes, which a fragment that is parsed alone would lack.
void CheckTree(const std::string& original, const VString& path, const ElementChange& change, const std::string& edited)
{
    if (InsertsFragments(change) && original.find("<!DOCTYPE") != std::string::npos)
        return;
    ChangedTree expected(original);
    expected.Apply(path, change);
    Require(expected.IsTreeOf(edited), "the edited document has the changed tree");
}

std::optional<EditedText> Edit(const std::string& text, const VString& path, const ElementChange& change)
{
    XMLSourceEditor editor(text, "input");
    editor.Change(path, change);
    std::optional<EditedText> edited = editor.Edit();
    if (!edited) {
        Require(!editor.GetDiagnostics().empty(), "the editor explains why it refuses an edit");
        return edited;
    }
    Require(ApplyEdits(text, edited->edits) == edited->text, "only the bytes of the edits change");
    Require(!DOMParser().ParseXmlString(VString::fromStdString(edited->text), "edited")->HasErrors(),
        "the edited document is well-formed");
    return edited;
}

// Returns the text without the attributes of this name and the white space in front of them, found by their spelling.
std::string WithoutAttribute(std::string text, const std::string& name)
{
    for (std::size_t at = 0; (at = text.find(name + "=", at)) != std::string::npos;) {
        const char quote = text.at(at + name.size() + 1);
        const std::size_t end = text.find(quote, at + name.size() + 2) + 1;
        const std::size_t begin = text.find_last_not_of(" \t\r\n", at - 1) + 1;
        text.erase(begin, end - begin);
        at = begin;
    }
    return text;
}

void CheckAddedAttribute(const std::string& text, const VString& path)
{
    const VString name = "fuzz-added";
    if (text.find("fuzz-added") != std::string::npos)
        return;
    ElementChange adding;
    adding.setAttributes = {{name, "<'&\">"}};
    const std::optional<EditedText> added = Edit(text, path, adding);
    if (!added)
        return;
    Require(WithoutAttribute(added->text, "fuzz-added") == text, "only the attribute is added");
    ElementChange removing;
    removing.removeAttributes = {name};
    const std::optional<EditedText> removed = Edit(added->text, path, removing);
    Require(removed && removed->text == text, "removing an added attribute restores the document");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const std::string text = parts.Next();
    const bool hasPath = !parts.IsAtEnd();
    const VString path = hasPath ? VString::fromStdString(parts.Next()) : VString("//*");
    CheckAddedAttribute(text, path);
    if (parts.IsAtEnd())
        return 0;
    const ElementChange change = ReadChange(parts.Next());
    const std::optional<EditedText> edited = Edit(text, path, change);
    if (edited)
        CheckTree(text, path, change, edited->text);
    if (!edited || !OnlySetsValues(change))
        return 0;
    const std::optional<EditedText> again = Edit(edited->text, path, change);
    Require(again && again->edits.empty(), "a value that is set does not change again");
    return 0;
}
