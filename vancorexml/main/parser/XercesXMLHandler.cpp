#include "vancorexml/main/parser/XercesXMLHandler.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/EntityExpansionGuard.h"
#include "vancorexml/main/parser/NulFinder.h"
#include "vancorexml/main/parser/Utf16InputSource.h"
#include "vancorexml/main/parser/XMLParseException.h"
#include "vancorexml/main/parser/XercesColonSanitizer.h"
#include "vancorexml/van-codegen/gen-strings/vancorexml-strings.h"

static_assert(std::is_same_v<XMLCh, char16_t>, "VString and Xerces hold the same code units");

namespace {

// Values and texts repeat within a stretch of a document, but only short ones do. So values and texts of up to
// ShortTextLength code units are shared, in tables of up to ShortTextLimit slots.
constexpr std::size_t ShortTextLimit = 1 << 10;
constexpr std::size_t ShortTextLength = 24;
// A buffer of pending text is freed after its run of text if it has more code units than this.
constexpr std::size_t KeptTextCapacity = 1 << 16;

VString MakeText(std::u16string_view text, SharedTexts& known)
{
    return text.size() <= ShortTextLength ? known.Get(text) : VString(text.data(), text.size());
}

}  // namespace

// The attributes of a start tag, in the form in which Xerces passes them.
class XercesXMLHandler::Attributes final : public TagAttributes {
public:
    Attributes(
        XercesXMLHandler& handler, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count) noexcept
        : m_handler(handler),
          m_attributes(attributes),
          m_count(count)
    {}

    void AddTo(AttributeMap& map) const override;

private:
    XercesXMLHandler& m_handler;
    const xercesc::RefVectorOf<xercesc::XMLAttr>& m_attributes;
    XMLSize_t m_count;
};

void XercesXMLHandler::Attributes::AddTo(AttributeMap& map) const
{
    NameTable& names = m_handler.m_names;
    SharedTexts& values = m_handler.m_values;
    map.reserve(m_count);
    // Xerces rejects a tag with duplicate attributes, so the attributes of the tag are inserted without a lookup.
    // From the first restored colon name or default value on, a name may collide, so each needs a lookup.
    bool isOfTag = true;
    for (XMLSize_t i = 0; i < m_count; ++i) {
        const xercesc::XMLAttr& attribute = *m_attributes.elementAt(i);
        const VString& qname = names.Get(attribute.getQName());
        const std::u16string_view name = XercesColonSanitizer::RestoreNameView(qname.View());
        const bool isRestored = name.size() != qname.View().size();
        isOfTag = isOfTag && !isRestored && attribute.getSpecified();
        if (isOfTag)
            map.InsertNew(qname, MakeText(attribute.getValue(), values));
        else if (!isRestored)
            map.try_emplace(qname, MakeText(attribute.getValue(), values));
        else if (!name.empty())
            map.try_emplace(names.Get(name), MakeText(attribute.getValue(), values));
    }
}

XercesXMLHandler::XercesXMLHandler(std::shared_ptr<TreeBuilder> builder)
    : m_builder(std::move(builder)),
      m_values(ShortTextLimit, SharedTexts::CachePolicy::OnSecondMiss),
      m_texts(ShortTextLimit, SharedTexts::CachePolicy::OnSecondMiss)
{}

XercesXMLHandler::~XercesXMLHandler() = default;

void XercesXMLHandler::SetBuilder(std::shared_ptr<TreeBuilder> builder) noexcept
{
    m_builder = std::move(builder);
    resetErrors();
}

void XercesXMLHandler::BeginParse(const VString& id, const XercesInputSource& source)
{
    m_writtenNames = WrittenNames(source);
    m_sourceId = id;
    m_sourceMap = source.GetSourceMap();
    ForgetText();
}

void XercesXMLHandler::CheckEntitiesOf(const xercesc::InputSource& document) noexcept
{
    m_unchecked = &document;
}

