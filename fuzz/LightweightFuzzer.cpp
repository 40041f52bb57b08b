// Parses a document into a lightweight tree and into a DOM. Both have the same elements and faults. Copies of the
// lightweight tree are equal to it until they change.
#include <memory>
#include <utility>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"

namespace {

void RequireSameElements(const StandaloneDOMElement& lightweight, const DOM& document)
{
    std::vector<std::pair<const StandaloneDOMElement*, const DOMElement*>> open{{&lightweight, &document.GetRoot()}};
    while (!open.empty()) {
        const auto [a, b] = open.back();
        open.pop_back();
        Require(a->GetName() == b->GetName(), "both trees have the same names");
        Require(a->GetAttributes() == b->GetAttributes(), "both trees have the same attributes");
        Require(a->GetAllText() == b->GetText(), "both trees have the same texts");
        const auto children = a->GetChildren();
        Require(children.size() == b->GetChildren().size(), "both trees have the same numbers of children");
        for (std::size_t i = 0; i < children.size(); ++i)
            open.emplace_back(&children[i].get(), b->GetChildren()[i]);
    }
}

void CheckCopy(StandaloneDOMElement& tree)
{
    const std::unique_ptr<StandaloneDOMElement> copy = tree.Clone();
    Require(*copy == tree, "a copy is equal");
    std::size_t nodes = 0;
    tree.WalkNodes([&nodes](StandaloneDOMElement&) { ++nodes; }, [&nodes](VString&) { ++nodes; });
    Require(nodes == tree.GetChildren().size() + tree.GetTextNodes().size(), "a walk visits each node once");
    copy->EraseAllChildNodes();
    Require(!copy->HasTextOrChildren(), "an erased element has no nodes");
    Require((*copy == tree) == !tree.HasTextOrChildren(), "a changed copy differs");

    auto children = tree.RemoveChildren();
    Require(!tree.HasChildren(), "removed children are gone");
    for (auto& child : children)
        tree.AppendChild(std::move(child));
    Require(tree.GetChildren().size() == children.size(), "appended children are there");
    // Inserts in front of the first equal child.
    if (tree.HasChildren()) {
        const StandaloneDOMElement& last = tree.GetChildren().back();
        tree.InsertChildBefore(last.Clone(), last);
        Require(tree.RemoveChild(last)->GetName() == last.GetName(), "the removed child is the one asked for");
    }
}

// True if the lightweight parser reads the text in another way, because it removes white space in front of it. Then a
// colon at the start begins no name, and other white space than that of XML is gone.
bool IsReadDifferently(const VString& text)
{
    const std::u16string_view document = text.View();
    const std::u16string_view trimmed = document.substr(document.size() - text.trimLeft().View().size());
    const std::size_t blanks = std::min(document.find_first_not_of(u" \t\r\n"), document.size());
    return document.substr(blanks) != trimmed || (blanks > 0 && trimmed.starts_with(u':'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const StandaloneDOMParser lightweightParser;
    static DOMParser parser;
    const VString text = VString::fromUtf8(reinterpret_cast<const char*>(data), size);
    if (IsReadDifferently(text))
        return 0;
    const StandaloneDOMParser::Result result = lightweightParser.ParseXmlString(text, "input");
    const auto document = parser.ParseXmlString(text, "input");
    RequireSameElements(*result.first, *document);
    const std::list<VString> errors = document->GetErrors();
    Require(std::equal(errors.begin(), errors.end(), result.second.begin(), result.second.end()),
        "both parsers report the same errors");
    Require(result.diagnostics == parser.GetDiagnostics(), "both parsers report the same diagnostics");
    CheckCopy(*result.first);
    return 0;
}
