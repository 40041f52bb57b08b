#include "vancorexml/main/parser/DiagnosticReader.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLRecognizer.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/schema/SchemaGrammar.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/NearestName.h"
#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/ColonRewriting.h"
#include "vancorexml/main/parser/EncodingFaults.h"
#include "vancorexml/main/parser/EntityDeclaration.h"
#include "vancorexml/main/parser/MessageWords.h"
#include "vancorexml/main/parser/SourceMap.h"
#include "vancorexml/main/parser/SyntaxFaultFinder.h"
#include "vancorexml/main/parser/Utf16InputSource.h"
#include "vancorexml/main/parser/XMLReferences.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vancorexml/main/parser/XercesReaderSetup.h"

using namespace MessageWords;
using xercesc::XMLUni;

namespace {

// The part of an element's text that is kept, in UTF-16 code units.
constexpr std::size_t KeptTextLength = 1000;
constexpr std::string_view DeclarationStart = "<?xml";

VString ToVString(std::string_view utf8)
{
    return VString::fromUtf8(utf8.data(), utf8.size());
}

bool IsBefore(SourcePosition a, SourcePosition b)
{
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
}

// `declared` are the prefixes that are declared at the place.
VString DescribePrefix(const VString& prefix, const std::vector<VString>& declared)
{
    const VString similar = FindNearestName(prefix, declared);
    if (!similar.IsEmpty())
        return "the namespace prefix " + Quote(prefix) + " is not declared; did you mean " + Quote(similar) + "?";
    // Prefixes that nearly all documents use for these namespaces.
    static constexpr struct {
        const char* prefix;
        const char* space;
    } wellKnown[] = {
        {"xsi", "http://www.w3.org/2001/XMLSchema-instance"},
        {"xs", "http://www.w3.org/2001/XMLSchema"},
        {"xsd", "http://www.w3.org/2001/XMLSchema"},
        {"xlink", "http://www.w3.org/1999/xlink"},
        {"xhtml", "http://www.w3.org/1999/xhtml"},
        {"svg", "http://www.w3.org/2000/svg"},
    };
    const auto isIt = [&](const auto& known) { return prefix == known.prefix; };
    const auto* const known = std::find_if(std::begin(wellKnown), std::end(wellKnown), isIt);
    const VString space = known == std::end(wellKnown) ? "..." : known->space;
    return "the namespace prefix " + Quote(prefix) + " is not declared; add xmlns:" + prefix + "=\"" + space +
        "\" to this element or to one around it";
}

// Returns the first name in a start tag that has the prefix, or the name of the element if there is none.
std::string_view FindPrefixed(const XMLToken& tag, const VString& prefix)
{
    const std::string start = prefix.toStdString() + ":";
    if (tag.name.starts_with(start))
        return tag.name;
    XMLAttributeReader attributes(tag);
    XMLAttributeToken attribute;
    while (attributes.Next(attribute)) {
        if (attribute.name.starts_with(start))
            return attribute.name;
    }
    return tag.name;
}

// Returns the name of the encoding that Xerces expects before it reads the document.
std::u16string ProbeEncoding(const XercesInputSource& source)
{
    if (const XMLCh* const given = source.Get().getEncoding())
        return given;
    const std::string_view bytes = source.View();
    const auto probed =
        xercesc::XMLRecognizer::basicEncodingProbe(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size());
    return xercesc::XMLRecognizer::nameForEncoding(probed);
}

bool IsUtf8(const std::u16string& encoding)
{
    return encoding == XMLUni::fgUTF8EncodingString || encoding == XMLUni::fgUTF8EncodingString2;
}

// Returns the text in UTF-8, up to the first bytes that cannot be decoded or a few bytes less. Xerces does not report a
// syntax fault behind them.
//
// Xerces' own function for this task, TranscodeFromStr, writes behind the end of a buffer if a text has more than 2,048
// characters: it asks the transcoder for more characters than it said when it created it.
std::string Decode(std::string_view bytes, const std::u16string& encoding)
{
    constexpr XMLSize_t BlockSize = 8192;  // in code units
    constexpr std::size_t SmallestStep = 8;
    auto result = xercesc::XMLTransService::Ok;
    const std::unique_ptr<xercesc::XMLTranscoder> transcoder(
        xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
            encoding.c_str(), result, BlockSize, xercesc::XMLPlatformUtils::fgMemoryManager));
    std::u16string text;
    std::vector<unsigned char> sizes(BlockSize);
    // Returns how many of the bytes it has decoded; 0 if there is a byte among them that cannot be decoded.
    const auto decode = [&](std::size_t count) -> std::size_t {
        const std::size_t length = text.size();
        text.resize(length + BlockSize);
        XMLSize_t read = 0;
        XMLSize_t written = 0;
        try {
            const auto* const begin = reinterpret_cast<const XMLByte*>(bytes.data());
            written = transcoder->transcodeFrom(begin, count, &text[length], BlockSize, read, sizes.data());
        } catch (const xercesc::XMLException&) {
            read = written = 0;
        }
        text.resize(length + written);
        return read;
    };
    std::size_t step = transcoder ? bytes.size() : 0;
    while (step != 0 && !bytes.empty()) {
        step = std::min(step, bytes.size());
        const std::size_t read = decode(step);
        bytes.remove_prefix(read);
        if (read == 0)
            step = step > SmallestStep ? step / 2 : 0;
    }
    return VString(text.data(), text.size()).toStdString();
}

}  // namespace

