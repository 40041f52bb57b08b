#include "vancorexml/main/parser/EntityExpansionGuard.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/EntitySizes.h"
#include "vancorexml/main/parser/XercesReader.h"

namespace {

using View = std::u16string_view;
using xercesc::XMLUni;

VString MakeMessage(std::uint64_t limit, const char* things)
{
    // Worded like Xerces' own message about general entities.
    return VFormatString("parser has encountered more than '%1' %2 in the document; "
                         "this is the limit imposed by the application")
        .arg(limit)
        .arg(VString(things));
}

// Returns the mark: 80 random bits as letters, drawn once per process, so that no document contains the mark by
// chance. An array needs no destructor, so static objects may still parse while the process exits.
View Mark()
{
    static const std::array<char16_t, 20> mark = [] {
        std::random_device random;
        std::array<char16_t, 20> letters{};
        for (char16_t& letter : letters)
            letter = static_cast<char16_t>(u'a' + random() % 16);
        return letters;
    }();
    return View(mark.data(), mark.size());
}

std::u16string FormatNumber(std::size_t number)
{
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

std::size_t ParseNumber(View digits)
{
    std::size_t number = 0;
    for (const char16_t digit : digits)
        number = 10 * number + (digit - u'0');
    return number;
}

// Thrown to end a rehearsal early: it found an excess, or the rest of the document cannot cause one.
struct RehearsalEnd {};

// Reads a document or a schema as EntityExpansionGuard.h describes, and charges each expansion of an entity against
// the limits.
class Rehearsal final : public XercesReader {
public:
    enum class Subject {
        Document,           // the entities of a document
        Entities,           // the entities of a schema
        DefaultAttributes,  // the default attributes of a schema whose entities are within the limits
    };

    Rehearsal(Subject subject, const ExpansionLimits& limits) : m_subject(subject), m_limits(limits), m_defaults(limits)
    {
        setContentHandler(&m_events);
        setDeclarationHandler(&m_events);
        setXMLEntityResolver(&m_events);
        setExitOnFirstFatalError(true);
        setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
        setFeature(XMLUni::fgSAX2CoreValidation, false);
        setFeature(XMLUni::fgXercesSchema, false);
        setFeature(XMLUni::fgXercesLoadExternalDTD, false);
        setFeature(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    }

    void Run(const xercesc::InputSource& source)
    {
        try {
            parse(source);
        } catch (const RehearsalEnd&) {
            // GetExcess returns the result.
        } catch (const xercesc::SAXException&) {
            // The parser of the document will find and report the same fault.
        } catch (const xercesc::XMLException&) {
            // As above.
        }
    }

    const std::optional<ExpansionExcess>& GetExcess() const noexcept { return m_excess; }
    bool HasDefaultAttributes() const noexcept { return m_hasDefaultAttributes; }
    std::uint64_t CountInProlog() const noexcept { return m_prologCount; }
    std::uint64_t CountInContent() const noexcept { return m_contentCount; }

    void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter, bool isIgnored) override;
    void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute, bool isIgnored) override;
    void doctypePI(const XMLCh* target, const XMLCh* data) override;
    void startElement(const xercesc::XMLElementDecl& element,
        unsigned int uri,
        const XMLCh* prefix,
        const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
        XMLSize_t count,
        bool isEmpty,
        bool isRoot) override;
    void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override {}
    void startEntityReference(const xercesc::XMLEntityDecl& entity) override;

private:
    struct Events final : xercesc::DefaultHandler, xercesc::XMLEntityResolver {
        void setDocumentLocator(const xercesc::Locator* supplied) override { locator = supplied; }
        // The parser of the document stops at a reference to an external entity.
        xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier*) override { throw RehearsalEnd(); }
        using xercesc::DefaultHandler::resolveEntity;
        const xercesc::Locator* locator = nullptr;
    };

    [[noreturn]] void StopWithExcess(const VString& message);
    void Charge(const Expansion& expansion, std::uint64_t& count);
    // Charges the entity of each mark in a text.
    void ChargeMarks(View text, std::uint64_t& count);
    // True if the content can exceed a limit that the parser of the document does not check.
    bool CanContentExceed() const noexcept;