void XercesXMLHandler::EndParse() noexcept
{
    m_unchecked = nullptr;
    ForgetText();
    m_names.Clear();
    m_values.Clear();
    m_texts.Clear();
    m_writtenNames = WrittenNames();
    m_sourceId = VString();
    m_sourceMap.reset();
    m_refusal.reset();
}

void XercesXMLHandler::BeginSchema(const VString& id, const XercesInputSource& source)
{
    m_isLoadingSchema = true;
    m_sourceId = id;
    m_sourceMap = source.GetSourceMap();
}

void XercesXMLHandler::EndSchema() noexcept
{
    m_isLoadingSchema = false;
    m_sourceId = VString();
    m_sourceMap.reset();
}

void XercesXMLHandler::CheckSchema(const xercesc::InputSource& source, std::string_view bytes)
{
    // Most schemas have no document type. Creating a reader for the check made loading a small schema 15 % slower.
    if (Utf16InputSource::IsWellFormed(source, bytes) && bytes.find("<!DOCTYPE") == std::string_view::npos)
        return;
    if (const auto excess = EntityExpansionGuard().CheckSchema(source))
        Refuse(excess->message, source.getSystemId(), 0, 0);
}

void XercesXMLHandler::setDocumentLocator(const xercesc::Locator* locator)
{
    m_locator = locator;
}

void XercesXMLHandler::GrowText(std::size_t length)
{
    m_pendingText.resize(std::max(2 * m_pendingText.size(), m_pendingLength + length + 1));
}

void XercesXMLHandler::ForgetText() noexcept
{
    m_pendingLength = 0;
    if (m_pendingText.size() > KeptTextCapacity)
        m_pendingText = std::vector<XMLCh>();
}

void XercesXMLHandler::FlushText()
{
    if (m_pendingLength == 0)
        return;
    const std::u16string_view pending(m_pendingText.data(), m_pendingLength);
    if (m_builder->WantsText(pending))
        m_builder->Characters(MakeText(pending, m_texts));
    ForgetText();
}

void XercesXMLHandler::startElement(
    const XMLCh* qname, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count)
{
    FlushText();
    m_builder->StartElement(m_names.Get(qname), Attributes(*this, attributes, count));
}

void XercesXMLHandler::endElement()
{
    FlushText();
    m_builder->EndElement();
}

void XercesXMLHandler::internalEntityDecl(const XMLCh*, const XMLCh*)
{
    if (const xercesc::InputSource* const document = std::exchange(m_unchecked, nullptr)) {
        if (const auto excess = EntityExpansionGuard().CheckDocument(*document))
            Refuse(excess->message, m_locator->getSystemId(), excess->line, excess->column);
    }
}

void XercesXMLHandler::externalEntityDecl(const XMLCh* name, const XMLCh*, const XMLCh*)
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    diagnostic.layout = ParseDiagnostic::Layout::ExternalEntity;
    diagnostic.message = CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY);
    diagnostic.sourceId = m_sourceId;
    diagnostic.line = m_locator ? m_locator->getLineNumber() : 0;
    diagnostic.column = m_locator ? m_locator->getColumnNumber() : 0;
    diagnostic.entity = name;
    const VString text = diagnostic.GetText();
    MapPosition(diagnostic);
    m_refusal = std::move(diagnostic);
    m_fatallyErrored = true;
    throw XMLParseException(text);
}

void XercesXMLHandler::MapPosition(ParseDiagnostic& diagnostic)
{
    if (!m_sourceMap)
        return;
    const SourceMap::Position mapped = m_sourceMap->Map({diagnostic.line, diagnostic.column});
    diagnostic.line = mapped.line;
    diagnostic.column = mapped.column;
}

