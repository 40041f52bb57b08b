#include "vancorexml/main/parser/XercesXMLParserImpl.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

#include <xercesc/framework/XMLAttr.hpp>
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
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DiagnosticPass.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vancorexml/main/parser/NulFinder.h"
#include "vancorexml/main/parser/PatternProgram.h"
#include "vancorexml/main/parser/QtVanResources.h"
#include "vancorexml/main/parser/SAXAdapter.h"
#include "vancorexml/main/parser/SchemaFaults.h"
#include "vancorexml/main/parser/SyntaxFaultFinder.h"
#include "vancorexml/main/parser/Utf16InputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLParseException.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vancorexml/main/parser/XercesReaderSetup.h"
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

// In bytes. A reader needs less than 1 MB for most documents and 3 MB for a long text. It needs more for deep nesting
// and for many declarations, and never frees that memory.
constexpr std::size_t LargestKeptReader = 8'000'000;
// In bytes. The cache of schemas has 16 MB for up to sixteen readers and their schemas.
constexpr std::size_t LargestCachedReader = 1'000'000;

// The schemas of the library, which declare the attributes that any document may have.
constexpr QtVanResourceId LibrarySchemas[] = {QtVanResourceId::FileFormatXmlXsd, QtVanResourceId::FileFormatUserXsd};

bool HasError(const std::vector<ParseDiagnostic>& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(), [](const ParseDiagnostic& diagnostic) {
        return diagnostic.severity != ParseDiagnostic::Severity::Warning;
    });
}

}  // namespace

void DocumentReader::XMLDecl(
    const XMLCh* version, const XMLCh* encoding, const XMLCh* standalone, const XMLCh* actualEncoding)
{
    m_hasReadVersion11 |= xercesc::XMLString::equals(version, XMLUni::fgVersion1_1);
    SAX2XMLReaderImpl::XMLDecl(version, encoding, standalone, actualEncoding);
}

void DocumentReader::doctypeDecl(const xercesc::DTDElementDecl& element,
    const XMLCh* publicId,
    const XMLCh* systemId,
    bool hasInternalSubset,
    bool hasExternalSubset)
{
    m_mayHaveReferences = true;
    XercesReader::doctypeDecl(element, publicId, systemId, hasInternalSubset, hasExternalSubset);
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
    m_mayHaveReferences = false;
    m_prefixes = NamespacePrefixes();
    SAX2XMLReaderImpl::resetDocument();
}

// Refuses two faults that the scanner does not report. Behind the root element it treats a NUL as the end of its
// input and stops in front of it, so text is left in its buffer. It drops an incomplete character at the end.
void DocumentReader::endDocument()
{
    const xercesc::Locator& locator = *m_handler->GetLocator();
    const xercesc::XMLReader& reader = *dynamic_cast<const xercesc::ReaderMgr&>(locator).getCurrentReader();
    if (reader.charsLeftInBuffer() != 0)
        m_handler->RefuseNul(locator.getSystemId(), {locator.getLineNumber(), locator.getColumnNumber()});
    const bool isUtf8 = IsUtf8(reader.getEncodingStr());
    if (isUtf8 ? EndsWithinUtf8Character(m_uncheckedEnd) : EncodingFaults::EndsWithinCharacter(m_uncheckedEnd)) {
        m_handler->Refuse(DiagnosticCode::BadBytes,
            "invalid bytes at the end of the document",
            locator.getSystemId(),
            {locator.getLineNumber(), locator.getColumnNumber()});
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
    if (m_hasNamespaces && !element.isDeclared()) {
        m_hasReadUndeclared = true;
        if (element.getId() > MostUndeclaredElements)
            RefuseUndeclaredElements();
    }
    if (m_findsReferences || m_reportsContent) {
        const XMLCh* const name = GetQName(element, prefix);
        if (m_findsReferences)
            m_mayHaveReferences |= !m_prefixes.StartElement(name, attributes, count).empty();
        if (m_reportsContent)
            m_handler->startElement(name, attributes, count);
    }
    if (isEmpty)
        EndElement();
    else
        ++m_depth;
}

void DocumentReader::RefuseUndeclaredElements()
{
    const xercesc::Locator& locator = *m_handler->GetLocator();
    m_handler->Refuse(DiagnosticCode::Other,
        VFormatString("parser has encountered more than '%1' different undeclared elements in the document; this is "
                      "the limit imposed by the application")
            .arg(std::uint64_t{MostUndeclaredElements}),
        locator.getSystemId(),
        {locator.getLineNumber(), locator.getColumnNumber()});
}

void DocumentReader::EndElement()
{
    if (m_findsReferences)
        m_prefixes.EndElement();
    if (m_reportsContent)
        m_handler->endElement();
}

void DocumentReader::endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*)
{
    EndElement();
    --m_depth;
}

