#include <iostream>

#include "vancorexml/main/parser/DOMParser.h"

int main()
{
    const char* text = R"(<shop>
  <item price='3'>Tea</itm>
</shop>)";
    DOMParser parser;
    const auto shop = parser.ParseXmlString(text, "shop.xml");
    for (const ParseDiagnostic& fault : parser.GetDiagnostics()) {
        const bool isWarning = fault.severity == ParseDiagnostic::Severity::Warning;
        std::cout << fault.sourceId << ":" << fault.start.line << ":" << fault.start.column << ": "
                  << (isWarning ? "warning: " : "error: ") << fault.message << "\n";
        if (fault.related)
            std::cout << "  " << fault.related->message << " on line " << fault.related->start.line << "\n";
    }

    // The tree has the elements that were read before the error.
    if (const DOMElement* item = shop->GetElement("item"))
        std::cout << "the price is " << item->GetAttribute("price") << "\n";
}