void XercesXMLHandler::Record(ParseDiagnostic::Severity severity,
    const VString& message,
    const VString& id,
    std::uint64_t line,
    std::uint64_t column)
{
    const bool isOfSource = id == m_sourceId;
    ParseDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.layout = ParseDiagnostic::Layout::Fault;
    diagnostic.message = message;
    diagnostic.sourceId = isOfSource ? m_sourceId : id;  // shares the text if it can
    diagnostic.line = line;
    diagnostic.column = column;
    std::vector<VString>& texts = severity == ParseDiagnostic::Severity::Warning ? m_warnings : m_errors;
    texts.push_back(diagnostic.GetText());
    if (isOfSource)
        MapPosition(diagnostic);
    m_diagnostics.push_back(std::move(diagnostic));
    m_fatallyErrored |= severity == ParseDiagnostic::Severity::FatalError;
}

void XercesXMLHandler::Record(ParseDiagnostic::Severity severity, const xercesc::SAXParseException& exception)
{
    Record(severity,
        m_writtenNames.Restore(exception.getMessage()),
        exception.getSystemId(),
        exception.getLineNumber(),
        exception.getColumnNumber());
}

void XercesXMLHandler::warning(const xercesc::SAXParseException& exception)
{
    Record(ParseDiagnostic::Severity::Warning, exception);
}

void XercesXMLHandler::error(const xercesc::SAXParseException& exception)
{
    if (!m_writtenNames.IsAboutDeclaration(exception.getMessage()))
        Record(ParseDiagnostic::Severity::Error, exception);
}

void XercesXMLHandler::fatalError(const xercesc::SAXParseException& exception)
{
    Record(ParseDiagnostic::Severity::FatalError, exception);
}

void XercesXMLHandler::resetErrors()
{
    m_warnings.clear();
    m_errors.clear();
    m_diagnostics.clear();
    m_fatallyErrored = false;
}

void XercesXMLHandler::AbandonExpansion(const VString& message)
{
    Refuse(message, m_locator->getSystemId(), m_locator->getLineNumber(), m_locator->getColumnNumber());
}

void XercesXMLHandler::Refuse(const VString& message, const VString& id, std::uint64_t line, std::uint64_t column)
{
    Record(ParseDiagnostic::Severity::FatalError, message, id, line, column);
    throw ParseAbandoned();
}

void XercesXMLHandler::RefuseNul(const VString& id, std::uint64_t line, std::uint64_t column)
{
    // Xerces words its message about other forbidden characters in this way.
    Refuse("invalid character 0x0", id, line, column);
}

void XercesXMLHandler::RefuseEntity(const xercesc::XMLResourceIdentifier& resource)
{
    const xercesc::Locator* const place = resource.getLocator();
    const VString message = VFormatString("%1 '%2'")
                                .arg(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY))
                                .arg(resource.getSystemId());
    Refuse(message, resource.getBaseURI(), place ? place->getLineNumber() : 0, place ? place->getColumnNumber() : 0);
}

xercesc::InputSource* XercesXMLHandler::resolveEntity(xercesc::XMLResourceIdentifier* resource)
{
    const auto type = resource->getResourceIdentifierType();
    if (type == xercesc::XMLResourceIdentifier::ExternalEntity && m_isLoadingSchema)
        RefuseEntity(*resource);
    if (type != xercesc::XMLResourceIdentifier::SchemaImport && type != xercesc::XMLResourceIdentifier::SchemaInclude)
        return nullptr;
    const std::optional<FoundSchema> schema = m_builder->FindSchema(resource->getBaseURI(), resource->getSystemId());
    if (!schema)
        return nullptr;
    const std::string text = schema->text.toStdString();

    auto bytes = std::make_unique<XMLByte[]>(text.size() + 1);
    std::memcpy(bytes.get(), text.data(), text.size());
    auto source = std::make_unique<xercesc::MemBufInputSource>(
        bytes.get(), text.size(), schema->path.utf16(), true, xercesc::XMLPlatformUtils::fgMemoryManager);
    static_cast<void>(bytes.release());  // the source owns them now
    source->setCopyBufToStream(false);
    source->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    if (const auto nul = NulFinder::Find(*source, text))
        RefuseNul(schema->path, nul->line, nul->column);
    CheckSchema(*source, text);
    return source.release();
}