    Subject m_subject;
    ExpansionLimits m_limits;
    Events m_events;
    EntitySizes m_entities{EntitySizes::Kind::General};
    EntitySizes m_parameterEntities{EntitySizes::Kind::Parameter};
    // The number of expansions left within the outermost open parameter entity, including its own.
    std::uint64_t m_innerCount = 0;
    bool m_hasDefaultAttributes = false;
    bool m_isInProlog = true;
    std::uint64_t m_prologCount = 0;
    std::uint64_t m_contentCount = 0;
    Expansion m_sum;
    DefaultAttributeCounter m_defaults;
    std::optional<ExpansionExcess> m_excess;
};

void Rehearsal::StopWithExcess(const VString& message)
{
    m_excess = ExpansionExcess{message};
    if (m_events.locator) {
        m_excess->line = m_events.locator->getLineNumber();
        m_excess->column = m_events.locator->getColumnNumber();
    }
    throw RehearsalEnd();
}

void Rehearsal::Charge(const Expansion& expansion, std::uint64_t& count)
{
    m_sum += expansion;
    count += expansion.count;
    if (count > m_limits.expansions && (m_isInProlog || m_subject != Subject::Document))
        StopWithExcess(MakeMessage(m_limits.expansions, "entity expansions"));
    if (m_sum.text > m_limits.text)
        StopWithExcess(MakeMessage(m_limits.text, "characters of entities"));
    if (m_sum.markup > m_limits.markup)
        StopWithExcess(MakeMessage(m_limits.markup, "characters of entities with markup"));
    if (expansion.levels > m_limits.levels)
        StopWithExcess(MakeMessage(m_limits.levels, "levels of nested entities"));
    if (m_sum.read > m_limits.read)
        StopWithExcess(MakeMessage(m_limits.read, "characters of entities and references within them"));
    if (m_sum.compared > m_limits.compared)
        StopWithExcess(MakeMessage(m_limits.compared, "characters of the names of nested entities"));
}

void Rehearsal::ChargeMarks(View text, std::uint64_t& count)
{
    const View mark = Mark();
    for (std::size_t i = text.find(mark); i != View::npos; i = text.find(mark, i)) {
        const std::size_t end = text.find(u';', i += mark.size());
        const std::size_t entity = ParseNumber(text.substr(i, end - i));
        Charge(m_entities.Expand(entity), count);
        // The parser of the document will stop here.
        if (m_entities.IsCircular(entity))
            throw RehearsalEnd();
        i = end;
    }
}

bool Rehearsal::CanContentExceed() const noexcept
{
    if (m_subject == Subject::DefaultAttributes)
        return true;
    if (m_subject != Subject::Document)
        return m_entities.Count() != 0;
    const Expansion& longest = m_entities.Longest();
    const std::uint64_t levels = std::min<std::uint64_t>(m_entities.Count(), m_limits.expansions);
    return m_entities.Count() > m_limits.levels || m_sum.text + m_limits.expansions * longest.text > m_limits.text ||
        m_sum.markup + m_limits.expansions * longest.markup > m_limits.markup ||
        m_sum.read + m_limits.expansions * longest.read > m_limits.read ||
        m_sum.compared + m_limits.expansions * levels * longest.names > m_limits.compared;
}

void Rehearsal::entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter, bool isIgnored)
{
    // A second declaration of an entity has no effect.
    if (isIgnored || m_subject == Subject::DefaultAttributes)
        return;
    if (entity.isExternal()) {
        // The parser of a document stops at the declaration, the parser of a schema at a reference.
        if (m_subject == Subject::Document && !entity.isUnparsed())
            throw RehearsalEnd();
        return;
    }
    const View text(entity.getValue(), entity.getValueLen());
    std::u16string value;
    if (isParameter) {
        value = u"<?" + std::u16string(Mark()) + u" " +
            FormatNumber(m_parameterEntities.Declare(entity.getName(), text)) + u"?>";
        value += text;
    } else {
        value = std::u16string(Mark()) + FormatNumber(m_entities.Declare(entity.getName(), text)) + u";";
    }
    // The cast is safe: the object is not const, because Xerces fills it while it reads the declaration.
    const_cast<xercesc::DTDEntityDecl&>(entity).setValue(value.c_str());
}

void Rehearsal::attDef(const xercesc::DTDElementDecl&, const xercesc::DTDAttDef& attribute, bool)
{
    if (!attribute.getValue())
        return;
    m_hasDefaultAttributes = true;
    ChargeMarks(attribute.getValue(), m_prologCount);
}

