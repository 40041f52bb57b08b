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
    for (const VString& error : price->GetErrors())
        std::cout << error << "\n";
}
