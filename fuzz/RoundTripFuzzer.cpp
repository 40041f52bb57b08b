// Parses arbitrary bytes, which must not crash. Writes a document without errors and parses it again. The result must
// have no errors and the same elements.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Require.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

// Returns the names of the elements with their numbers of children and attributes. Leaves out the text, because
// writing indents text beside children.
std::string Describe(const DOM& document)
{
    std::string description;
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(document.GetRoot())) {
        description += element.GetName().toStdString() + " " + std::to_string(element.GetChildren().size()) + " " +
            std::to_string(element.GetAttributes().size()) + "\n";
    }
    return description;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DOMParser parser;
    const auto document = parser.ParseXmlString(std::string(reinterpret_cast<const char*>(data), size), "input");
    if (document->HasErrors())
        return 0;
    const VString text = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
    const auto again = parser.ParseXmlString(text, "written");
    Require(!again->HasErrors(), "the written document has no errors");
    Require(Describe(*document) == Describe(*again), "the written document has the same elements");
    return 0;
}
