#include <iostream>
#include <memory>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

int main()
{
    const VString schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                           "<xs:element name='price' type='xs:decimal'/>"
                           "</xs:schema>";
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(schema, "price.xsd", false));
    const auto price = parser.ParseXmlString("<price>cheap</price>", "offer.xml");
    for (const DOMParseDiagnostic& each : price->GetParseDiagnostics()) {
        const ParseDiagnostic& fault = each.diagnostic;
        std::cout << fault.sourceId << ":" << fault.start.line << ":" << fault.start.column << ": " << fault.message
                  << "\n";
        if (each.element)
            std::cout << "The text of " << fault.path << " is '" << each.element->GetText() << "'.\n";
    }
}
