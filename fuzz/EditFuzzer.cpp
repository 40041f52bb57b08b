// Edits a document. The result is well-formed and consists of the original and the edits. It has the tree that the same
// changes of the original's tree make, unless they insert fragments. Values that were set once are not set again.
// Adding an attribute and removing it restores the document. Input: a document, a path, and lines that each begin with
// the kind of a change (see ReadChange).
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
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

// Removes the white space from all texts.
void DropWhiteSpace(DOM& tree)
{
    for (DOMElement& element : DOMElementTraversal::MutablePreorderTraversal(tree.GetRoot())) {
        std::u16string text(element.GetText().View());
        std::erase_if(text, [](char16_t unit) { return unit == ' ' || (unit >= '\t' && unit <= '\r'); });
        element.SetText(VString(text.data(), text.size()));
    }
}

// Makes a change that inserts no fragments in the tree of the original, and compares the tree with the edited text.
void CheckTree(const std::string& original, const VString& path, const ElementChange& change, const std::string& edited)
{
    DOMParser parser;
    const std::unique_ptr<DOM> expected = parser.ParseXmlString(VString::fromStdString(original), "original");
    std::vector<std::unique_ptr<DOMElement>> removed;
    for (DOMElement* element : DOMPath::GetAll(*expected->GetDocumentRoot(), path)) {
        for (const auto& [name, value] : change.setAttributes)
            element->SetAttribute(name, value);
        for (const VString& name : change.removeAttributes)
            element->RemoveAttribute(name);
        if (change.text)
            element->SetText(*change.text);
        if (change.name)
            element->SetName(*change.name);
        if (change.isDeleted)
            removed.push_back(element->GetParent()->RemoveChild(*element));
    }
    const std::unique_ptr<DOM> result = parser.ParseXmlString(VString::fromStdString(edited), "edited");
    // A deleted element takes the white space of its line with it.
    if (change.isDeleted) {
        DropWhiteSpace(*expected);
        DropWhiteSpace(*result);
    }
    Require(*expected == *result, "the edited document has the changed tree");
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
    if (edited && !InsertsFragments(change))
        CheckTree(text, path, change, edited->text);
    if (!edited || !OnlySetsValues(change))
        return 0;
    const std::optional<EditedText> again = Edit(edited->text, path, change);
    Require(again && again->edits.empty(), "a value that is set does not change again");
    return 0;
}
