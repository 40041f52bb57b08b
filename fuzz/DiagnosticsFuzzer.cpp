// Explains the faults of a document, with and without a schema. The explanations agree with the errors of the parse and
// with the text, and their positions lie in the document.
#include <memory>
#include <stdexcept>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

struct ElementCounter : SAXInterface {
    void StartElement(const VString&, const AttributeMap&) override { ++count; }
    void EndElement() override {}
    void Characters(const VString&) override {}

    std::size_t count = 0;
};

void CheckDiagnostics(const Parser& parser, std::size_t elements)
{
    bool hasErrors = false;
    SourcePosition last;
    for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
        hasErrors |= diagnostic.severity != ParseDiagnostic::Severity::Warning;
        Require(!diagnostic.message.IsEmpty(), "each diagnostic has a message");
        Require(diagnostic.sourceId == VString("input"), "each diagnostic names the document");
        Require(diagnostic.end.line == 0 || !IsBefore(diagnostic.end, diagnostic.start), "the end is behind the start");
        Require(!IsBefore(diagnostic.start, last), "the diagnostics are sorted by place");
        last = diagnostic.start;
        // The parse may end inside of a start tag.
        Require(diagnostic.element <= elements + 1, "a diagnostic is about an element of the document");
    }
    Require(hasErrors == parser.HasErrors(), "there is a diagnostic if and only if there is an error");
}

// Requires that the messages tell the truth about the text. They may quote it.
void CheckMessages(const Parser& parser, const std::string& text)
{
    const bool hasText = std::any_of(text.begin(), text.end(), [](char byte) { return byte > ' ' && byte <= '~'; });
    for (const ParseDiagnostic& diagnostic : parser.GetDiagnostics()) {
        const std::string message = diagnostic.message.toStdString();
        const auto says = [&](const char* phrase) {
            return message.find(phrase) != std::string::npos && text.find(phrase) == std::string::npos;
        };
        Require(!hasText || !says("the file is empty"), "only an empty file is called empty");
        Require(!says("IllegalColon"), "names are those of the document");
        Require(!says("::npos"), "no assertion explains a fault");
    }
}

// Parses documents with one parser, which keeps its schema.
class Checker {
public:
    explicit Checker(const char* schema)
    {
        m_parser->SetEnableReferenceChecks(true);
        if (schema == nullptr)
            return;
        m_parser->LoadXSDFile(schema);
        if (m_parser->HasErrors())
            throw std::runtime_error("the schema has errors");
    }

    void Run(InputSource& source, const std::string& text, const LineLengths* lines)
    {
        const auto counter = std::make_shared<ElementCounter>();
        m_parser->Reload(source, counter);
        m_parser->Parse();
        CheckDiagnostics(*m_parser, counter->count);
        CheckMessages(*m_parser, text);
        if (lines != nullptr)
            RequirePositionsIn(*lines, m_parser->GetDiagnostics());
        m_parser->Reload(m_nothing, nullptr);
    }

private:
    StringInputSource m_nothing{VString(), VString(), false};
    std::unique_ptr<XercesXMLParser> m_parser = XercesXMLParser::Create(m_nothing, nullptr);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Checker wellFormed(nullptr);
    static Checker valid(MESSAGES_FOLDER "/orders.xsd");
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const VString text = VString::fromStdString(bytes);
    const LineLengths lines(text.View());
    for (Checker* checker : {&wellFormed, &valid}) {
        Utf8InputSource encoded(bytes, "input", false);
        checker->Run(encoded, bytes, nullptr);
        StringInputSource decoded(text, "input", true);
        checker->Run(decoded, bytes, &lines);
    }
    return 0;
}
