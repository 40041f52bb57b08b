// Loads an arbitrary schema and validates documents with it. The trees are whole, the positions of the diagnostics lie
// in the schema and in the documents, and parsing the first document again after the others gives the same result.
//
// Input: a schema, and the documents as further parts.
#include <memory>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

// Parses documents with one parser and checks each result.
class Checker {
public:
    explicit Checker(const VString& schema) : m_schemaLines(schema.View())
    {
        m_parser.AddXSDInputSource(std::make_unique<StringInputSource>(schema, "schema", false));
    }

    std::unique_ptr<DOM> Parse(const VString& text)
    {
        std::unique_ptr<DOM> document = m_parser.ParseXmlString(text, "document");
        RequireLinks(*document);
        const LineLengths lines(text.View());
        for (const ParseDiagnostic& diagnostic : GetDiagnostics())
            RequirePositionsIn(diagnostic.sourceId == VString("schema") ? m_schemaLines : lines, {diagnostic});
        return document;
    }
    const std::vector<ParseDiagnostic>& GetDiagnostics() const { return m_parser.GetDiagnostics(); }

private:
    DOMParser m_parser;
    LineLengths m_schemaLines;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    InputParts parts(data, size);
    const auto nextText = [&parts] { return VString::fromStdString(parts.Next()); };
    Checker checker(nextText());
    const VString first = parts.IsAtEnd() ? VString("<a/>") : nextText();
    const auto document = checker.Parse(first);
    const std::vector<ParseDiagnostic> diagnostics = checker.GetDiagnostics();
    while (!parts.IsAtEnd())
        checker.Parse(nextText());
    const auto again = checker.Parse(first);
    Require(*document == *again, "a later parse builds the same tree");
    Require(document->GetErrors() == again->GetErrors(), "a later parse reports the same errors");
    Require(diagnostics == checker.GetDiagnostics(), "a later parse reports the same diagnostics");
    return 0;
}