std::u16string DiagnosticReader::LocatorKeeper::GetEncoding() const
{
    const auto* const readers = dynamic_cast<const xercesc::ReaderMgr*>(m_locator);
    const xercesc::XMLReader* const current = readers ? readers->getCurrentReader() : nullptr;
    return current ? std::u16string(current->getEncodingStr()) : std::u16string();
}

DiagnosticReader::DiagnosticReader(const XercesInputSource& source,
    const VString& id,
    xercesc::XMLGrammarPool* schemas,
    xercesc::SecurityManager& limits,
    const DiagnosticPass::Settings& settings)
    : XercesReader(schemas),
      m_source(source),
      m_id(id),
      m_settings(settings),
      m_writtenNames(source),
      m_keys(*this)
{
    XercesReaderSetup::Begin(*this, limits);
    XercesReaderSetup::SetValidation(*this, settings.validates);
    setContentHandler(&m_handler);
    setErrorHandler(&m_handler);
    setDeclarationHandler(&m_handler);  // without one, Xerces does not report the document type
}

DiagnosticReader::~DiagnosticReader() = default;

std::vector<ParseDiagnostic> DiagnosticReader::Read()
{
    if (m_settings.checksReferences)
        CheckStart();
    const XercesStackGuard guard(GetMemory());
    const XercesInputSource& source = m_source;
    if (Utf16InputSource::IsWellFormed(source.Get(), source.View()))
        parse(Utf16InputSource(source.Get(), source.View()));
    else
        parse(source.Get());
    // Behind a fatal fault, no event tells what the others are about. They show again when it is mended.
    for (const XercesFault& fault : std::exchange(m_pending, {})) {
        if (IsTextFault(fault) && !m_trail.IsEmpty())
            ExplainText(fault);
        else if (!m_fatal)
            ExplainOther(fault);
    }
    AddKeyFaults(m_keys.EndDocument());
    ChooseKeyFaults();
    if (m_fatal)
        ExplainFatal(*m_fatal);
    if (m_diagnostics.empty())
        m_diagnostics = std::move(m_missingKeys);
    DropMisspeltAttributes();
    for (const auto& [key, repetition] : m_repetitions) {
        if (repetition.count > 0) {
            m_diagnostics[repetition.first].message +=
                VFormatString("; %1 more like it").arg(static_cast<std::uint64_t>(repetition.count));
        }
    }
    const auto isBefore = [](const ParseDiagnostic& a, const ParseDiagnostic& b) { return IsBefore(a.start, b.start); };
    std::vector<ParseDiagnostic> kept;
    kept.reserve(m_diagnostics.size() - m_dropped.size());
    for (std::size_t i = 0; i < m_diagnostics.size(); ++i) {
        if (!m_dropped.contains(i))
            kept.push_back(std::move(m_diagnostics[i]));
    }
    m_diagnostics = std::move(kept);
    std::stable_sort(m_diagnostics.begin(), m_diagnostics.end(), isBefore);
    if (m_writtenNames.RestoresQuotations()) {
        for (ParseDiagnostic& diagnostic : m_diagnostics)
            RestoreQuotations(diagnostic);
    }
    return std::move(m_diagnostics);
}

// A required attribute that is misspelt is one mistake.
void DiagnosticReader::DropMisspeltAttributes()
{
    std::set<std::pair<std::size_t, std::u16string>> misspelt;
    for (const ParseDiagnostic& diagnostic : m_diagnostics) {
        if (diagnostic.code == DiagnosticCode::UndeclaredAttribute && !diagnostic.suggestion.IsEmpty())
            misspelt.emplace(diagnostic.element, diagnostic.suggestion.View());
    }
    for (ParseDiagnostic& diagnostic : m_diagnostics) {
        const bool isMissing = diagnostic.code == DiagnosticCode::MissingAttribute;
        if (isMissing && misspelt.contains({diagnostic.element, std::u16string(diagnostic.attribute.View())}))
            m_dropped.insert(static_cast<std::size_t>(&diagnostic - m_diagnostics.data()));
    }
}

// Finding places.

SourcePosition DiagnosticReader::MapPosition(SourcePosition scanned) const
{
    const std::shared_ptr<SourceMap>& map = m_source.GetSourceMap();
    return map ? map->Map(scanned) : scanned;
}

