#include <iostream>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

int main()
{
    DOMParser parser;
    const auto document = parser.ParseXmlString("<book lang='de'/>", "book.xml");
    if (document->HasErrors() || !document->GetDocumentRoot())
        return 1;
    const DOMElement& book = *document->GetDocumentRoot();
    std::cout << book.GetName() << ": " << XMLDomFormatter::RenderAsXMLString(book, nullptr, false);
    return 0;
}
