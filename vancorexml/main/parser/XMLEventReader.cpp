#include "vancorexml/main/parser/XMLEventReader.h"

#include <QCryptographicHash>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLEntityDecl.hpp>
#include <xercesc/framework/XMLNotationDecl.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "vancorexml/main/parser/Utf16InputSource.h"
#include "vancorexml/main/parser/XMLUtils.h"
#include "vancorexml/main/parser/XercesBuffer.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vancorexml/main/parser/XercesPlatform.h"
#include "vancorexml/main/parser/XercesReader.h"

using xercesc::XMLUni;
using Kind = XMLEvent::Kind;

namespace {

// Separates the parts of an event. No document contains it.
constexpr char16_t Separator = u'\0';

// Represents a missing part. No document contains it.
constexpr std::u16string_view Missing = u"\xFFFF";

// In UTF-16 code units. A longer part of an event is replaced by its digest, so that the memory of the events does not
// grow with the longest text of the document.
constexpr std::size_t LongestPart = 0x10000;

constexpr std::u16string_view SpaceAttribute = u"xml:space";
constexpr std::u16string_view Preserve = u"preserve";

std::u16string_view View(const XMLCh* text) noexcept
{
    return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

// Like View, but distinguishes an empty text from a missing one.
std::u16string_view ViewOrMissing(const XMLCh* text) noexcept
{
    return text == nullptr ? Missing : std::u16string_view(text);
}

bool IsBlank(std::u16string_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return XmlUtils::IsWhitespace(unit); });
}

// The digest of a long part of an event. SHA-1 is four times faster than SHA-256. Its known collisions are no risk
// here, because no document can choose its formatted text freely.
class Digest {
public:
    void Add(std::u16string_view text)
    {
        constexpr std::size_t Most = 0x10000000;  // the hash takes an int
        for (; !text.empty(); text.remove_prefix(std::min(Most, text.size()))) {
            const std::u16string_view piece = text.substr(0, Most);
            m_hash.addData(
                reinterpret_cast<const char*>(piece.data()), static_cast<int>(piece.size() * sizeof(char16_t)));
        }
    }

    // Appends the digest of all texts that were added. The separator in front distinguishes it from other parts: no
    // part of a document begins with a separator.
    void AppendTo(std::u16string& out) const
    {
        out += Separator;
        for (const char byte : m_hash.result())
            out += static_cast<char16_t>(static_cast<unsigned char>(byte));
    }

    void Reset() { m_hash.reset(); }

private:
    QCryptographicHash m_hash{QCryptographicHash::Sha1};
};

void AppendPart(std::u16string& out, std::u16string_view part)
{
    if (part.size() <= LongestPart) {
        out += part;
        return;
    }
    Digest digest;
    digest.Add(part);
    digest.AppendTo(out);
}

// Thrown to end a parse at a fault.
struct FaultFound {};

// Ends a parse at its first fault.
class FaultHandler final : public xercesc::DefaultHandler {
public:
    void fatalError(const xercesc::SAXParseException&) override { throw FaultFound(); }
};

}  // namespace

// Parses in steps through Xerces. Each step continues until Xerces reports something, and queues the events.
class XMLEventReader::Reader final : public XercesReader {
public:
    explicit Reader(XercesInputSource&& source) : m_source(std::move(source))
    {
        setContentHandler(&m_faults);
        setErrorHandler(&m_faults);
        setDeclarationHandler(&m_faults);
        setLexicalHandler(&m_faults);
        setProperty(XMLUni::fgXercesSecurityManager, &m_securityManager);
        setExitOnFirstFatalError(true);
        setFeature(XMLUni::fgXercesLoadExternalDTD, false);
        setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
        setFeature(XMLUni::fgXercesLoadSchema, false);
        setFeature(XMLUni::fgXercesDynamic, false);
        setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
        setFeature(XMLUni::fgSAX2CoreValidation, false);
        setFeature(XMLUni::fgXercesSkipDTDValidation, true);
        if (Utf16InputSource::IsWellFormed(m_source.Get(), m_source.View()))
            m_converted = std::make_unique<Utf16InputSource>(m_source.Get(), m_source.View());
    }

    const XMLEvent& Next()
    {
        while (m_next == m_count && !m_isAtEnd)
            ReadMore();
        // The last event stays in the queue, so that later calls return it again.
        const bool isLast = m_next + 1 == m_count && m_isAtEnd;
        return m_events[isLast ? m_next : m_next++];
    }

    const std::set<std::u16string>& PreservedElements() const noexcept { return m_preserved; }

private:
    // Each handler interface of Xerces declares an overload of these functions. Xerces calls only the overloads that
    // this class overrides.
    using SAX2XMLReaderImpl::endElement;
    using SAX2XMLReaderImpl::startElement;

