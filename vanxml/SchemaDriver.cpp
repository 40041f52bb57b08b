#include "vanxml/SchemaDriver.h"

#include <QUrl>

#include "vancoreplatform/VFile.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"
#include "vancoreplatform/VPath.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesXMLParser.h"
#include "vansys/LogicException.h"
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

VString Decoded(const VString& systemId)
{
    const QUrl url(systemId.ToQString());
    return url.isLocalFile() ? VString(url.toLocalFile())
                             : VString(QUrl::fromPercentEncoding(systemId.ToQString().toUtf8()));
}

// Resolves the path of a schema against the schema that names it. Returns an empty path if there is no
// such file.
VString FindBeside(const VString& baseUri, const VString& systemId)
{
    VPath folder(baseUri);
    folder.RemoveFilename();
    const VPath plain = folder / VPath(systemId);
    if (MayBeFile(plain.String()))
        return plain.String();
    const VPath decoded = folder / VPath(Decoded(systemId));
    return MayBeFile(decoded.String()) ? decoded.String() : VString();
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
        pathOut = FindBeside(baseUri, systemId);
        if (pathOut.IsEmpty() && !IsXmlNamespaceSchema(systemId)) {
            problems.push_back(VFormatString("Cannot find the schema \"%1\", which \"%2\" imports or includes")
                                   .arg(systemId)
                                   .arg(baseUri));
        }
    }

    VString PreprocessSchemaText(const VString&, const VString& text, const VString& path) override
    {
        RequireLoadable(text, path);
        return text;
    }

    // Records the problems of the text and throws SchemaRefused if there are any.
    void RequireLoadable(const VString& text, const VString& name)
    {
        const std::vector<VString> errors = FindSchemaTextErrors(text, name);
        problems.insert(problems.end(), errors.begin(), errors.end());
        if (!errors.empty())
            throw SchemaRefused();
    }

    std::vector<VString> problems;  // of the schema and of those that it imports or includes
};

SchemaDriver::SchemaDriver(const SchemaReference& schema)
    : m_handler(std::make_shared<Handler>()),
      m_nothing(std::make_unique<StringInputSource>(VString(), VString(), false)),
      m_parser(XercesXMLParser::Create(*m_nothing, m_handler))
{
    try {
        Load(schema);
        m_schemaErrors = m_parser->GetErrors();
    } catch (const SchemaRefused&) {
        // The problems are added below.
    } catch (const LogicException&) {
        throw;  // not caused by the schema
    } catch (const VIO::Exception& exception) {
        m_schemaErrors.push_back(exception.GetMessage());
    } catch (const VantoraException& exception) {
        m_schemaErrors.push_back(exception.GetConcatenatedMessages());
    }
    m_schemaErrors.insert(m_schemaErrors.end(), m_handler->problems.begin(), m_handler->problems.end());
}

SchemaDriver::~SchemaDriver() = default;

void SchemaDriver::Load(const SchemaReference& schema)
{
    if (schema.kind == SchemaReference::Kind::Resource)
        m_parser->LoadXSDResource(schema.name);
    if (schema.kind != SchemaReference::Kind::File)
        return;
    const VString text = VFile::LoadTextFile(schema.name, true);
    m_handler->RequireLoadable(text, schema.name);
    m_parser->LoadXSDString(text, schema.name);
}

const std::vector<ParseDiagnostic>& SchemaDriver::Check(InputSource& document)
{
    m_parser->Reload(document, m_handler);
    m_parser->Parse();
    return m_parser->GetDiagnostics();
}
