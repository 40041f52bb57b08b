#include "vancorexml/main/parser/XercesXMLParserImpl.h"

#include <algorithm>
#include <bit>
#include <utility>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/common/Grammar.hpp>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoredata/VResource.h"
#include "vancoreplatform/Encoding.h"
#include "vancorexml/main/parser/NulFinder.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/SAXAdapter.h"
#include "vancorexml/main/parser/Utf16InputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLParseException.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vansys/LogicException.h"

using xercesc::XMLUni;

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XercesXMLParser";
// Unreachable: the constructor makes the handler, and the reader is always a DocumentReader.
constexpr AssertionSite NoResolver{File, 118, "xmlEntityResolver && sax2readerImpl", 0x9D18F6F8};
constexpr AssertionSite SchemaHasNoId{File, 203, "!xsdSource.Id().IsEmpty()", 0xC83A570E};
constexpr AssertionSite SchemaIsNoProvider{File, 206, "xercesableSource != nullptr", 0xAB95E4EA};
// Unreachable through Parse, which clears the errors first; a derived class can call DoParse itself.
constexpr AssertionSite ParseBeginsWithErrors{File, 231, "HasErrors() == false", 0xE60C9000};

}  // namespace Assertions

// A step of the parser, traced and measured.
struct TracedStep {
    explicit TracedStep(const char* name) : activity(name), metrics(name) {}

    art::Activity activity;
    Metrics::Scope metrics;
};

}  // namespace

void DocumentReader::XMLDecl(
    const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone, const XMLCh* actualEncoding)
{
    m_hasReadVersion11 |= xercesc::XMLString::equals(version, XMLUni::fgVersion1_1);
    SAX2XMLReaderImpl::XMLDecl(version, encoding, standalone, actualEncoding);
}

void DocumentReader::attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute, bool isIgnored)
{
    m_hasDefaults |= attribute.getValue() != nullptr;
    SAX2XMLReaderImpl::attDef(element, attribute, isIgnored);
}

void DocumentReader::SetHandler(XercesXMLHandler& handler)
{
    m_handler = &handler;
    setContentHandler(&handler);
    setErrorHandler(&handler);
    setDeclarationHandler(&handler);
}

namespace {

bool IsUtf8(const XMLCh* encoding)
{
    return xercesc::XMLString::equals(encoding, XMLUni::fgUTF8EncodingString) ||
        xercesc::XMLString::equals(encoding, XMLUni::fgUTF8EncodingString2);
}

// True if the text ends inside a character. Xerces waits for as many bytes as the first byte announces, up to
// six, before it checks any of them.
bool EndsWithinUtf8Character(std::string_view text) noexcept
{
    const std::size_t invalid = FindInvalidUtf8(text.data(), text.size());
    if (invalid == text.size())
        return false;
    const int leadingOnes = std::countl_one(static_cast<unsigned char>(text[invalid]));
    return leadingOnes >= 2 && text.size() - invalid < static_cast<std::size_t>(std::min(leadingOnes, 6));
}

}  // namespace

void DocumentReader::resetDocument()
{
    m_depth = 0;
    m_hasDefaults = false;
    m_defaults = DefaultAttributeCounter();
    m_hasNamespaces = getFeature(XMLUni::fgSAX2CoreNameSpaces);
    SAX2XMLReaderImpl::resetDocument();
}

// Refuses two faults that the scanner does not report. Behind the root element it treats a NUL as the end of its
// input and stops in front of it, so text is left in its buffer. It drops an incomplete character at the end.
void DocumentReader::endDocument()
{
    const xercesc::Locator& locator = *m_handler->GetLocator();
    const xercesc::XMLReader& reader = *dynamic_cast<const xercesc::ReaderMgr&>(locator).getCurrentReader();
    if (reader.charsLeftInBuffer() != 0)
        m_handler->RefuseNul(locator.getSystemId(), locator.getLineNumber(), locator.getColumnNumber());
    if (IsUtf8(reader.getEncodingStr()) && EndsWithinUtf8Character(m_uncheckedEnd)) {
        m_handler->Refuse("invalid bytes at the end of the document",
            locator.getSystemId(),
            locator.getLineNumber(),
            locator.getColumnNumber());
    }
    SAX2XMLReaderImpl::endDocument();
}

