// Any bytes are parsed without a crash, and a document without errors is written as one that
// has none either and reads back with the same elements.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Require.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

// The elements' names and attributes; text beside children comes back indented.
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
    Require(!again->HasErrors(), "what is written has no errors");
    Require(Describe(*document) == Describe(*again), "what is written has the same elements");
    return 0;
}
