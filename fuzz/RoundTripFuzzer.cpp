// Writes a document without errors and parses the result. The result has no errors, the same elements and attributes,
// and the same texts except for white space, because writing indents text beside children. All
// ways to write it give the same text.
#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace {

std::u16string WithoutBlanks(const VString& text)
{
    std::u16string result;
    for (const char16_t unit : text.View()) {
        if (unit != u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r')
            result += unit;
    }
    return result;
}

// True if the text has a control character, which only XML 1.1 allows. The writer, which writes XML 1.0, replaces it.
bool HasControlCharacter(const VString& text)
{
    return std::any_of(text.begin(), text.end(), [](char16_t unit) {
        return unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r';
    });
}

bool HasControlCharacters(const DOM& document)
{
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(document.GetRoot())) {
        if (HasControlCharacter(element.GetText()))
            return true;
        for (const auto& [name, value] : element.GetAttributes()) {
            if (HasControlCharacter(value))
                return true;
        }
    }
    return false;
}

void RequireSameElements(const DOM& document, const DOM& other)
{
    auto a = DOMElementTraversal::PreorderTraversal(document.GetRoot()).begin();
    auto b = DOMElementTraversal::PreorderTraversal(other.GetRoot()).begin();
    const auto end = DOMElementTraversal::PreorderTraversal(other.GetRoot()).end();
    for (; a != end && b != end; ++a, ++b) {
        Require(a->GetName() == b->GetName(), "each name survives");
        Require(a->GetAttributes() == b->GetAttributes(), "each attribute survives");
        Require(a->GetChildren().size() == b->GetChildren().size(), "each child survives");
        Require(WithoutBlanks(a->GetText()) == WithoutBlanks(b->GetText()), "each text survives except for blanks");
    }
    Require(a == end && b == end, "each element survives");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static DOMParser parser;
    const auto document = parser.ParseXmlString(std::string(reinterpret_cast<const char*>(data), size), "input");
    if (document->HasErrors() || HasControlCharacters(*document))
        return 0;
    const VString text = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
    XMLStringFormatter writer;
    writer.SetFormatMode(FormatModeContent);
    XMLFormatter::FormatDOM(writer, *document, nullptr, true);
    Require(text == writer.GetOutput(), "the text is that of a writer");
    Require(
        XMLDomFormatter::RenderAsXMLBytes(*document, nullptr, true) == text.toStdString(), "the bytes are the text");
    const auto again = parser.ParseXmlString(text, "written");
    Require(!again->HasErrors(), "the written document has no errors");
    RequireSameElements(*document, *again);
    return 0;
}