const XMLCh* DocumentReader::GetQName(const xercesc::XMLElementDecl& element, const XMLCh* prefix)
{
    const xercesc::QName& name = *element.getElementName();
    if (!m_hasNamespaces)
        return name.getRawName();
    if (!prefix || *prefix == 0)
        return name.getLocalPart();
    m_qname = prefix;
    m_qname += u':';
    m_qname += name.getLocalPart();
    return m_qname.c_str();
}

void DocumentReader::startElement(const xercesc::XMLElementDecl& element,
    unsigned int,
    const XMLCh* prefix,
    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
    XMLSize_t count,
    bool isEmpty,
    bool)
{
    for (XMLSize_t i = 0; m_hasDefaults && i < count; ++i) {
        if (const xercesc::XMLAttr& attribute = *attributes.elementAt(i); !attribute.getSpecified()) {
            const XMLSize_t nameLength = xercesc::XMLString::stringLen(attribute.getQName());
            if (const auto excess = m_defaults.Add(nameLength, xercesc::XMLString::stringLen(attribute.getValue())))
                m_handler->AbandonExpansion(*excess);
        }
    }
    m_handler->startElement(GetQName(element, prefix), attributes, count);
    if (isEmpty)
        m_handler->endElement();
    else
        ++m_depth;
}

void DocumentReader::endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*)
{
    m_handler->endElement();
    --m_depth;
}

// Drops the white space outside of the root element.
void DocumentReader::docCharacters(const XMLCh* text, XMLSize_t length, bool)
{
    if (m_depth != 0)
        m_handler->characters(text, length);
}

// White space where a document type allows elements only is text like any other.
void DocumentReader::ignorableWhitespace(const XMLCh* text, XMLSize_t length, bool isCData)
{
    docCharacters(text, length, isCData);
}

XercesXMLParserImpl::XercesXMLParserImpl(
    InputSource& input, std::shared_ptr<SAXInterface> handler, std::shared_ptr<TreeBuilder> builder)
    : XercesTreeParser(input, std::move(handler)),
      m_grammars(std::make_unique<xercesc::XMLGrammarPoolImpl>(xercesc::XMLPlatformUtils::fgMemoryManager)),
      m_securityManager(std::make_unique<xercesc::SecurityManager>()),
      m_handler(std::make_unique<XercesXMLHandler>(std::move(builder)))
{
    RequireReader();
    PrepareParserState();
}

XercesXMLParserImpl::~XercesXMLParserImpl() = default;

void XercesXMLParserImpl::RequireReader()
{
    if (m_reader)
        return;
    m_reader = std::make_unique<DocumentReader>(m_memory, m_grammars.get());
    m_reader->setProperty(XMLUni::fgXercesSecurityManager, m_securityManager.get());
    InstallHandler();
    InstallResolver();
    m_reader->setExitOnFirstFatalError(true);
    m_reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
    m_reader->setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    m_reader->setFeature(XMLUni::fgXercesLoadSchema, false);
    m_reader->setFeature(XMLUni::fgXercesDynamic, false);
    SetValidation(m_hasNoSchema == 0);
}

void XercesXMLParserImpl::DiscardReader() noexcept
{
    m_handler->ForgetLocator();
    m_reader.reset();
}

void XercesXMLParserImpl::InstallHandler()
{
    m_reader->SetHandler(*m_handler);
    m_handler->resetErrors();
}

void XercesXMLParserImpl::InstallResolver()
{
    xercesc::XMLEntityResolver* const xmlEntityResolver = m_handler.get();
    auto* const sax2readerImpl = dynamic_cast<xercesc::SAX2XMLReaderImpl*>(m_reader.get());
    if (!xmlEntityResolver || !sax2readerImpl)
        ThrowLogicException(Assertions::NoResolver);
    sax2readerImpl->setXMLEntityResolver(xmlEntityResolver);
}

