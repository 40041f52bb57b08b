// Destroys a static parser and a static driver after the exit hook of Xerces: they are constructed before the first use
// of Xerces. Another static object parses in its destructor. Exits with 0 if all this works.

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

DOMParser g_parser;
std::unique_ptr<XercesXMLParser> g_driver;
std::unique_ptr<DOM> g_document;

struct EmptyHandler : SAXInterface {
    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}
};

constexpr char Entities[] = "<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a b CDATA '&e;'>]><a>&e;</a>";

bool ParsesEntities()
{
    DOMParser parser;
    const auto document = parser.ParseXmlString(Entities, "id");
    return !document->HasErrors() && document->GetDocumentRoot()->GetText() == "x" &&
        document->GetDocumentRoot()->GetAttribute("b") == "x";
}

struct ParsesInItsDestructor {
    ~ParsesInItsDestructor()
    {
        if (ParsesEntities())
            return;
        std::fputs("the late parse failed\n", stderr);
        std::_Exit(1);
    }
} g_parsesLate;

}  // namespace

int main()
{
    g_document = g_parser.ParseXmlString("<a :b='1'>text</a>", "id");
    StringInputSource source("<a/>", "id", false);
    g_driver = XercesXMLParser::Create(source, std::make_shared<EmptyHandler>());
    g_driver->Parse();
    if (g_document->HasErrors() || g_driver->HasErrors() || !ParsesEntities()) {
        std::fputs("the documents have errors\n", stderr);
        return 1;
    }
    return 0;
}