void DiagnosticReader::PrepareText()
{
    if (std::exchange(m_isTextReady, true))
        return;
    const XercesInputSource& source = m_source;
    m_text = source.View();
    std::u16string encoding = m_handler.GetEncoding();
    // Xerces refuses some texts before the start of the document.
    if (encoding.empty())
        encoding = ProbeEncoding(source);
    if (!Utf16InputSource::IsWellFormed(source.Get(), m_text) && !IsUtf8(encoding)) {
        m_decoded = Decode(m_text, encoding);
        m_text = m_decoded;
    }
    constexpr std::string_view Mark = "\xEF\xBB\xBF";
    if (m_text.starts_with(Mark))
        m_text.remove_prefix(Mark.size());
    // With validation, Xerces itself reports entities that are not declared.
    const bool visits = m_hasDocumentType && m_settings.checksReferences && !m_settings.validates;
    const auto visit = [this](std::string_view text) { CheckEntities(text); };
    m_tags.emplace(m_text, visits ? SourceTags::TextVisitor(visit) : SourceTags::TextVisitor());
}

const XMLToken* DiagnosticReader::FindTag(XMLToken::Kind kind)
{
    PrepareText();
    if (!m_openEntities.empty())
        return nullptr;
    const XMLToken* const tag = m_tags->Next();
    return tag && tag->kind == kind ? tag : nullptr;
}

// The events of Xerces.

void DiagnosticReader::error(unsigned int code,
    const XMLCh* domain,
    ErrTypes type,
    const XMLCh* text,
    const XMLCh*,
    const XMLCh*,
    XMLFileLoc line,
    XMLFileLoc column)
{
    if (m_writtenNames.IsAboutDeclaration(text))
        return;
    XercesFault fault;
    fault.code = code;
    fault.isValidity = xercesc::XMLString::equals(domain, XMLUni::fgValidityDomain);
    fault.isOfValue = xercesc::XMLString::equals(domain, XMLUni::fgExceptDomain) && type != ErrType_Fatal;
    fault.isOfReading = xercesc::XMLString::equals(domain, XMLUni::fgExceptDomain) && type == ErrType_Fatal;
    fault.type = type;
    fault.text = m_writtenNames.Restore(text);
    fault.parameters = m_messages.FindParameters(domain, code, text);
    fault.position = MapPosition({line, column});
    if (type == ErrType_Fatal)
        m_fatal = std::move(fault);
    else
        m_pending.push_back(std::move(fault));
}

void DiagnosticReader::startElement(const xercesc::XMLElementDecl& declaration,
    unsigned int uri,
    const XMLCh* prefix,
    const Attributes& attributes,
    XMLSize_t count,
    bool isEmpty,
    bool isRoot)
{
    StartTag tag;
    tag.token = FindTag(XMLToken::Kind::StartTag);
    tag.attributes = &attributes;
    tag.count = count;
    tag.isEmpty = isEmpty || (tag.token && tag.token->isEmpty);

    std::vector<XercesFault> faults = std::exchange(m_pending, {});
    for (const XercesFault& fault : faults) {
        if (IsTextFault(fault) && !m_trail.IsEmpty())
            ExplainText(fault);
    }
    VString name = tag.token ? ToVString(tag.token->name) : VString(declaration.getElementName()->getRawName());
    if (!tag.token && prefix && *prefix != 0)
        name = VString(prefix) + ":" + declaration.getBaseName();
    const bool isInUndeclared = !isRoot && m_trail.Top().isUndeclared;
    TrailElement& element = m_trail.Push(name);
    element.isUndeclared = isInUndeclared;
    if (tag.token) {
        element.start = m_tags->GetRange(tag.token->name);
        element.hasEndTag = !tag.token->isEmpty;
    }
    if (m_settings.validates)
        FindTypes(element, declaration, tag);
    if (TrailElement* const parent = m_trail.Parent(); parent && parent->declaration) {
        parent->children.push_back({declaration.getElementName(),
            element.name,
            element.start,
            element.index,
            element.number,
            element.complexType,
            false});
    }
    if (m_settings.checksReferences && !m_settings.validates)
        CheckPrefixes(tag);
    m_tag = &tag;
    if (m_settings.validates) {
        const TrailElement& top = m_trail.Top();
        AddKeyFaults(
            m_keys.StartElement({declaration, uri, attributes, count, top.name, top.complexType, top.simpleType}));
    }
    for (XercesFault& fault : faults) {
        if (IsContentFault(fault))
            m_pending.push_back(std::move(fault));
        else if (!IsTextFault(fault))
            ExplainTag(fault, tag);
    }
    m_tag = nullptr;
    if (tag.token)
        m_tags->Advance();
    if (isEmpty)
        EndElement();
}

void DiagnosticReader::endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*)
{
    EndElement();
}

SourcePosition DiagnosticReader::LocatorKeeper::GetPosition() const
{
    return m_locator ? SourcePosition{m_locator->getLineNumber(), m_locator->getColumnNumber()} : SourcePosition();
}

void DiagnosticReader::startEntityReference(const xercesc::XMLEntityDecl& entity)
{
    if (m_openEntities.empty())
        m_reference = MapPosition(m_handler.GetPosition());
    m_openEntities.emplace_back(entity.getName());
    if (m_settings.checksReferences && !m_settings.validates && entity.getValue())
        CheckEntities(VString(entity.getValue()).toStdString());
}

