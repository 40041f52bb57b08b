#include "vanxml/SchemaDriver.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "art-cpp/Activity.h"
#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vansys/LogicException.h"
#include "vanxml/ErrorLines.h"
#include "vanxml/SchemaText.h"

namespace {

// Thrown to end the loading of a schema after its errors were recorded.
struct SchemaRefused {};

// True for the address from which schemas import the attributes of the namespace "xml". The library has already
// loaded this schema.
bool IsXmlNamespaceSchema(const VString& systemId)
{
    return systemId.contains("//www.w3.org/") && systemId.endsWith("/xml.xsd");
}

}  // namespace

// Ignores the content of documents. Finds the schemas that a schema imports or includes.
class SchemaDriver::Handler : public SAXInterfaceExtension {
public:
    void StartElement(const VString&, const AttributeMap&) override {}
    void EndElement() override {}
    void Characters(const VString&) override {}

    void ResolveSchemaPath(VString& pathOut, const VString& baseUri, const VString& systemId) override
    {
        if (systemId.IsEmpty())
            return;  // an import without a schemaLocation
        pathOut = FindSchemaBeside(baseUri, systemId);
        if (pathOut.IsEmpty() && !IsXmlNamespaceSchema(systemId))
            AddMissing(baseUri, systemId);
    }

    VString PreprocessSchemaText(const VString&, const VString& text, const VString& path) override
    {
        RequireLoadable(text, path);
        return text;
    }

    // Records the problems of the text and throws SchemaRefused if there are any.
    void RequireLoadable(const VString& text, const VString& name)
    {
        const std::vector<ParseDiagnostic> errors = FindSchemaTextErrors(text, name);
        problems.insert(problems.end(), errors.begin(), errors.end());
        if (!errors.empty())
            throw SchemaRefused();
    }

    std::vector<ParseDiagnostic> problems;  // of the schema and of all schemas that it imports or includes

private:
    void AddMissing(const VString& schema, const VString& location)
    {
        ParseDiagnostic problem;
        problem.code = DiagnosticCode::MissingSchema;
        problem.message =
            VFormatString("cannot find the schema '%1', which this schema imports or includes").arg(location);
        problem.sourceId = schema;
        problem.attribute = "schemaLocation";
        problem.value = location;
        PlaceAtSchemaLocation(problem, VFile::LoadTextFileAsUtf8(schema, true), location.toStdString());
        problems.push_back(std::move(problem));
    }
};

SchemaDriver::SchemaDriver(const SchemaReference& schema)
    : m_handler(std::make_shared<Handler>()),
      m_nothing(std::make_unique<StringInputSource>(VString(), VString(), false)),
      m_parser(XercesXMLParser::Create(*m_nothing, m_handler))
{
    art::Activity activity("vanxml.load-schema");
    activity.Tag("schema", schema.name);
    m_parser->SetEnableReferenceChecks(true);
    m_parser->SetEnableContent(false);
    std::vector<ParseDiagnostic> loadErrors;
    try {
        Load(schema);
        loadErrors = m_parser->GetDiagnostics();
        ThrowIfOutOfMemory(loadErrors);
    } catch (const SchemaRefused&) {
        // The problems are added below.
    } catch (const LogicException&) {
        throw;  // not caused by the schema
    } catch (const VIO::DecodingException& exception) {
        ParseDiagnostic error = EncodingFaults::Describe(exception.GetBadBytes());
        error.code = DiagnosticCode::BadSchema;
        error.sourceId = exception.GetBadBytes().fileName;
        m_schemaErrors.push_back(std::move(error));
    } catch (const VIO::Exception& exception) {
        AddError(schema.name, exception.GetMessage());
    } catch (const VantoraException& exception) {
        AddError(schema.name, exception.GetConcatenatedMessages());
    }
    // A schema that cannot be read leads to further errors in the schemas that need it.
    AddErrors(schema.name, m_handler->problems.empty() ? loadErrors : m_handler->problems);
}

SchemaDriver::~SchemaDriver() = default;

void SchemaDriver::Load(const SchemaReference& schema)
{
    if (schema.kind == SchemaReference::Kind::Resource)
        m_parser->LoadXSDResource(schema.name);
    if (schema.kind != SchemaReference::Kind::File)
        return;
    LoadFile(schema.name);
    for (const VString& file : schema.moreFiles)
        LoadFile(file);
}

void SchemaDriver::LoadFile(const VString& file)
{
    const VString text = VFile::LoadTextFile(file, true);
    m_handler->RequireLoadable(text, file);
    m_parser->LoadXSDString(text, file);
}

void SchemaDriver::AddErrors(const VString& schema, const std::vector<ParseDiagnostic>& diagnostics)
{
    std::vector<std::pair<ParseDiagnostic, std::size_t>> firstErrors;  // with the number of errors in the same schema
    for (const ParseDiagnostic& diagnostic : diagnostics) {
        if (!IsError(diagnostic))
            continue;
        const auto found = std::find_if(firstErrors.begin(), firstErrors.end(), [&](const auto& first) {
            return first.first.sourceId == diagnostic.sourceId && first.first.code == diagnostic.code &&
                diagnostic.code != DiagnosticCode::MissingSchema;
        });
        if (found == firstErrors.end())
            firstErrors.emplace_back(diagnostic, 1);
        else
            ++found->second;
    }
    for (auto& [error, count] : firstErrors) {
        if (error.code != DiagnosticCode::MissingSchema)
            error.code = DiagnosticCode::BadSchema;
        if (error.sourceId.IsEmpty())
            error.sourceId = schema;
        if (count > 1)
            error.message +=
                VFormatString(" (and %1 more)").arg(VString::number(static_cast<std::uint64_t>(count - 1)));
        m_schemaErrors.push_back(std::move(error));
    }
}

void SchemaDriver::AddError(const VString& schema, const VString& message)
{
    ParseDiagnostic error;
    error.code = DiagnosticCode::BadSchema;
    error.message = message;
    error.sourceId = schema;
    m_schemaErrors.push_back(std::move(error));
}

const std::vector<ParseDiagnostic>& SchemaDriver::Check(InputSource& document)
{
    art::Activity activity("vanxml.validate");
    activity.Tag("file", document.Id());
    m_parser->Reload(document, m_handler);
    m_parser->Parse();
    ThrowIfOutOfMemory(m_parser->GetDiagnostics());
    return m_parser->GetDiagnostics();
}
