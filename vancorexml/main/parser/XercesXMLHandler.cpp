#include "vancorexml/main/parser/XercesXMLHandler.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLString.hpp>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/ColonRewriting.h"
#include "vancorexml/main/parser/DeclarationBlank.h"
#include "vancorexml/main/parser/EntityDeclaration.h"
#include "vancorexml/main/parser/EntityExpansionGuard.h"
#include "vancorexml/main/parser/NulFinder.h"
#include "vancorexml/main/parser/PositionCounter.h"
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
// In patterns of schemas. Xerces calls itself for each of them without an allocation, so XercesStackGuard cannot end
// this recursion. Between other nested parentheses, Xerces allocates memory.
constexpr int MostOpenParentheses = 1000;

// Xerces drops other exceptions where it makes a type of a schema. It would then go on without a check of the stack.
struct StackAbandoned : ParseAbandoned, xercesc::OutOfMemoryException {};

VString MakeText(std::u16string_view text, SharedTexts& known)
{
    return text.size() <= ShortTextLength ? known.Get(text) : VString(text.data(), text.size());
}

SourcePosition PositionOf(const xercesc::Locator* locator)
{
    return locator ? SourcePosition{locator->getLineNumber(), locator->getColumnNumber()} : SourcePosition();
}

VString FormatPosition(SourcePosition position)
{
    return VFormatString("(%1,%2)").arg(position.line).arg(position.column);
}

const char* NameOf(ParseDiagnostic::Severity severity) noexcept
{
    switch (severity) {
    case ParseDiagnostic::Severity::Warning: return "Warning";
    case ParseDiagnostic::Severity::Error: return "Error";
    case ParseDiagnostic::Severity::FatalError: return "Fatal Error";
    }
    return "";
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
        const std::u16string_view value = m_handler.RestoreText(attribute.getValue());
        if (isOfTag)
            map.InsertNew(qname, MakeText(value, values));
        else if (!isRestored)
            map.try_emplace(qname, MakeText(value, values));
        else if (!name.empty())
            map.try_emplace(names.Get(name), MakeText(value, values));
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
    m_restoresTexts = m_writtenNames.IsPrefixInserted();
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
    m_restoresTexts = false;
    std::u16string().swap(m_restored);  // an assignment would keep the buffer
    m_sourceId = VString();
    m_sourceMap.reset();
    m_refusal.reset();
}

void XercesXMLHandler::BeginSchema(const VString& id, const XercesInputSource& source, xercesc::MemoryManager& memory)
{
    m_schemaMemory = &memory;
    m_sourceId = id;
    m_sourceMap = source.GetSourceMap();
}

void XercesXMLHandler::EndSchema() noexcept
{
    m_schemaMemory = nullptr;
    m_sourceId = VString();
    m_sourceMap.reset();
}

void XercesXMLHandler::CheckSchema(const xercesc::InputSource& source, std::string_view bytes)
{
    const auto found = std::search_n(bytes.begin(), bytes.end(), MostOpenParentheses + 1, '(');
    if (found != bytes.end()) {
        PositionCounter counter(bytes);
        Refuse(DiagnosticCode::BadSchema,
            VFormatString("a pattern may have at most %1 opening parentheses in a row")
                .arg(std::uint64_t{MostOpenParentheses}),
            source.getSystemId(),
            counter.At(static_cast<std::size_t>(found - bytes.begin())));
    }
    // Most schemas have no document type. Creating a reader for the check made loading a small schema 15 % slower.
    if (Utf16InputSource::IsWellFormed(source, bytes) && bytes.find("<!DOCTYPE") == std::string_view::npos)
        return;
    if (const auto excess = EntityExpansionGuard().CheckSchema(source))
        Refuse(DiagnosticCode::ExpansionLimit, excess->message, source.getSystemId(), SourcePosition());
}

