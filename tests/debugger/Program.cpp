// The program that tests/debugger/check-printers.py stops in a debugger.
#include <cstdlib>
#include <memory>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"

namespace {

// The debugger stops here. The caller keeps the objects alive.
[[gnu::noinline]] void Stop(const VString& text,
    const VString& emptyText,
    const DOM& document,
    const DOM& emptyDocument,
    const DOMElement& element,
    const StandaloneDOMElement& lightweight,
    const ParseDiagnostic& diagnostic)
{
    if (text.IsEmpty() || !emptyText.IsEmpty() || &document == &emptyDocument || element.IsEmpty() ||
        lightweight.IsEmpty() || diagnostic.message.IsEmpty())
        std::abort();
}

}  // namespace

int main()
{
    DOMParser parser;
    const std::unique_ptr<DOM> document = parser.ParseXmlString(
        "<shop><item price='3' unit='kg'>Tea</item><item>\xC3\x9C \xF0\x9F\x8D\x8E</item></shop>", "shop.xml");
    document->GetDocumentRoot()->GetChildren()[1]->SetElementStartLocation(3, 9);
    const DOM emptyDocument;

    StandaloneDOMElement lightweight("note");
    lightweight.SetAttribute("lang", "de");
    lightweight.AppendText("see ");
    lightweight.AppendChild(std::make_unique<StandaloneDOMElement>("link"));

    DOMParser failing;
    failing.ParseXmlString("<shop>\n  <item></shop>", "broken.xml");

    Stop("caf\xC3\xA9",
        VString(),
        *document,
        emptyDocument,
        *document->GetDocumentRoot(),
        lightweight,
        failing.GetDiagnostics().at(0));
    return 0;
}