    void ReadMore()
    {
        m_next = m_count = 0;
        try {
            const bool hasMore = m_isStarted ? parseNext(m_token) : ReadStart();
            if (hasMore)
                return;
            FlushText();
            Append(Kind::EndOfDocument);
        } catch (const FaultFound&) {
            AppendFault();
        } catch (const xercesc::XMLException&) {
            AppendFault();
        }
        m_isAtEnd = true;
    }

    bool ReadStart()
    {
        m_isStarted = true;
        return m_converted ? parseFirst(*m_converted, m_token) : parseFirst(m_source.Get(), m_token);
    }

    void AppendFault()
    {
        ClearText();
        Append(Kind::Fault);
    }

    XMLEvent& Append(Kind kind)
    {
        if (m_count == m_events.size())
            m_events.emplace_back();
        XMLEvent& event = m_events[m_count++];
        event.kind = kind;
        event.isBlank = false;
        event.preserves = false;
        event.text.clear();
        return event;
    }

    // Ends the text that is being collected.
    void FlushText()
    {
        if (m_isLongText || !m_pendingText.empty()) {
            XMLEvent& event = Append(Kind::Text);
            event.isBlank = m_isBlankText;
            event.text.swap(m_pendingText);
            if (m_isLongText)
                m_digest.AppendTo(event.text);
        }
        ClearText();
    }

    void ClearText()
    {
        m_pendingText.clear();
        m_isBlankText = true;
        if (std::exchange(m_isLongText, false))
            m_digest.Reset();
    }

    // Appends an event with these parts, behind the text that is being collected.
    XMLEvent& AppendParts(Kind kind, std::initializer_list<std::u16string_view> parts)
    {
        FlushText();
        XMLEvent& event = Append(kind);
        for (const std::u16string_view part : parts) {
            AppendPart(event.text, part);
            event.text += Separator;
        }
        return event;
    }

    void AddToDocumentType(std::initializer_list<std::u16string_view> parts)
    {
        if (m_documentType.empty())
            m_documentType += Separator;
        for (const std::u16string_view part : parts)
            (m_documentType += part) += Separator;
    }

    // Appends the event of the document type. Call it in front of the next event of the document, because the document
    // type is complete then.
    void FlushDocumentType()
    {
        if (m_documentType.empty())
            return;
        Append(Kind::DocumentType).text.swap(m_documentType);
        m_documentType.clear();
    }

    void XMLDecl(const XMLCh* version, const XMLCh*, const XMLCh* standalone, const XMLCh*) override
    {
        AppendParts(Kind::Declaration, {View(version), View(standalone)});
    }

    void startElement(const xercesc::XMLElementDecl& element,
        unsigned int,
        const XMLCh*,
        const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
        XMLSize_t count,
        bool isEmpty,
        bool isRoot) override
    {
        FlushText();
        FlushDocumentType();
        m_attributes.clear();
        for (XMLSize_t i = 0; i < count; ++i)
            m_attributes.emplace_back(
                View(attributes.elementAt(i)->getQName()), View(attributes.elementAt(i)->getValue()));
        std::sort(m_attributes.begin(), m_attributes.end());
        XMLEvent& event = Append(Kind::StartElement);
        AppendPart(event.text, View(element.getElementName()->getRawName()));
        event.text += Separator;
        for (const auto& [name, value] : m_attributes) {
            AppendPart(event.text, name);
            event.text += Separator;
            AppendPart(event.text, value);
            event.text += Separator;
            event.preserves |= name == SpaceAttribute && value == Preserve;
        }
        ++m_depth;
        if (isEmpty)
            endElement(element, 0, isRoot, nullptr);
    }

    void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override
    {
        FlushText();
        Append(Kind::EndElement);
        --m_depth;
    }

    void docCharacters(const XMLCh* text, XMLSize_t length, bool isCData) override
    {
        if (m_depth == 0)
            return;
        const std::u16string_view characters(text, length);
        m_isBlankText = m_isBlankText && !isCData && IsBlank(characters);
        if (!m_isLongText && m_pendingText.size() + length <= LongestPart) {
            m_pendingText += characters;
            return;
        }
        m_isLongText = true;
        m_digest.Add(m_pendingText);
        m_digest.Add(characters);
        m_pendingText.clear();
    }

    void ignorableWhitespace(const XMLCh* text, XMLSize_t length, bool isCData) override
    {
        docCharacters(text, length, isCData);
    }

    void docComment(const XMLCh* text) override
    {
        FlushDocumentType();
        AppendParts(Kind::Comment, {View(text)});
    }