void Rehearsal::doctypePI(const XMLCh* target, const XMLCh* data)
{
    if (target != Mark())
        return;
    const std::size_t entity = ParseNumber(data);
    Expansion expansion = m_parameterEntities.OwnExpansion(entity);
    // The outermost expansion charges the comparisons of all expansions within it.
    if (m_innerCount == 0) {
        const Expansion all = m_parameterEntities.Expand(entity);
        expansion.compared = all.compared;
        m_innerCount = all.count;
    }
    --m_innerCount;
    // The expansion of a parameter entity may declare further entities and expand them. So the open entities are
    // counted. The document itself is open too.
    expansion.levels = dynamic_cast<const xercesc::ReaderMgr&>(*m_events.locator).getReaderDepth() - 1;
    Charge(expansion, m_prologCount);
}

void Rehearsal::startElement(const xercesc::XMLElementDecl&,
    unsigned int,
    const XMLCh*,
    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
    XMLSize_t count,
    bool,
    bool)
{
    if (std::exchange(m_isInProlog, false) && !CanContentExceed())
        throw RehearsalEnd();
    const bool isOfDefaults = m_subject == Subject::DefaultAttributes;
    for (XMLSize_t i = 0; i < count; ++i) {
        const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
        const View value = attribute.getValue();
        if (attribute.getSpecified()) {
            ChargeMarks(value, m_contentCount);
        } else if (isOfDefaults) {
            if (const std::optional<VString> message = m_defaults.Add(View(attribute.getQName()).size(), value.size()))
                StopWithExcess(*message);
        }
    }
}

void Rehearsal::startEntityReference(const xercesc::XMLEntityDecl& entity)
{
    ChargeMarks(entity.getValue(), m_contentCount);
}

// True if this build of Xerces reports every expansion of an entity to a rehearsal.
bool IsRehearsalComplete()
{
    static const bool isComplete = [] {
        constexpr std::string_view Sample = "<!DOCTYPE r [<!ENTITY % p ''>%p;<!ENTITY e 'x'>"
                                            "<!ATTLIST r a CDATA '&e;'>]><r b='&e;'>&e;</r>";
        const auto* const bytes = reinterpret_cast<const XMLByte*>(Sample.data());
        const xercesc::MemBufInputSource source(bytes, Sample.size(), "sample");
        Rehearsal rehearsal(Rehearsal::Subject::Entities, ExpansionLimits{});
        rehearsal.Run(source);
        return rehearsal.CountInProlog() == 2 && rehearsal.CountInContent() == 2;
    }();
    return isComplete;
}

ExpansionExcess MakeExcessOfIncompleteRehearsal()
{
    return {"entities cannot be bounded with this build of Xerces"};
}

}  // namespace

std::optional<VString> DefaultAttributeCounter::Add(std::uint64_t nameLength, std::uint64_t valueLength)
{
    ++m_count;
    m_names += nameLength;
    m_values += valueLength;
    if (m_count > m_limits.defaults)
        return MakeMessage(m_limits.defaults, "default attributes");
    if (m_names > m_limits.defaultText || m_values > m_limits.defaultText)
        return MakeMessage(m_limits.defaultText, "characters of default attributes");
    return std::nullopt;
}

std::optional<ExpansionExcess> EntityExpansionGuard::CheckDocument(const xercesc::InputSource& source) const
{
    if (!IsRehearsalComplete())
        return MakeExcessOfIncompleteRehearsal();
    Rehearsal rehearsal(Rehearsal::Subject::Document, m_limits);
    rehearsal.Run(source);
    return rehearsal.GetExcess();
}

std::optional<ExpansionExcess> EntityExpansionGuard::CheckSchema(const xercesc::InputSource& source) const
{
    if (!IsRehearsalComplete())
        return MakeExcessOfIncompleteRehearsal();
    Rehearsal entities(Rehearsal::Subject::Entities, m_limits);
    entities.Run(source);
    if (entities.GetExcess() || !entities.HasDefaultAttributes())
        return entities.GetExcess();
    Rehearsal defaults(Rehearsal::Subject::DefaultAttributes, m_limits);
    defaults.Run(source);
    return defaults.GetExcess();
}