void DiagnosticReader::EndElement()
{
    const bool hasEndTag = m_trail.Top().hasEndTag;
    const XMLToken* const token = hasEndTag ? FindTag(XMLToken::Kind::EndTag) : nullptr;
    const SourceRange endTag = token ? m_tags->GetRange() : m_trail.Top().start;
    const std::vector<XercesFault> faults = std::exchange(m_pending, {});
    const auto isNil = [](const XercesFault& fault) {
        return fault.isValidity && fault.code == xercesc::XMLValid::NilAttrNotEmpty;
    };
    m_trail.Top().hasBadType |= std::any_of(faults.begin(), faults.end(), isNil);
    for (const XercesFault& fault : faults) {
        if (IsTextFault(fault))
            ExplainText(fault);
        else if (IsContentFault(fault))
            ExplainContent(fault, endTag);
        else if (CodeOf(fault) == DiagnosticCode::BadValue || CodeOf(fault) == DiagnosticCode::FixedValue)
            ExplainValue(fault);
        else
            ExplainOther(fault);
    }
    if (m_settings.validates)
        AddKeyFaults(m_keys.EndElement());
    else if (m_settings.checksReferences)
        m_prefixes.EndElement();
    ExplainWrapper();
    m_trail.Pop();
    if (token)
        m_tags->Advance();
}

void DiagnosticReader::docCharacters(const XMLCh* text, XMLSize_t length, bool)
{
    if (m_trail.IsEmpty())
        return;
    if (m_settings.validates)
        m_keys.AddText(text, length);
    if (!m_trail.Top().simpleType)
        return;
    std::u16string& kept = m_trail.Top().text;
    kept.append(text, std::min<std::size_t>(length, KeptTextLength - std::min(KeptTextLength, kept.size())));
}

// The types of the schema.

xercesc::ComplexTypeInfo* DiagnosticReader::FindType(const VString& name)
{
    const std::u16string_view text = name.View();
    const std::u16string local(text.substr(text.find(u':') + 1));
    std::set<xercesc::ComplexTypeInfo*> found;
    xercesc::RefHashTableOfEnumerator<xercesc::Grammar> grammars = GetGrammars().getGrammarEnumerator();
    while (grammars.hasMoreElements()) {
        auto* const grammar = dynamic_cast<xercesc::SchemaGrammar*>(&grammars.nextElement());
        if (!grammar || !grammar->getComplexTypeRegistry())
            continue;
        const std::u16string key = std::u16string(grammar->getTargetNamespace()) + u"," + local;
        if (xercesc::ComplexTypeInfo* const type = grammar->getComplexTypeRegistry()->get(key.c_str()))
            found.insert(type);
    }
    return found.size() == 1 ? *found.begin() : nullptr;
}

bool DiagnosticReader::IsOfInstance(const xercesc::XMLAttr& attribute, const XMLCh* local) const
{
    const XMLCh* const space = GetGrammars().getURIStringPool()->getValueForId(attribute.getURIId());
    return xercesc::XMLString::equals(attribute.getName(), local) &&
        xercesc::XMLString::equals(space, xercesc::SchemaSymbols::fgURI_XSI);
}

void DiagnosticReader::FindTypes(TrailElement& element, const xercesc::XMLElementDecl& declaration, const StartTag& tag)
{
    if (declaration.getObjectType() != xercesc::XMLElementDecl::Schema || !declaration.isDeclared())
        return;
    const auto& schema = static_cast<const xercesc::SchemaElementDecl&>(declaration);
    element.declaration = &schema;
    element.complexType = schema.getComplexTypeInfo();
    element.simpleType =
        element.complexType ? element.complexType->getDatatypeValidator() : schema.getDatatypeValidator();
    for (XMLSize_t i = 0; i < tag.count; ++i) {
        const xercesc::XMLAttr& attribute = *tag.attributes->elementAt(i);
        if (IsOfInstance(attribute, xercesc::SchemaSymbols::fgXSI_TYPE)) {
            element.hasOwnType = true;
            element.complexType = FindType(attribute.getValue());
            element.simpleType = element.complexType ? element.complexType->getDatatypeValidator() : nullptr;
        }
    }
}

// Making diagnostics.

ParseDiagnostic DiagnosticReader::Begin(const XercesFault& fault, DiagnosticCode code)
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = fault.type == ErrType_Warning ? ParseDiagnostic::Severity::Warning
        : fault.type == ErrType_Fatal                   ? ParseDiagnostic::Severity::FatalError
                                                        : ParseDiagnostic::Severity::Error;
    diagnostic.code = code;
    diagnostic.sourceId = m_id;
    diagnostic.start = fault.position;
    if (!m_trail.IsEmpty()) {
        diagnostic.path = m_trail.GetPath();
        diagnostic.element = m_trail.Top().number;
        SetRange(diagnostic, m_trail.Top().start, fault);
    }
    return diagnostic;
}

void DiagnosticReader::SetRange(ParseDiagnostic& diagnostic, const SourceRange& range, const XercesFault& fault) const
{
    const bool isKnown = range.start.line != 0;
    const SourcePosition position = fault.position.line != 0 ? fault.position : m_reference;
    const SourceRange mapped = isKnown ? MapRange(range) : SourceRange{position, SourcePosition()};
    diagnostic.start = mapped.start;
    diagnostic.end = mapped.end;
}