// Drops the white space outside of the root element.
void DocumentReader::docCharacters(const XMLCh* text, XMLSize_t length, bool)
{
    if (m_depth != 0 && m_reportsContent)
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
      m_securityManager(std::make_unique<xercesc::SecurityManager>()),
      m_handler(std::make_unique<XercesXMLHandler>(std::move(builder)))
{
    PrepareParserState();
}

XercesXMLParserImpl::~XercesXMLParserImpl()
{
    if (!m_usesCache || !m_schemas || !m_schemas->isClean)
        return;
    m_schemas->loader.reset();
    m_schemas->stream.reset();
    if (m_reader && m_reader->GetMemory().Size() <= LargestCachedReader)
        m_schemas->reader = std::move(m_reader);
    m_reader.reset();
    SchemaCache::Put(std::move(m_schemas));
}

void XercesXMLParserImpl::RequireReader()
{
    if (m_reader)
        return;
    std::unique_ptr<DocumentReader> reader = m_schemas ? std::move(m_schemas->reader) : nullptr;
    if (reader) {
        reader->setProperty(XMLUni::fgXercesSecurityManager, m_securityManager.get());
    } else {
        reader = std::make_unique<DocumentReader>(m_schemas ? &m_schemas->grammars : nullptr);
        XercesReaderSetup::Begin(*reader, *m_securityManager);
        XercesReaderSetup::SetValidation(*reader, m_schemas != nullptr);
    }
    reader->SetHandler(*m_handler);
    InstallResolver(*reader);
    m_handler->resetErrors();
    m_reader = std::move(reader);
}

void XercesXMLParserImpl::RequireLoader()
{
    if (m_schemas->loader)
        return;
    auto loader = std::make_unique<xercesc::SAX2XMLReaderImpl>(&m_schemas->memory, &m_schemas->grammars);
    XercesReaderSetup::Begin(*loader, *m_securityManager);
    loader->setErrorHandler(m_handler.get());
    InstallResolver(*loader);
    XercesReaderSetup::SetValidation(*loader, true);
    m_schemas->loader = std::move(loader);
}

void XercesXMLParserImpl::DiscardReader() noexcept
{
    m_handler->ForgetLocator();
    m_reader.reset();
}

void XercesXMLParserImpl::InstallResolver(xercesc::SAX2XMLReader& reader)
{
    xercesc::XMLEntityResolver* const xmlEntityResolver = m_handler.get();
    auto* const sax2readerImpl = dynamic_cast<xercesc::SAX2XMLReaderImpl*>(&reader);
    if (!xmlEntityResolver || !sax2readerImpl)
        ThrowLogicException(Assertions::NoResolver);
    sax2readerImpl->setXMLEntityResolver(xmlEntityResolver);
}

void XercesXMLParserImpl::PrepareParserState()
{
    const TracedStep step("XercesXMLParser_PrepareParserState");
    if (!m_schemas)
        return;
    for (const QtVanResourceId id : LibrarySchemas)
        LoadSchemaResource(LookupResource(id));
}

void XercesXMLParserImpl::LoadXSDSource(InputSource& xsdSource)
{
    const WorkScope work(*this);
    LoadSchema(xsdSource);
}

void XercesXMLParserImpl::LoadSchemas(const std::vector<std::unique_ptr<InputSource>>& schemas)
{
    if (schemas.empty())
        return;
    const WorkScope work(*this);
    const std::vector<SchemaCache::Wanted> wanted = ReadSchemas(schemas);
    m_schemas = SchemaCache::Take(wanted);
    m_compiledCount = m_schemas ? m_schemas->texts.size() : 0;
    m_usesCache = true;
    for (std::size_t i = std::size(LibrarySchemas); i < wanted.size(); ++i) {
        const TracedStep step("XercesXMLParser_LoadXSDSource");
        PrepareSchemas();
        LoadSchema(wanted[i].id, wanted[i].source);
    }
}

std::vector<SchemaCache::Wanted> XercesXMLParserImpl::ReadSchemas(
    const std::vector<std::unique_ptr<InputSource>>& schemas)
{
    std::vector<SchemaCache::Wanted> read;
    const auto add = [&read](InputSource& schema) {
        IXercesInputSourceProvider& provider = RequireProvider(schema);
        read.push_back({schema.Id(), provider.GetXercesInputSource(ColonProcessingNone)});
    };
    for (const QtVanResourceId id : LibrarySchemas) {
        const VString name = LookupResource(id);
        StringInputSource schema(UTF8StringVResource(name).GetString(), name, false);
        add(schema);
    }
    // NOLINTNEXTLINE(modernize-loop-convert): reading a schema may add another one, which invalidates iterators.
    for (std::size_t i = 0; i < schemas.size(); ++i) {
        InputSource& schema = *schemas[i];
        // The previous parse has read the schema to its end.
        schema.ResetToStart();
        add(schema);
    }
    return read;
}

void XercesXMLParserImpl::LoadSchemaResource(const VString& name)
{
    if (IsNextSchemaCompiled()) {
        const TracedStep step("XercesXMLParser_LoadXSDSource");
        m_loadedXSDs.push_back(name);
        return;
    }
    StringInputSource schema(UTF8StringVResource(name).GetString(), name, false);
    LoadSchema(schema);
}

void XercesXMLParserImpl::LoadSchema(InputSource& schema)
{
    const TracedStep step("XercesXMLParser_LoadXSDSource");
    PrepareSchemas();
    IXercesInputSourceProvider& provider = RequireProvider(schema);
    LoadSchema(schema.Id(), provider.GetXercesInputSource(ColonProcessingNone));
}

IXercesInputSourceProvider& XercesXMLParserImpl::RequireProvider(InputSource& schema)
{
    if (schema.Id().IsEmpty())
        ThrowLogicException(Assertions::SchemaHasNoId);
    auto* const provider = dynamic_cast<IXercesInputSourceProvider*>(&schema);
    if (!provider)
        ThrowLogicException(Assertions::SchemaIsNoProvider);
    return *provider;
}

void XercesXMLParserImpl::LoadSchema(const VString& id, const XercesInputSource& source)
{
    if (!IsNextSchemaCompiled())
        CompileSchema(id, source);
    m_loadedXSDs.push_back(id);
}

void XercesXMLParserImpl::CompileSchema(const VString& id, const XercesInputSource& source)
{
    // A reader must not outlive a change of its schemas.
    DiscardReader();
    m_schemas->reader.reset();
    RequireLoader();
    const bool wasClean = std::exchange(m_schemas->isClean, false);
    LoadGrammar(source, id);
    if (m_usesCache)
        m_schemas->texts.emplace_back(id, source);
    std::vector<ParseDiagnostic> faults = MoveMessagesFromHandler();
    m_schemas->isClean = wasClean && faults.empty();
    Describe(ExplainSchemaFaults(std::move(faults), source, id));
}

void XercesXMLParserImpl::PrepareSchemas()
{
    if (m_isPrepared)
        return;
    try {
        if (!m_schemas)
            m_schemas = std::make_unique<CompiledSchemas>();
        m_isPrepared = true;
        PrepareParserState();
    } catch (...) {
        m_schemas.reset();
        m_compiledCount = 0;
        m_isPrepared = false;
        m_loadedXSDs.clear();
        throw;
    }
}

void XercesXMLParserImpl::LoadGrammar(const XercesInputSource& source, const VString& id)
{
    m_schemas->memory.KeepReserve();
    m_handler->BeginSchema(id, source, m_schemas->memory);
    try {
        if (const auto nul = NulFinder::Find(source.Get(), source.View()))
            m_handler->RefuseNul(id, {nul->line, nul->column});
        m_handler->CheckSchema(source.Get(), source.View());
        const XercesReaderSource schema(source.Get(), m_schemas->stream, m_schemas->memory);
        const XercesStackGuard guard(m_schemas->memory, [this] { m_handler->RefuseDeepStack(); });
        m_schemas->loader->loadGrammar(schema, xercesc::Grammar::SchemaGrammarType, true);
        PatternProgram::ReplaceAll(m_schemas->grammars);
    } catch (const ParseAbandoned&) {
        // The handler has recorded the error.
        m_schemas->loader.reset();
    } catch (...) {
        m_schemas->loader.reset();
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
    // Also ends a parse whose exception cannot be recorded, because memory has run out.
    struct ParseEnd {
        ~ParseEnd()
        {
            parser.m_handler->EndParse();
            if (!isReusable)
                parser.DiscardReader();
            if (!hasReturned && parser.m_schemas)
                parser.m_schemas->isClean = false;
        }

        XercesXMLParserImpl& parser;
        bool isReusable = false;
        bool hasReturned = false;
    } end{*this};
    try {
        ReadInput();
        end.hasReturned = true;
        end.isReusable = !HasErrors() && !m_reader->HasReadVersion11() && !m_reader->HasReadUndeclared() &&
            m_reader->GetMemory().Size() <= LargestKeptReader;
    } catch (const xercesc::OutOfMemoryException&) {
        RecordException("OutOfMemoryException", VString(), DiagnosticCode::OutOfMemory);
    } catch (const XMLParseException& exception) {
        RecordParseException(exception.GetConcatenatedMessages());
    } catch (const xercesc::XMLException& exception) {
        RecordException(exception.getMessage());
    } catch (const VIO::Exception& exception) {
        RecordException("Unexpected exception", exception.GetMessage());
    } catch (const VantoraException& exception) {
        RecordException("Unexpected exception", exception.GetConcatenatedMessages());
    } catch (const std::bad_alloc&) {
        RecordException("Unexpected exception", VString(), DiagnosticCode::OutOfMemory);
    } catch (...) {
        RecordException("Unexpected exception");
    }
}

void XercesXMLParserImpl::RecordException(const VString& message, const VString& reason, DiagnosticCode code)
{
    ParseDiagnostic diagnostic = DescribeException(reason.IsEmpty() ? message : reason);
    diagnostic.code = code;
    Record(ParseDiagnostic::Severity::Error, message, VError::ErrorInfo::NoError);
    Describe({std::move(diagnostic)});
}

void XercesXMLParserImpl::RecordMissingElement(const XercesInputSource& source)
{
    constexpr std::string_view Mark = "\xEF\xBB\xBF";
    std::string_view text = source.View();
    if (text.starts_with(Mark))
        text.remove_prefix(Mark.size());
    ParseDiagnostic diagnostic = DescribeException("the document has no root element; add one");
    diagnostic.code = DiagnosticCode::EmptyDocument;
    if (const std::optional<SyntaxFault> fault = FindSyntaxFault(text)) {
        diagnostic.code = fault->code;
        DescribeSyntaxFault(*fault, text, source.GetSourceMap().get(), diagnostic);
    }
    Record(ParseDiagnostic::Severity::Error, "Unexpected exception", VError::ErrorInfo::NoError);
    Describe({std::move(diagnostic)});
}

void XercesXMLParserImpl::RecordParseException(const VString& message)
{
    Record(ParseDiagnostic::Severity::Error, message, VError::ErrorInfo::NoError);
    Record(ParseDiagnostic::Severity::FatalError, message, VError::ErrorInfo::NoError);
    ParseDiagnostic diagnostic = m_handler->GetRefusal().value_or(DescribeException(message));
    diagnostic.severity = ParseDiagnostic::Severity::FatalError;
    Describe({std::move(diagnostic)});
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
    std::optional<XercesInputSource> sanitized;
    try {
        sanitized.emplace(provider.GetXercesInputSource(ColonProcessingSanitize));
    } catch (const LogicException&) {
        // The sanitizer refuses a text without an element in which it would rewrite a name. A file is at its end now.
        GetInput().ResetToStart();
        const XercesInputSource given = provider.GetXercesInputSource(ColonProcessingNone);
        if (XmlUtils::FindFirstElementTag(*given.Bytes()).start != XmlUtils::npos)
            throw;
        RecordMissingElement(given);
        return;
    }
    const XercesInputSource& source = *sanitized;
    m_handler->BeginParse(GetInput().Id(), source);
    bool isAbandoned = false;
    try {
        if (const auto nul = NulFinder::FindInDeclaration(source.Get(), source.View()))
            m_handler->RefuseNul(GetInput().Id(), {nul->line, nul->column});
        if (Utf16InputSource::IsWellFormed(source.Get(), source.View()))
            ReadDocument(Utf16InputSource(source.Get(), source.View()));
        else
            ReadDocument(source.Get(), source.View());
    } catch (const ParseAbandoned&) {
        // The handler has recorded the error like any other fatal error.
        isAbandoned = true;
    } catch (...) {
        m_handler->LocateRefusal(source.View());
        DiscardReader();
        throw;
    }
    m_handler->ForgetLocator();
    const bool isDoubtful =
        m_checksReferences && (m_reader->MayHaveDoubtfulReferences() || DiagnosticPass::HasLateDeclaration(source));
    if (m_handler->GetErrors().empty() && !isDoubtful)
        return;
    const bool isRepeatable = !isAbandoned && !m_handler->IsDone();
    std::vector<ParseDiagnostic> recorded = MoveMessagesFromHandler();
    const bool hasBadEnd = isAbandoned && !recorded.empty() && recorded.back().code == DiagnosticCode::BadBytes;
    std::optional<ParseDiagnostic> found = hasBadEnd ? EncodingFaults::Find(source) : std::nullopt;
    // Only Xerces knows UTF-32 without a byte order mark, so its place stays.
    if (found && found->code != DiagnosticCode::WrongEncoding) {
        found->sourceId = recorded.back().sourceId;
        recorded.back() = std::move(*found);
    }
    std::vector<ParseDiagnostic> diagnostics = isRepeatable ? Explain(source) : std::vector<ParseDiagnostic>();
    // Each document with an error has a diagnostic of an error.
    if (HasError(recorded) && !HasError(diagnostics))
        diagnostics.insert(diagnostics.end(), recorded.begin(), recorded.end());
    Describe(std::move(diagnostics));
}

std::vector<ParseDiagnostic> XercesXMLParserImpl::Explain(const XercesInputSource& source)
{
    DiagnosticPass::Settings settings;
    settings.validates = m_schemas != nullptr;
    settings.checksReferences = m_checksReferences;
    DiagnosticPass pass(
        source, GetInput().Id(), m_schemas ? &m_schemas->grammars : nullptr, *m_securityManager, settings);
    std::vector<ParseDiagnostic> diagnostics;
    try {
        diagnostics = pass.Run();
    } catch (const xercesc::XMLException&) {
        if (m_schemas)
            m_schemas->isClean = false;
        // The messages of the first pass are enough: a diagnosis must not add an error to the parse.
        return {};
    } catch (const std::bad_alloc&) {
        if (m_schemas)
            m_schemas->isClean = false;
        // A document whose doubtful references are not yet known has no message of the first pass.
        if (GetErrors().empty())
            throw;
        return {};
    }
    for (const ParseDiagnostic& doubt : pass.GetDoubts()) {
        const VString message =
            XercesXMLHandler::FormatMessage(doubt.severity, doubt.message, doubt.sourceId, doubt.start);
        Record(doubt.severity, message, VError::ErrorInfo::NoError);
    }
    return diagnostics;
}

void XercesXMLParserImpl::ReadDocument(const xercesc::InputSource& source, std::string_view uncheckedEnd)
{
    m_reader->SetUncheckedEnd(uncheckedEnd);
    m_reader->SetFindsDoubtfulReferences(m_checksReferences);
    m_reader->SetReportsContent(m_reportsContent);
    m_handler->CheckEntitiesOf(source);
    const XercesStackGuard guard(m_reader->GetMemory(), [this] { m_handler->RefuseDeepStack(); });
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

std::vector<ParseDiagnostic> XercesXMLParserImpl::MoveMessagesFromHandler()
{
    auto warning = m_handler->GetWarnings().begin();
    auto error = m_handler->GetErrors().begin();
    std::vector<ParseDiagnostic> diagnostics = m_handler->ReleaseDiagnostics();
    for (const ParseDiagnostic& diagnostic : diagnostics) {
        const VString& text = diagnostic.severity == ParseDiagnostic::Severity::Warning ? *warning++ : *error++;
        Record(diagnostic.severity, text, VError::ErrorInfo::NoError);
    }
    m_handler->resetErrors();
    return diagnostics;
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