void XercesXMLParserImpl::PrepareParserState()
{
    const TracedStep step("XercesXMLParser_PrepareParserState");
    m_reader->resetCachedGrammarPool();
    if (m_hasNoSchema == 0) {
        // These schemas declare the attributes that any document may have.
        LoadSchemaResource(LookupResource(QtVanResourceId::FileFormatXmlXsd));
        LoadSchemaResource(LookupResource(QtVanResourceId::FileFormatUserXsd));
    }
    SetValidation(m_hasNoSchema == 0);
}

void XercesXMLParserImpl::SetValidation(bool validate)
{
    m_reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, validate);
    m_reader->setFeature(XMLUni::fgSAX2CoreValidation, validate);
    m_reader->setFeature(XMLUni::fgXercesSkipDTDValidation, !validate);
    m_reader->setFeature(XMLUni::fgXercesSchemaFullChecking, validate);
    m_reader->setFeature(XMLUni::fgXercesHandleMultipleImports, validate);
    if (!validate)
        return;
    m_reader->setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
    m_reader->setFeature(XMLUni::fgXercesIdentityConstraintChecking, true);
    m_reader->setFeature(XMLUni::fgXercesSchema, true);
    m_reader->setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
    m_reader->setFeature(XMLUni::fgXercesValidationErrorAsFatal, false);
}

void XercesXMLParserImpl::LoadXSDSource(InputSource& xsdSource)
{
    const WorkScope work(*this);
    LoadSchema(xsdSource);
}

void XercesXMLParserImpl::LoadSchemaResource(const VString& name)
{
    StringInputSource schema(UTF8StringVResource(name).GetString(), name, false);
    LoadSchema(schema);
}

void XercesXMLParserImpl::LoadSchema(InputSource& schema)
{
    const TracedStep step("XercesXMLParser_LoadXSDSource");
    RequireReader();
    if (m_hasNoSchema == 1) {
        m_hasNoSchema = 0;
        PrepareParserState();
    }
    if (schema.Id().IsEmpty())
        ThrowLogicException(Assertions::SchemaHasNoId);
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&schema);
    if (!xercesableSource)
        ThrowLogicException(Assertions::SchemaIsNoProvider);
    const XercesInputSource source = xercesableSource->GetXercesInputSource(ColonProcessingNone);
    LoadGrammar(source, schema.Id());
    m_loadedXSDs.push_back(schema.Id());
    MoveDiagnosticsFromHandler();
}

void XercesXMLParserImpl::LoadGrammar(const XercesInputSource& source, const VString& id)
{
    m_handler->BeginSchema(id, source);
    try {
        if (const auto nul = NulFinder::Find(source.Get(), source.View()))
            m_handler->RefuseNul(id, nul->line, nul->column);
        m_handler->CheckSchema(source.Get(), source.View());
        m_reader->loadGrammar(source.Get(), xercesc::Grammar::SchemaGrammarType, true);
    } catch (const ParseAbandoned&) {
        // The handler has recorded the error.
        DiscardReader();
    } catch (...) {
        DiscardReader();
        m_handler->EndSchema();
        throw;
    }
    m_handler->EndSchema();
}

void XercesXMLParserImpl::DoParse()
{
    if (HasErrors())
        ThrowLogicException(Assertions::ParseBeginsWithErrors);
    const TracedStep step("XercesXMLParser_DoXercesParse");
    bool isReusable = false;
    try {
        ReadInput();
        isReusable = !HasErrors() && !m_reader->HasReadVersion11();
    } catch (const xercesc::OutOfMemoryException&) {
        RecordException("OutOfMemoryException");
    } catch (const XMLParseException& exception) {
        RecordParseException(exception.GetConcatenatedMessages());
    } catch (const xercesc::XMLException& exception) {
        RecordException(exception.getMessage());
    } catch (...) {
        RecordException("Unexpected exception");
    }
    m_handler->EndParse();
    if (!isReusable)
        DiscardReader();
}