void DiagnosticReader::SetParent(ParseDiagnostic& diagnostic)
{
    const TrailElement* const parent = m_trail.Parent();
    if (parent && parent->start.start.line != 0)
        diagnostic.related = {"in " + m_trail.GetParentPath() + ", which began", MapPosition(parent->start.start)};
}

std::size_t DiagnosticReader::Add(ParseDiagnostic diagnostic)
{
    m_diagnostics.push_back(std::move(diagnostic));
    return m_diagnostics.size() - 1;
}

bool DiagnosticReader::IsRepeated(DiagnosticCode code, const VString& element, const VString& name)
{
    const std::u16string key =
        static_cast<char16_t>(code) + std::u16string(element.View()) + u'\n' + std::u16string(name.View());
    const auto [entry, isNew] = m_repetitions.try_emplace(key, Repetition{m_diagnostics.size(), 0});
    if (!isNew)
        ++entry->second.count;
    return !isNew;
}

const XMLAttributeToken* DiagnosticReader::FindWritten(StartTag& tag, const VString& name)
{
    if (!tag.token)
        return nullptr;
    if (tag.written.empty()) {
        XMLAttributeReader reader(*tag.token);
        XMLAttributeToken attribute;
        while (reader.Next(attribute))
            tag.written.emplace(attribute.name, attribute);
    }
    const auto found = tag.written.find(name.toStdString());
    return found == tag.written.end() ? nullptr : &found->second;
}

VString DiagnosticReader::GetName(const xercesc::SchemaAttDef& attribute) const
{
    const xercesc::QName& name = *attribute.getAttName();
    const XMLCh* const space = GetGrammars().getURIStringPool()->getValueForId(name.getURI());
    if (xercesc::XMLString::equals(space, XMLUni::fgXMLURIName))
        return VString("xml:") + name.getLocalPart();
    const VString colonNamespace = ToVString(ColonRewriting::Namespace);
    return colonNamespace == space ? VString(":") + name.getLocalPart() : VString(name.getLocalPart());
}

VString DiagnosticReader::FindReported(StartTag& tag, const VString& reported)
{
    const std::u16string_view text = reported.View();
    if (!text.starts_with(u'{') && FindWritten(tag, reported))
        return reported;
    for (XMLSize_t i = tag.prefixed.empty() ? 0 : tag.count; i < tag.count; ++i) {
        const xercesc::XMLAttr& attribute = *tag.attributes->elementAt(i);
        if (VString(attribute.getQName()).contains(":"))
            tag.prefixed.emplace(attribute.getName(), attribute.getQName());
    }
    const auto found = tag.prefixed.find(text.substr(text.starts_with(u'{') ? text.find(u'}') + 1 : 0));
    return found == tag.prefixed.end() ? reported : VString(found->second);
}

std::vector<VString> DiagnosticReader::WriteNames(
    const ContentModelQuery::Names& names, const TrailElement& parent) const
{
    const std::u16string_view parentName = parent.name.View();
    const std::size_t colon = parentName.find(u':');
    const VString prefix = colon == std::u16string_view::npos ? VString() : VString(parentName.data(), colon + 1);
    const unsigned int space = parent.declaration ? parent.declaration->getURI() : 0;
    std::vector<VString> written;
    written.reserve(names.size());
    for (const xercesc::QName* name : names) {
        // A name of another namespace has an unknown prefix, unless a sibling shows it.
        const auto isIt = [&](const TrailChild& child) { return child.name == name || *child.name == *name; };
        const auto known = std::find_if(parent.children.begin(), parent.children.end(), isIt);
        if (name->getURI() == space)
            written.push_back(prefix + name->getLocalPart());
        else
            written.push_back(known == parent.children.end() ? VString(name->getLocalPart()) : known->written);
    }
    return written;
}

// Explaining faults of keys.

SourcePosition DiagnosticReader::GetStart(const XMLCh* attribute)
{
    const XMLAttributeToken* const token = attribute && m_tag ? FindWritten(*m_tag, attribute) : nullptr;
    return MapPosition(token ? m_tags->GetRange(token->value).start : m_trail.Top().start.start);
}

ParseDiagnostic DiagnosticReader::Describe(const XMLCh* attribute)
{
    ParseDiagnostic diagnostic = Begin(XercesFault{}, DiagnosticCode::Other);
    if (const XMLAttributeToken* const token = attribute && m_tag ? FindWritten(*m_tag, attribute) : nullptr)
        SetRange(diagnostic, m_tags->GetRange(token->value), XercesFault{});
    if (attribute)
        diagnostic.attribute = Restore(attribute);
    return diagnostic;
}

void DiagnosticReader::AddKeyFaults(KeyTracker::Faults faults)
{
    std::move(faults.begin(), faults.end(), std::back_inserter(m_keyFaults));
}

