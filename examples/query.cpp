#include <iostream>

#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"

int main()
{
    const char* text = R"(<library>
  <shelf name="novels">
    <book id="1" lang="en"><title>The Ferry</title></book>
    <book id="2" lang="de"><title>Die Brücke</title></book>
  </shelf>
  <shelf name="maps">
    <book id="3" lang="en"><title>Rivers</title></book>
  </shelf>
</library>)";
    DOMParser parser;
    const auto document = parser.ParseXmlString(text, "library.xml");
    if (document->HasErrors())
        return 1;
    const DOMElement& library = *document->GetDocumentRoot();

    for (const DOMElement& book : DOMPath::Walk(library, "library/shelf/book"))
        std::cout << book.GetAttribute("id") << ": " << book.GetChildText("title") << "\n";

    if (const DOMElement* title = DOMPath::GetFirst(library, "//title"))
        std::cout << "The first title is " << title->GetText() << ".\n";
    if (const DOMElement* german = DOMElementSearch::FindElement(library, "book", 2, "lang", "de"))
        std::cout << "A German book is on the shelf " << german->GetParentAttr("name") << ".\n";

    for (const DOMElement* shelf : library.GetChildren())
        std::cout << "Books on the shelf " << shelf->GetAttribute("name") << ": " << shelf->GetChildren().size()
                  << "\n";
}