void XercesXMLParserImpl::RecordException(const VString& message)
{
    Record(message, VError::ErrorInfo::NoError, DescribeException(message));
}

void XercesXMLParserImpl::RecordParseException(const VString& message)
{
    ParseDiagnostic diagnostic = m_handler->GetRefusal().value_or(DescribeException(message));
    diagnostic.severity = ParseDiagnostic::Severity::Error;
    Record(message, VError::ErrorInfo::NoError, diagnostic);
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    Record(message, VError::ErrorInfo::NoError, std::move(diagnostic));
}

ParseDiagnostic XercesXMLParserImpl::DescribeException(const VString& message)
{
    ParseDiagnostic diagnostic;
    diagnostic.message = message;
    diagnostic.sourceId = GetInput().Id();
    return diagnostic;
}

void XercesXMLParserImpl::ReadInput()
{
    RequireReader();
    m_handler->resetErrors();
    auto& provider = dynamic_cast<IXercesInputSourceProvider&>(GetInput());
    const XercesInputSource source = provider.GetXercesInputSource(ColonProcessingSanitize);
    m_handler->BeginParse(GetInput().Id(), source);
    try {
        if (const auto nul = NulFinder::FindInDeclaration(source.Get(), source.View()))
            m_handler->RefuseNul(GetInput().Id(), nul->line, nul->column);
        if (Utf16InputSource::IsWellFormed(source.Get(), source.View()))
            ReadDocument(Utf16InputSource(source.Get(), source.View()));
        else
            ReadDocument(source.Get(), source.View());
    } catch (const ParseAbandoned&) {
        // The handler has recorded the error like any other fatal error.
    } catch (...) {
        DiscardReader();
        throw;
    }
    m_handler->ForgetLocator();
    if (!m_handler->GetErrors().empty())
        MoveDiagnosticsFromHandler();
}

void XercesXMLParserImpl::ReadDocument(const xercesc::InputSource& source, std::string_view uncheckedEnd)
{
    m_reader->SetUncheckedEnd(uncheckedEnd);
    m_handler->CheckEntitiesOf(source);
    xercesc::XMLPScanToken token;
    if (!m_reader->parseFirst(source, token))
        return;
    bool hasMore = true;
    while (hasMore && !m_handler->IsDone() && !m_handler->HasFatallyErrored())
        hasMore = m_reader->parseNext(token);
    // Without a reset, a reader that stopped early would continue with this input in its next parse.
    if (hasMore)
        m_reader->parseReset(token);
}

void XercesXMLParserImpl::MoveDiagnosticsFromHandler()
{
    auto warning = m_handler->GetWarnings().begin();
    auto error = m_handler->GetErrors().begin();
    for (ParseDiagnostic& diagnostic : m_handler->ReleaseDiagnostics()) {
        const VString& text = diagnostic.severity == ParseDiagnostic::Severity::Warning ? *warning++ : *error++;
        Record(text, VError::ErrorInfo::NoError, std::move(diagnostic));
    }
    m_handler->resetErrors();
}

void XercesXMLParserImpl::Reload(InputSource& input, std::shared_ptr<SAXInterface> handler)
{
    auto builder = std::make_shared<SAXAdapter>(handler);
    XercesXMLParser::Reload(input, std::move(handler));
    m_handler->SetBuilder(std::move(builder));
}

void XercesXMLParserImpl::Reload(InputSource& input, std::shared_ptr<TreeBuilder> builder)
{
    XercesXMLParser::Reload(input, nullptr);
    m_handler->SetBuilder(std::move(builder));
}

void XercesXMLParserImpl::GetCurrentLocation(int& line, int& column)
{
    if (const xercesc::Locator* locator = m_handler->GetLocator()) {
        line = static_cast<int>(locator->getLineNumber());
        column = static_cast<int>(locator->getColumnNumber());
    }
}