VString XercesXMLHandler::FormatMessage(
    ParseDiagnostic::Severity severity, const VString& message, const VString& id, SourcePosition position)
{
    const bool hasPosition = position.line != 0 || position.column != 0;
    return VFormatString("%1%2: %3 (id: %4)")
        .arg(NameOf(severity))
        .arg(hasPosition ? FormatPosition(position) : VString())
        .arg(message)
        .arg(id);
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

std::u16string_view XercesXMLHandler::RestoreText(std::u16string_view text)
{
    constexpr std::u16string_view prefix = ColonRewriting::ReadPrefix;
    std::size_t found = m_restoresTexts ? text.find(prefix) : std::u16string_view::npos;
    if (found == std::u16string_view::npos)
        return text;
    m_restored.clear();
    // The prefix ends with the colon of the document.
    for (std::size_t copied = 0; copied < text.size(); found = text.find(prefix, copied)) {
        m_restored += text.substr(copied, found - copied);
        copied = found == std::u16string_view::npos ? text.size() : found + prefix.size() - 1;
    }
    return m_restored;
}

void XercesXMLHandler::FlushText()
{
    if (m_pendingLength == 0)
        return;
    const std::u16string_view pending = RestoreText({m_pendingText.data(), m_pendingLength});
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
        if (const auto excess = EntityExpansionGuard().CheckDocument(*document)) {
            Refuse(DiagnosticCode::ExpansionLimit,
                excess->message,
                m_locator->getSystemId(),
                {excess->line, excess->column});
        }
    }
}

void XercesXMLHandler::externalEntityDecl(const XMLCh* name, const XMLCh*, const XMLCh*)
{
    const SourcePosition position = PositionOf(m_locator);
    ParseDiagnostic diagnostic;
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    diagnostic.code = DiagnosticCode::ExternalEntity;
    diagnostic.message = VFormatString("the document declares the external entity '%1', but external entities are "
                                       "never read; remove the declaration")
                             .arg(name);
    diagnostic.sourceId = m_sourceId;
    diagnostic.start = MapPosition(position);
    diagnostic.value = name;
    m_refusal = std::move(diagnostic);
    throw XMLParseException(VFormatString("%1%2 '%3'")
                                .arg(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY))
                                .arg(FormatPosition(position))
                                .arg(name));
}

void XercesXMLHandler::LocateRefusal(std::string_view text)
{
    if (!m_refusal)
        return;
    // Xerces puts "%" in front of the name of a parameter entity.
    const std::string written = m_refusal->value.toStdString();
    const std::string name = written.substr(written.starts_with('%') ? 1 : 0);
    if (const std::optional<EntityDeclaration> declaration = FindEntityDeclaration(text, name)) {
        PositionCounter counter(text);
        m_refusal->start = MapPosition(counter.At(declaration->nameStart));
        m_refusal->end = MapPosition(counter.At(declaration->nameEnd));
    }
}

SourcePosition XercesXMLHandler::MapPosition(SourcePosition scanned)
{
    return m_sourceMap ? m_sourceMap->Map(scanned) : scanned;
}

void XercesXMLHandler::Record(ParseDiagnostic::Severity severity,
    DiagnosticCode code,
    const VString& message,
    const VString& id,
    SourcePosition position)
{
    const bool isOfSource = id == m_sourceId;
    ParseDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.code = code;
    diagnostic.message = message;
    diagnostic.sourceId = isOfSource ? m_sourceId : id;  // shares the text if it can
    diagnostic.start = isOfSource ? MapPosition(position) : position;
    std::vector<VString>& texts = severity == ParseDiagnostic::Severity::Warning ? m_warnings : m_errors;
    texts.push_back(FormatMessage(severity, message, id, position));
    m_diagnostics.push_back(std::move(diagnostic));
    m_fatallyErrored |= severity == ParseDiagnostic::Severity::FatalError;
}

