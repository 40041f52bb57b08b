#include "vanxml/SchemaText.h"

#include <memory>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/FirstTag.h"

namespace {

// The call stack of the loader in Xerces grows with the depth of the elements.
constexpr int depthLimit = 256;

class SchemaReader : public SAXInterface {
public:
    void StartElement(const VString& name, const AttributeMap&) override
    {
        ++m_depth;
        if (m_depth == 1)
            rootName = name.mid(name.indexOf(u':') + 1);
        isTooDeep |= m_depth > depthLimit;
        redefines |= m_depth == 2 && name.mid(name.indexOf(u':') + 1) == "redefine";
    }
    void EndElement() override { --m_depth; }
    void Characters(const VString&) override {}
    bool IsDone() override { return isTooDeep; }

    VString rootName;  // without its prefix
    bool isTooDeep = false;
    bool redefines = false;

private:
    int m_depth = 0;
};

ParseDiagnostic MakeError(const VString& schema, const VString& message)
{
    ParseDiagnostic error;
    error.code = DiagnosticCode::BadSchema;
    error.message = message;
    error.sourceId = schema;
    return error;
}

}  // namespace

std::vector<ParseDiagnostic> FindSchemaTextErrors(const VString& text, const VString& name)
{
    StringInputSource source(text, name, false);
    const auto reader = std::make_shared<SchemaReader>();
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, reader);
    parser->Parse();
    ThrowIfOutOfMemory(parser->GetDiagnostics());
    std::vector<ParseDiagnostic> errors;
    for (const ParseDiagnostic& diagnostic : parser->GetDiagnostics()) {
        if (!IsError(diagnostic))
            continue;
        errors.push_back(diagnostic);
        errors.back().code = DiagnosticCode::BadSchema;
        errors.back().sourceId = name;
    }
    if (errors.empty() && reader->rootName != "schema") {
        errors.push_back(
            MakeError(name, "this file is not an XML Schema: its first element is '" + reader->rootName + "'"));
    }
    if (reader->isTooDeep)
        errors.push_back(
            MakeError(name, VFormatString("the schema nests elements in more than %1 levels").arg(depthLimit)));
    if (reader->redefines)
        errors.push_back(MakeError(name, "the schema redefines another, which is not supported"));
    return errors;
}

void PlaceAtSchemaLocation(ParseDiagnostic& diagnostic, std::string_view schemaText, std::string_view location)
{
    constexpr std::string_view attribute = "schemaLocation";
    for (std::size_t found = schemaText.find(attribute); found != std::string_view::npos;
         found = schemaText.find(attribute, found + 1)) {
        const std::size_t quote = schemaText.find_first_of("'\"", found);
        const bool isHere = quote != std::string_view::npos && schemaText.substr(quote + 1).starts_with(location) &&
            schemaText.substr(quote + 1 + location.size()).starts_with(schemaText[quote]);
        if (!isHere)
            continue;
        diagnostic.start = FindEnd({1, 1}, schemaText.substr(0, quote + 1));
        diagnostic.end = FindEnd(diagnostic.start, location);
        return;
    }
}