void DiagnosticReader::ChooseKeyFaults()
{
    // A missing attribute that is a key is one mistake.
    std::set<std::size_t> incomplete;
    for (const ParseDiagnostic& diagnostic : m_diagnostics) {
        if (diagnostic.code == DiagnosticCode::MissingAttribute)
            incomplete.insert(diagnostic.element);
    }
    for (const DiagnosticCode code :
        {DiagnosticCode::DuplicateKey, DiagnosticCode::MissingKey, DiagnosticCode::UnknownReference}) {
        const auto hasCode = [&](const ParseDiagnostic& diagnostic) { return diagnostic.code == code; };
        const bool isReported = std::any_of(m_keyMessages.begin(), m_keyMessages.end(), hasCode);
        const bool isFound = std::any_of(m_keyFaults.begin(), m_keyFaults.end(), hasCode);
        if (!isReported)
            continue;
        for (const ParseDiagnostic& diagnostic : isFound ? m_keyFaults : m_keyMessages) {
            const bool isKnown = code == DiagnosticCode::MissingKey && incomplete.contains(diagnostic.element);
            if (hasCode(diagnostic) && !isKnown)
                Add(diagnostic);
        }
    }
}

std::vector<VString> DiagnosticReader::FindPrefixes() const
{
    constexpr std::string_view Declaration = "xmlns:";
    std::set<std::string> prefixes;
    const XMLToken* const next = m_tags->Next();
    XMLTokenReader reader(m_text);
    XMLToken token;
    while (next && reader.Next(token) && token.text.data() <= next->text.data()) {
        if (token.kind != XMLToken::Kind::StartTag)
            continue;
        XMLAttributeReader attributes(token);
        XMLAttributeToken attribute;
        while (attributes.Next(attribute)) {
            if (attribute.name.starts_with(Declaration))
                prefixes.emplace(attribute.name.substr(Declaration.size()));
        }
    }
    std::vector<VString> names;
    names.reserve(prefixes.size());
    for (const std::string& prefix : prefixes)
        names.push_back(ToVString(prefix));
    return names;
}

void DiagnosticReader::ExplainEntity(ParseDiagnostic& diagnostic, const XercesFault& fault) const
{
    diagnostic.value = m_openEntities.back();
    if (diagnostic.code == DiagnosticCode::ExpansionLimit) {
        diagnostic.value = m_openEntities.front();
        diagnostic.message = "the entity " + Quote(diagnostic.value) + " grows beyond the limit of " +
            fault.parameters[0] + " expansions in a document";
    } else if (diagnostic.code == DiagnosticCode::RecursiveEntity) {
        diagnostic.value = fault.parameters[0];
        const auto first = std::find(m_openEntities.begin(), m_openEntities.end(), diagnostic.value);
        diagnostic.message = "the entity " + Quote(diagnostic.value) + " contains itself";
        for (auto entity = first; entity != m_openEntities.end(); ++entity) {
            const bool isLast = entity + 1 == m_openEntities.end();
            diagnostic.message += (entity == first ? VString(": ") : VString(", ")) + Quote(*entity) + " contains " +
                Quote(isLast ? diagnostic.value : *(entity + 1));
        }
    } else {
        diagnostic.message =
            "the text of the entity " + Quote(diagnostic.value) + " has a fault: " + diagnostic.message;
    }
    LocateEntity(diagnostic);
}

void DiagnosticReader::LocateEntity(ParseDiagnostic& diagnostic) const
{
    const std::optional<EntityDeclaration> declaration = FindEntityDeclaration(m_text, diagnostic.value.toStdString());
    if (!declaration)
        return;
    PositionCounter counter(m_text);
    diagnostic.related = {
        "entity " + Quote(diagnostic.value) + " is declared", MapPosition(counter.At(declaration->nameStart))};
}

void DiagnosticReader::RestoreQuotations(ParseDiagnostic& diagnostic)
{
    const VString prefix(ColonRewriting::ReadPrefix.data(), ColonRewriting::ReadPrefix.size());
    diagnostic.message = diagnostic.message.replace(prefix, ":");
    diagnostic.value = diagnostic.value.replace(prefix, ":");
    if (diagnostic.related)
        diagnostic.related->message = diagnostic.related->message.replace(prefix, ":");
}

VString DiagnosticReader::RestoreNames(const VString& message)
{
    if (m_writtenNames.Restore(message) == message)
        return message;
    const VString prefix(ColonRewriting::ReadPrefix.data(), ColonRewriting::ReadPrefix.size());
    return message.replace("'" + prefix, "':");
}

// Reporting doubtful references.

void DiagnosticReader::entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter, bool)
{
    if (!isParameter)
        m_entities.insert(VString(entity.getName()).toStdString());
}

void DiagnosticReader::CheckStart()
{
    if (!DiagnosticPass::HasLateDeclaration(m_source))
        return;
    ParseDiagnostic diagnostic = Begin(XercesFault{}, DiagnosticCode::MisplacedDeclaration);
    diagnostic.severity = ParseDiagnostic::Severity::Warning;
    diagnostic.start = MapPosition({1, 1});
    diagnostic.end = {diagnostic.start.line, diagnostic.start.column + DeclarationStart.size()};
    diagnostic.message = "white space stands in front of the XML declaration; remove it, because other programs refuse "
                         "such a document";
    AddDoubt(std::move(diagnostic));
}