void XercesXMLHandler::Record(ParseDiagnostic::Severity severity, const xercesc::SAXParseException& exception)
{
    Record(severity,
        m_schemaMemory ? DiagnosticCode::BadSchema : DiagnosticCode::Other,
        m_writtenNames.Restore(exception.getMessage()),
        exception.getSystemId(),
        {exception.getLineNumber(), exception.getColumnNumber()});
}

void XercesXMLHandler::warning(const xercesc::SAXParseException& exception)
{
    Record(ParseDiagnostic::Severity::Warning, exception);
}

void XercesXMLHandler::error(const xercesc::SAXParseException& exception)
{
    // Refuse ends a validation by an exception. Xerces reports that exception here too; it is recorded already.
    if (!m_fatallyErrored && !m_writtenNames.IsAboutDeclaration(exception.getMessage()))
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
    Refuse(DiagnosticCode::ExpansionLimit, message, m_locator->getSystemId(), PositionOf(m_locator));
}

void XercesXMLHandler::Refuse(DiagnosticCode code, const VString& message, const VString& id, SourcePosition position)
{
    Record(ParseDiagnostic::Severity::FatalError, code, message, id, position);
    throw ParseAbandoned();
}

void XercesXMLHandler::RefuseDeepStack()
{
    const char* const message = m_schemaMemory
        ? "the schema needs more call stack than the thread has"
        : "the document needs more call stack than the thread has; a value may be too long for the "
          "pattern of its type";
    Record(ParseDiagnostic::Severity::FatalError,
        m_schemaMemory ? DiagnosticCode::BadSchema : DiagnosticCode::Other,
        message,
        m_sourceId,
        m_schemaMemory ? SourcePosition() : PositionOf(m_locator));
    throw StackAbandoned();
}

void XercesXMLHandler::RefuseNul(const VString& id, SourcePosition position)
{
    // Xerces words its message about other forbidden characters in this way.
    Refuse(DiagnosticCode::InvalidCharacter, "invalid character 0x0", id, position);
}

void XercesXMLHandler::RefuseEntity(const xercesc::XMLResourceIdentifier& resource)
{
    const VString message = VFormatString("%1 '%2'")
                                .arg(CoreXml::GetLocalizedString(CoreXml::IDS_ERR_XML_ENTITY))
                                .arg(resource.getSystemId());
    Refuse(DiagnosticCode::ExternalEntity, message, resource.getBaseURI(), PositionOf(resource.getLocator()));
}

xercesc::InputSource* XercesXMLHandler::resolveEntity(xercesc::XMLResourceIdentifier* resource)
{
    if (!m_schemaMemory)
        return nullptr;
    const auto type = resource->getResourceIdentifierType();
    if (type == xercesc::XMLResourceIdentifier::ExternalEntity)
        RefuseEntity(*resource);
    if (type != xercesc::XMLResourceIdentifier::SchemaImport && type != xercesc::XMLResourceIdentifier::SchemaInclude)
        return nullptr;
    const std::optional<FoundSchema> schema = m_builder->FindSchema(resource->getBaseURI(), resource->getSystemId());
    if (!schema)
        return nullptr;
    std::string text = schema->text.toStdString();
    if (const DeclarationBlank missing(text); missing.IsMissing())
        text.replace(missing.Offset(), missing.ReplacedLength(), missing.Blank());
    auto bytes = std::make_unique<XMLByte[]>(text.size() + 1);
    std::memcpy(bytes.get(), text.data(), text.size());
    auto source = std::make_unique<xercesc::MemBufInputSource>(
        bytes.get(), text.size(), schema->path.utf16(), true, m_schemaMemory);
    static_cast<void>(bytes.release());  // the source owns them now
    source->setCopyBufToStream(false);
    source->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    if (const auto nul = NulFinder::Find(*source, text))
        RefuseNul(schema->path, {nul->line, nul->column});
    CheckSchema(*source, text);
    return source.release();
}
