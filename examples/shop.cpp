#include <iostream>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

int main()
{
    DOMParser parser;
    const auto shop =
        parser.ParseXmlString("<shop><item price='3'>Tea</item><item price='5'>Jam</item></shop>", "shop");
    if (shop->HasErrors())
        return 1;
    for (DOMElement* item : DOMPath::GetAll(*shop->GetDocumentRoot(), "shop/item"))
        item->SetAttribute("currency", "EUR");
    std::cout << XMLDomFormatter::RenderAsXMLString(*shop, nullptr, true);
}