    void docPI(const XMLCh* target, const XMLCh* data) override
    {
        FlushDocumentType();
        AppendParts(Kind::ProcessingInstruction, {View(target), View(data)});
    }

    void startEntityReference(const xercesc::XMLEntityDecl& entity) override
    {
        AppendParts(Kind::StartEntity, {View(entity.getName())});
    }

    void endEntityReference(const xercesc::XMLEntityDecl& entity) override
    {
        AppendParts(Kind::EndEntity, {View(entity.getName())});
    }

    void doctypeDecl(const xercesc::DTDElementDecl& element,
        const XMLCh* publicId,
        const XMLCh* systemId,
        bool hasInternalSubset,
        bool hasExternalSubset) override
    {
        AddToDocumentType({View(element.getFullName()),
            ViewOrMissing(publicId),
            ViewOrMissing(systemId),
            hasInternalSubset ? u"[" : u""});
        XercesReader::doctypeDecl(element, publicId, systemId, hasInternalSubset, hasExternalSubset);
    }

    void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute, bool isIgnored) override
    {
        const std::u16string_view value = View(attribute.getValue());
        const char16_t types[] = {static_cast<char16_t>(u'0' + attribute.getType()),
            static_cast<char16_t>(u'0' + attribute.getDefaultType())};
        AddToDocumentType({u"<!ATTLIST",
            View(element.getFullName()),
            View(attribute.getFullName()),
            std::u16string_view(types, 2),
            View(attribute.getEnumeration()),
            ViewOrMissing(attribute.getValue())});
        // XML uses only the first declaration of an attribute.
        if (!isIgnored && attribute.getFullName() == SpaceAttribute && value == Preserve)
            m_preserved.emplace(View(element.getFullName()));
    }

    void elementDecl(const xercesc::DTDElementDecl& element, bool) override
    {
        AddToDocumentType({u"<!ELEMENT", View(element.getFullName()), View(element.getFormattedContentModel())});
    }

    void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameterEntity, bool) override
    {
        AddToDocumentType({isParameterEntity ? u"<!ENTITY %" : u"<!ENTITY",
            View(entity.getName()),
            ViewOrMissing(entity.getValue()),
            ViewOrMissing(entity.getPublicId()),
            ViewOrMissing(entity.getSystemId()),
            ViewOrMissing(entity.getNotationName())});
    }

    void notationDecl(const xercesc::XMLNotationDecl& notation, bool) override
    {
        AddToDocumentType({u"<!NOTATION",
            View(notation.getName()),
            ViewOrMissing(notation.getPublicId()),
            ViewOrMissing(notation.getSystemId())});
    }

    void doctypeComment(const XMLCh* text) override { AddToDocumentType({u"<!--", View(text)}); }
    void doctypePI(const XMLCh* target, const XMLCh* data) override
    {
        AddToDocumentType({u"<?", View(target), View(data)});
    }

    XercesInputSource m_source;
    std::unique_ptr<Utf16InputSource> m_converted;  // null if Xerces decodes the source itself
    xercesc::XMLPScanToken m_token;
    xercesc::SecurityManager m_securityManager;
    FaultHandler m_faults;
    bool m_isStarted = false;
    bool m_isAtEnd = false;
    std::size_t m_depth = 0;
    std::u16string m_pendingText;  // empty for a long text
    bool m_isBlankText = true;     // white space only, and no CDATA section
    bool m_isLongText = false;     // the text is in m_digest
    Digest m_digest;
    std::u16string m_documentType;
    std::set<std::u16string> m_preserved;
    std::vector<XMLEvent> m_events;  // the first m_count are in use
    std::size_t m_count = 0;
    std::size_t m_next = 0;
    std::vector<std::pair<std::u16string_view, std::u16string_view>> m_attributes;  // of the current tag
};

// The order of the members matters: Xerces must outlive the reader.
struct XMLEventReader::State {
    explicit State(XercesInputSource&& source) : reader(std::move(source)) {}

    XercesInitializer xerces;
    Reader reader;
};

// Does not use the colon sanitizer: without namespaces, Xerces accepts names that begin with a colon. The sanitizer
// would also change texts that look like attributes, and change them differently after their quotes were escaped.
XMLEventReader::XMLEventReader(InputSource& source)
    : m_state(std::make_unique<State>(
          dynamic_cast<IXercesInputSourceProvider&>(source).GetXercesInputSource(ColonProcessingNone)))
{}

XMLEventReader::~XMLEventReader() = default;

const XMLEvent& XMLEventReader::Next()
{
    return m_state->reader.Next();
}

const std::set<std::u16string>& XMLEventReader::PreservedElements() const noexcept
{
    return m_state->reader.PreservedElements();
}
