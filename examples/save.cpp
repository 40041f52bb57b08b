#include <iostream>

#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

int main()
{
    DOMParser parser;
    const auto shop = parser.ParseXmlString("<shop><item price='3'>Tea</item></shop>", "shop");
    shop->GetElement("item")->SetAttribute("price", "4");
    for (const char* path : {"saved-shop.xml", "no-such-folder/shop.xml"}) {
        try {
            XMLDomFormatter::SaveAsXMLFile(*shop, path, nullptr, true);
            std::cout << parser.ParseXmlFile(path)->GetElement("item")->GetAttribute("price") << "\n";
        } catch (const VIO::Exception& exception) {
            std::cout << exception.what() << "\n";
        }
    }
}
