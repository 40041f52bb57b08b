// Loads an arbitrary schema and validates documents with it. The trees are whole, the positions of the diagnostics lie
// in the schema and in the documents, and parsing the first document again after the others gives the same result.
//
// Input: a schema, and the documents as further parts. Parts that begin with '+' are schemas too: the first schema gets
// them for its imports and inclusions. A redefinition gets none: the library ignores it.
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

// Answers each request for a schema with the next one of the given texts.
class Includer final : public SAXInterfaceExtension {
public:
    explicit Includer(const std::vector<VString>& schemas) : m_schemas(schemas) {}

    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}
    void ResolveSchemaPath(VString& path, const VString&, const VString&) override
    {
        if (m_next < m_schemas.size())
            path = Path();
    }
    VString PreprocessSchemaText(const VString&, const VString&, const VString&) override
    {
        return m_schemas.at(m_next++);
    }

    bool HasAnswered() const noexcept { return m_next > 0; }

private:
    // Returns a file that exists; its text does not count. The path differs for each schema, because a file that is
    // included already is not read again.
    VString Path() const
    {
        std::string path = MESSAGES_FOLDER;
        for (std::size_t i = 0; i < m_next; ++i)
            path += "/.";
        return VString::fromStdString(path + "/orders.xsd");
    }

    const std::vector<VString>& m_schemas;
    std::size_t m_next = 0;
};

// False if the spelling of a schema shows that it neither imports nor includes another one.
bool MayInclude(const VString& schema)
{
    const auto contains = [&schema](
                              std::u16string_view word) { return schema.View().find(word) < schema.View().size(); };
    return contains(u"import") || contains(u"include") || contains(u"<!ENTITY");
}

// Loads a schema that may name others. Parses the document twice. Returns the messages of all three steps.
std::vector<std::vector<VString>> LoadAndParse(
    const VString& schema, const std::vector<VString>& others, const VString& document)
{
    StringInputSource source(document, "document", true);
    const auto includer = std::make_shared<Includer>(others);
    const auto parser = XercesXMLParser::Create(source, includer);
    StringInputSource schemaSource(schema, "schema", false);
    parser->LoadXSDSource(schemaSource);
    Require(!includer->HasAnswered() || MayInclude(schema), "only an import or an inclusion asks for a schema");
    std::vector<std::vector<VString>> errors{parser->GetErrors()};
    for (int i = 0; i < 2; ++i) {
        source.ResetToStart();
        parser->Parse();
        errors.push_back(parser->GetErrors());
    }
    return errors;
}

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
    const VString schema = VString::fromStdString(parts.Next());
    std::vector<VString> others;
    std::vector<VString> documents;
    while (!parts.IsAtEnd()) {
        const std::string part = parts.Next();
        const bool isSchema = part.starts_with('+');
        (isSchema ? others : documents).push_back(VString::fromStdString(part.substr(isSchema ? 1 : 0)));
    }
    if (documents.empty())
        documents.emplace_back("<a/>");

    Checker checker(schema);
    const auto document = checker.Parse(documents[0]);
    const std::vector<ParseDiagnostic> diagnostics = checker.GetDiagnostics();
    for (std::size_t i = 1; i < documents.size(); ++i)
        checker.Parse(documents[i]);
    const auto again = checker.Parse(documents[0]);
    Require(*document == *again, "a later parse builds the same tree");
    Require(document->GetErrors() == again->GetErrors(), "a later parse reports the same errors");
    Require(diagnostics == checker.GetDiagnostics(), "a later parse reports the same diagnostics");

    if (!others.empty()) {
        const auto errors = LoadAndParse(schema, others, documents[0]);
        Require(errors[1] == errors[2], "a second parse with included schemas reports the same errors");
        Require(errors == LoadAndParse(schema, others, documents[0]), "another parser reports the same errors");
    }
    return 0;
}