void DiagnosticReader::CheckPrefixes(StartTag& tag)
{
    const std::u16string element(m_trail.Top().name.View());
    for (const NamespaceFault& fault : m_prefixes.StartElement(element.c_str(), *tag.attributes, tag.count))
        ExplainNamespace(fault, tag);
    if (tag.token && m_hasDocumentType)
        CheckEntities(tag.token->text);
}

void DiagnosticReader::ExplainNamespace(const NamespaceFault& fault, StartTag& tag)
{
    using Kind = NamespaceFault::Kind;
    const VString prefix(fault.prefix.data(), fault.prefix.size());
    const VString name(fault.name.data(), fault.name.size());
    const DiagnosticCode code = fault.kind == Kind::UndeclaredPrefix ? DiagnosticCode::UndeclaredPrefix
        : fault.kind == Kind::DuplicateAttribute                     ? DiagnosticCode::DuplicateAttribute
                                                                     : DiagnosticCode::BadNamespace;
    if (IsRepeated(code, VString(), fault.kind == Kind::UndeclaredPrefix ? prefix : name))
        return;
    ParseDiagnostic diagnostic = Begin(XercesFault{}, code);
    diagnostic.severity = ParseDiagnostic::Severity::Warning;
    diagnostic.value = prefix;
    if (const XMLAttributeToken* const attribute = FindWritten(tag, name)) {
        SetRange(diagnostic, m_tags->GetRange(attribute->name), XercesFault{});
        diagnostic.attribute = name;
    }
    switch (fault.kind) {
    case Kind::UndeclaredPrefix:
        diagnostic.message = DescribePrefix(prefix, HasDetail() ? m_prefixes.GetPrefixes() : std::vector<VString>());
        break;
    case Kind::EmptyNamespace:
        diagnostic.message = "the prefix " + Quote(prefix) + " has an empty namespace; write a name for it";
        break;
    case Kind::ReservedPrefix:
        diagnostic.message = prefix == "xml"
            ? VString("the prefix 'xml' always means http://www.w3.org/XML/1998/namespace; remove this declaration")
            : "the prefix " + Quote(prefix) + " cannot be declared for this namespace; choose another prefix";
        break;
    case Kind::TwoColons:
        diagnostic.message = "the name " + Quote(name) + " has two colons; a name has one colon, behind its prefix";
        break;
    case Kind::DuplicateAttribute: {
        const VString other(fault.otherName.data(), fault.otherName.size());
        diagnostic.message = "the attributes " + Quote(other) + " and " + Quote(name) +
            " are the same one, because their prefixes mean "
            "the same namespace";
        break;
    }
    }
    AddDoubt(std::move(diagnostic));
}

void DiagnosticReader::CheckEntities(std::string_view text)
{
    for (std::size_t start = XMLReferences::FindEntity(text); start != std::string_view::npos;) {
        const std::size_t end = text.find(';', start);
        const std::string_view reference = text.substr(start, end - start + (end == std::string_view::npos ? 0 : 1));
        const std::string name(reference.substr(1, reference.size() - 2));
        if (!m_entities.contains(name) && !IsRepeated(DiagnosticCode::UnknownEntity, VString(), ToVString(name))) {
            ParseDiagnostic diagnostic = Begin(XercesFault{}, DiagnosticCode::UnknownEntity);
            const bool isInText = m_openEntities.empty();
            SetRange(diagnostic, isInText ? m_tags->GetRange(reference) : SourceRange{}, XercesFault{});
            diagnostic.value = ToVString(name);
            diagnostic.message = "the entity " + Quote(diagnostic.value) +
                " is not declared in the document, and no other file is read, so its text would be lost";
            AddDoubt(std::move(diagnostic));
        }
        const std::size_t next = start + reference.size();
        const std::size_t found = XMLReferences::FindEntity(text.substr(next));
        start = found == std::string_view::npos ? found : next + found;
    }
}

void DiagnosticReader::AddDoubt(ParseDiagnostic diagnostic)
{
    m_doubts.push_back(diagnostic);
    Add(std::move(diagnostic));
}

// Explaining all other faults.

void DiagnosticReader::ExplainOther(const XercesFault& fault)
{
    if (!m_trail.IsEmpty() && m_trail.Top().isUndeclared && (fault.isValidity || fault.isOfValue))
        return;
    ParseDiagnostic diagnostic = Begin(fault, CodeOf(fault));
    // A fault in front of the tag is one of the document type.
    if (!fault.isValidity || IsBefore(fault.position, diagnostic.start))
        SetRange(diagnostic, SourceRange(), fault);
    diagnostic.message = Adapt(fault.text);
    // Xerces reports a missing key for each reference to it, even if there is no reference in the document.
    if (fault.isValidity && fault.code == xercesc::XMLValid::IC_KeyRefOutOfScope)
        m_missingKeys.push_back(std::move(diagnostic));
    else if (IsAboutKeys(diagnostic.code))
        m_keyMessages.push_back(std::move(diagnostic));
    else
        Add(std::move(diagnostic));
}

void DiagnosticReader::PreferEndTag(ParseDiagnostic& diagnostic, std::string_view endTag)
{
    const TrailElement* const element = m_trail.IsEmpty() ? nullptr : &m_trail.Top();
    const bool isMisspelt = element && element->undeclared &&
        endTag.starts_with("</" + m_diagnostics[*element->undeclared].suggestion.toStdString());
    if (!isMisspelt || m_diagnostics[*element->undeclared].suggestion.IsEmpty())
        return;
    diagnostic.suggestion = m_diagnostics[*element->undeclared].suggestion;
    diagnostic.message = "the end tag " + Quote(ToVString(endTag)) + " does not fit the misspelt start tag " +
        Quote("<" + element->name + ">");
}

void DiagnosticReader::ExplainExternalDocumentType(ParseDiagnostic diagnostic, const XercesFault& fault)
{
    const std::string file = fault.parameters[0].toStdString();
    diagnostic.code = DiagnosticCode::ExternalEntity;
    diagnostic.value = fault.parameters[0];
    diagnostic.message = "the document type names the file " + Quote(diagnostic.value) +
        ", which is never read; a document with a schema must not have such a document type";
    const std::size_t start = m_text.find(file, std::min(m_text.find("<!DOCTYPE"), m_text.size()));
    if (!file.empty() && start != std::string_view::npos) {
        PositionCounter counter(m_text);
        diagnostic.start = MapPosition(counter.At(start));
        diagnostic.end = MapPosition(counter.At(start + file.size()));
    }
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainMissingConverter(ParseDiagnostic diagnostic, const XercesFault& fault)
{
    diagnostic.code = DiagnosticCode::UnknownEncoding;
    diagnostic.value = fault.parameters[0];
    // The text cannot be decoded, but in most encodings the declaration consists of ASCII characters.
    const std::string_view source = m_source.View();
    if (const std::optional<std::string_view> name = FindDeclaredEncoding(source)) {
        diagnostic.value = ToVString(*name);
        const auto start = static_cast<std::size_t>(name->data() - source.data());
        PositionCounter counter(source);
        diagnostic.start = MapPosition(counter.At(start));
        diagnostic.end = MapPosition(counter.At(start + name->size()));
    }
    diagnostic.message =
        "the parser cannot read the encoding " + Quote(diagnostic.value) + "; save the document as UTF-8";
    Add(std::move(diagnostic));
}

void DiagnosticReader::ExplainFatal(const XercesFault& fault)
{
    PrepareText();
    ParseDiagnostic diagnostic = Begin(fault, CodeOf(fault));
    SetRange(diagnostic, SourceRange(), fault);
    diagnostic.message = Adapt(fault.text);
    if (diagnostic.code == DiagnosticCode::UndeclaredPrefix) {
        diagnostic.value = fault.parameters[0];
        diagnostic.message = DescribePrefix(diagnostic.value, FindPrefixes());
        if (const XMLToken* const tag = FindTag(XMLToken::Kind::StartTag)) {
            SetRange(diagnostic, m_tags->GetRange(FindPrefixed(*tag, diagnostic.value)), fault);
        }
        Add(std::move(diagnostic));
        return;
    }
    if (fault.isOfReading && fault.code == xercesc::XMLExcepts::Gen_CouldNotOpenDTD) {
        ExplainExternalDocumentType(std::move(diagnostic), fault);
        return;
    }
    if (fault.isOfReading || diagnostic.code == DiagnosticCode::WrongEncoding) {
        std::optional<ParseDiagnostic> unreadable = EncodingFaults::Find(m_source);
        if (unreadable) {
            unreadable->sourceId = diagnostic.sourceId;
            Add(std::move(*unreadable));
            return;
        }
    }
    if (fault.isOfReading && fault.code == xercesc::XMLExcepts::Trans_CantCreateCvtrFor) {
        ExplainMissingConverter(std::move(diagnostic), fault);
        return;
    }
    if (diagnostic.code == DiagnosticCode::BadDocumentType)
        diagnostic.message = "the document type has a fault: " + diagnostic.message;
    if (!m_openEntities.empty())
        ExplainEntity(diagnostic, fault);
    const std::optional<SyntaxFault> found = !m_openEntities.empty() ? std::nullopt : FindSyntaxFault(m_text);
    if (found) {
        ParseDiagnostic described = diagnostic;
        described.code = found->code;
        DescribeSyntaxFault(*found, m_text, m_source.GetSourceMap().get(), described);
        if (!IsBefore(fault.position, described.start)) {
            described.message = RestoreNames(described.message);
            described.attribute = Restore(described.attribute);
            if (found->code == DiagnosticCode::MismatchedEndTag)
                PreferEndTag(described, m_text.substr(found->start, found->end - found->start));
            diagnostic = std::move(described);
        }
    }
    // Replaces a doubt about the same entity.
    const auto isSame = [&](const ParseDiagnostic& other) {
        return fault.code == xercesc::XMLErrs::EntityNotFound && other.code == DiagnosticCode::UnknownEntity &&
            other.value == fault.parameters[0];
    };
    std::erase_if(m_doubts, isSame);
    const auto known = std::find_if(m_diagnostics.begin(), m_diagnostics.end(), isSame);
    if (known != m_diagnostics.end())
        *known = std::move(diagnostic);
    else
        Add(std::move(diagnostic));
}
