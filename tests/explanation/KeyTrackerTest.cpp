#include "vancorexml/main/parser/KeyTracker.h"

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/schema/SchemaElementDecl.hpp>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using xercesc::XMLUni;
using xercesc::XMLValid;

// Returns the kind of fault that a message of Xerces is about, or Other if KeyTracker has none for it.
DiagnosticCode CodeOf(unsigned int code)
{
    switch (code) {
    case XMLValid::IC_DuplicateUnique:
    case XMLValid::IC_DuplicateKey: return DiagnosticCode::DuplicateKey;
    case XMLValid::IC_FieldMultipleMatch:
    case XMLValid::IC_AbsentKeyValue:
    case XMLValid::IC_KeyNotEnoughValues: return DiagnosticCode::MissingKey;
    case XMLValid::IDNotDeclared:
    case XMLValid::IC_KeyRefOutOfScope:
    case XMLValid::IC_KeyNotFound: return DiagnosticCode::UnknownReference;
    default: return DiagnosticCode::Other;
    }
}

// Reads a document against a schema and passes its events to a KeyTracker. The place of a value has the number of its
// element as its line, and the column 2 for an attribute or 1 for an element.
class Reader final : public xercesc::SAX2XMLReaderImpl, public KeyPlaces {
public:
    explicit Reader(const std::string& schema)
    {
        setContentHandler(&m_handler);  // without handlers, there are no events
        setErrorHandler(&m_handler);
        setFeature(XMLUni::fgXercesSchema, true);
        setFeature(XMLUni::fgSAX2CoreValidation, true);
        setFeature(XMLUni::fgXercesDynamic, false);
        setFeature(XMLUni::fgXercesUseCachedGrammarInParse, true);
        setFeature(XMLUni::fgXercesLoadSchema, false);
        loadGrammar(Source(schema, "schema"), xercesc::Grammar::SchemaGrammarType, true);
        EXPECT_THAT(m_messages, testing::IsEmpty()) << schema;
    }

    void Read(const std::string& document)
    {
        m_document = document;
        m_tracker = std::make_unique<KeyTracker>(*this);
        parse(Source(m_document, "document"));
        EXPECT_EQ(m_open.size(), 0u);
        Record(m_tracker->EndDocument());
        std::sort(found.begin(), found.end());
        std::sort(reported.begin(), reported.end());
    }

    // The faults in the order in which they were found.
    std::vector<ParseDiagnostic> faults;
    // The kinds of the faults, and of the errors of Xerces, with the number of the event at which they show. Sorted.
    std::vector<std::pair<std::size_t, DiagnosticCode>> found;
    std::vector<std::pair<std::size_t, DiagnosticCode>> reported;

    void startElement(const xercesc::XMLElementDecl& declaration,
        unsigned int uri,
        const XMLCh* prefix,
        const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
        XMLSize_t count,
        bool isEmpty,
        bool) override
    {
        EXPECT_FALSE(isEmpty);
        const auto& schema = static_cast<const xercesc::SchemaElementDecl&>(declaration);
        const xercesc::ComplexTypeInfo* const type = schema.getComplexTypeInfo();
        VString name = declaration.getBaseName();
        if (prefix && *prefix != 0)
            name = VString(prefix) + ":" + name;
        m_open.push_back({++m_count, name});
        Record(m_tracker->StartElement({declaration,
            uri,
            attributes,
            count,
            name,
            type,
            type ? type->getDatatypeValidator() : schema.getDatatypeValidator()}));
    }
    void endElement(const xercesc::XMLElementDecl&, unsigned int, bool, const XMLCh*) override
    {
        Record(m_tracker->EndElement());
        m_open.pop_back();
    }
    void docCharacters(const XMLCh* text, XMLSize_t length, bool) override { m_tracker->AddText(text, length); }
    void error(unsigned int code,
        const XMLCh* domain,
        ErrTypes,
        const XMLCh* text,
        const XMLCh*,
        const XMLCh*,
        XMLFileLoc,
        XMLFileLoc) override
    {
        DiagnosticCode kind = DiagnosticCode::Other;
        if (xercesc::XMLString::equals(domain, XMLUni::fgValidityDomain))
            kind = CodeOf(code);
        else if (code == xercesc::XMLExcepts::VALUE_ID_Not_Unique)
            kind = DiagnosticCode::DuplicateKey;
        if (kind == DiagnosticCode::Other)
            m_messages.push_back(VString(text).toStdString() + " " + std::to_string(code));
        else
            reported.emplace_back(m_events, kind);
    }
    void resetErrors() override {}

    // The errors of Xerces about anything else.
    const std::vector<std::string>& GetMessages() const { return m_messages; }

private:
    struct OpenElement {
        std::size_t number = 0;
        VString name;
    };

    static xercesc::MemBufInputSource Source(const std::string& text, const char* id)
    {
        return {reinterpret_cast<const XMLByte*>(text.data()), text.size(), id};
    }

    SourcePosition GetStart(const XMLCh* attribute) override { return {m_open.back().number, attribute ? 2u : 1u}; }
    ParseDiagnostic Describe(const XMLCh* attribute) override
    {
        ParseDiagnostic diagnostic;
        diagnostic.start = GetStart(attribute);
        diagnostic.element = m_open.back().number;
        for (const OpenElement& element : m_open)
            diagnostic.path += "/" + element.name;
        return diagnostic;
    }

    void Record(KeyTracker::Faults&& faultsOfEvent)
    {
        for (ParseDiagnostic& fault : faultsOfEvent) {
            found.emplace_back(m_events, fault.code);
            faults.push_back(std::move(fault));
        }
        ++m_events;
    }

    xercesc::DefaultHandler m_handler;
    std::string m_document;
    std::unique_ptr<KeyTracker> m_tracker;
    std::vector<OpenElement> m_open;
    std::size_t m_count = 0;
    std::size_t m_events = 0;
    std::vector<std::string> m_messages;
};

// Returns a fault as "LINE:COLUMN code /path @attribute: message (LINE:COLUMN related)".
std::string Format(const ParseDiagnostic& fault)
{
    const auto format = [](SourcePosition position) {
        return std::to_string(position.line) + ":" + std::to_string(position.column);
    };
    std::string text = format(fault.start) + " " + GetDiagnosticName(fault.code) + " " + fault.path.toStdString();
    if (!fault.attribute.IsEmpty())
        text += " @" + fault.attribute.toStdString();
    text += ": " + fault.message.toStdString();
    if (fault.related)
        text += " (" + format(fault.related->start) + " " + fault.related->message.toStdString() + ")";
    return text;
}

// A schema whose document element is "r". It has this content model and these constraints.
std::string Schema(const std::string& declarations)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:t='urn:t'>" + declarations + "</xs:schema>";
}

// Declares the element r, with elements i of these attributes and children, and with these constraints.
std::string ItemSchema(const std::string& item, const std::string& constraints)
{
    return Schema("<xs:element name='r'><xs:complexType><xs:sequence>"
                  "<xs:element name='i' minOccurs='0' maxOccurs='unbounded'><xs:complexType>" +
        item + "</xs:complexType></xs:element></xs:sequence></xs:complexType>" + constraints + "</xs:element>");
}

class KeyTrackerTest : public testing::Test {
protected:
    // Reads the document and expects that Xerces reports the same kinds of faults at the same events.
    const std::vector<ParseDiagnostic>& Read(const std::string& schema, const std::string& document)
    {
        m_reader = std::make_unique<Reader>(schema);
        m_reader->Read(document);
        EXPECT_THAT(m_reader->GetMessages(), testing::IsEmpty());
        EXPECT_EQ(m_reader->found, m_reader->reported);
        return m_reader->faults;
    }

    std::vector<std::string> Texts(const std::string& schema, const std::string& document)
    {
        std::vector<std::string> texts;
        for (const ParseDiagnostic& fault : Read(schema, document))
            texts.push_back(Format(fault));
        return texts;
    }

    XercesInitializer m_xerces;
    std::unique_ptr<Reader> m_reader;
};

const std::string AttributeItem = "<xs:attribute name='id' type='xs:string'/>";
const std::string Key = "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>";

}  // namespace

TEST_F(KeyTrackerTest, DocumentWithoutFaultsHasNone)
{
    EXPECT_THAT(Read(ItemSchema(AttributeItem, Key), "<r><i id='1'/><i id='2'/></r>"), testing::IsEmpty());
}

TEST_F(KeyTrackerTest, DuplicateKeyNamesTheValueTheKeyAndTheFirstPlace)
{
    EXPECT_THAT(Texts(ItemSchema(AttributeItem, Key), "<r><i id='1'/><i id='2'/><i id='1'/></r>"),
        ElementsAre(
            "4:2 duplicate-key /r/i @id: the value '1' of attribute 'id' is already used, but the key 'k' must be "
            "unique in element 'r' (2:2 the same value stands first)"));
}

TEST_F(KeyTrackerTest, DuplicateUniqueValueOfAnElementHasThePlaceOfTheElement)
{
    const std::string schema = ItemSchema("<xs:sequence><xs:element name='n' type='xs:string'/></xs:sequence>",
        "<xs:unique name='u'><xs:selector xpath='i'/><xs:field xpath='n'/></xs:unique>");
    EXPECT_THAT(Texts(schema, "<r><i><n>x</n></i><i><n>x</n></i></r>"),
        ElementsAre("5:1 duplicate-key /r/i/n: the value 'x' of element 'n' is already used, but 'u' must be unique in "
                    "element 'r' (3:1 the same value stands first)"));
}

TEST_F(KeyTrackerTest, EachRepetitionOfAKeyIsAFault)
{
    const auto& faults = Read(ItemSchema(AttributeItem, Key), "<r><i id='1'/><i id='1'/><i id='1'/></r>");
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[1].related->start.line, 2u);
    EXPECT_EQ(faults[1].value, VString("1"));
    EXPECT_EQ(faults[1].element, 4u);
}

TEST_F(KeyTrackerTest, MissingKeyNamesTheAttributeOrElement)
{
    EXPECT_THAT(Texts(ItemSchema(AttributeItem, Key), "<r><i/></r>"),
        ElementsAre("2:1 missing-key /r/i @id: element 'i' needs the attribute 'id' for the key 'k'"));
    const std::string child =
        ItemSchema("<xs:sequence><xs:element name='n' type='xs:string' minOccurs='0'/></xs:sequence>",
            "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='n'/></xs:key>");
    EXPECT_THAT(Texts(child, "<r><i/></r>"),
        ElementsAre("2:1 missing-key /r/i: element 'i' needs the element 'n' for the key 'k'"));
}

TEST_F(KeyTrackerTest, ConstraintsOtherThanKeysMayMissValues)
{
    const std::string item = "<xs:attribute name='a'/><xs:attribute name='b'/>";
    const std::string fields = "<xs:selector xpath='i'/><xs:field xpath='@a'/><xs:field xpath='@b'/>";
    EXPECT_THAT(
        Texts(ItemSchema(item, "<xs:unique name='u'>" + fields + "</xs:unique>"), "<r><i a='1'/><i a='1'/></r>"),
        testing::IsEmpty());
}

TEST_F(KeyTrackerTest, CompositeKeyNamesTheCombination)
{
    const std::string schema = ItemSchema("<xs:attribute name='a'/><xs:attribute name='b'/>",
        "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@a'/><xs:field xpath='@b'/></xs:key>");
    EXPECT_THAT(Texts(schema, "<r><i a='1' b='2'/><i a='2' b='1'/><i a='1' b='2'/></r>"),
        ElementsAre(
            "4:1 duplicate-key /r/i: the combination '1, 2' in element 'i' is already used, but the key 'k' must "
            "be unique in element 'r' (2:1 the same combination stands first)"));
    EXPECT_THAT(Texts(schema, "<r><i a='1'/></r>"),
        ElementsAre("2:1 missing-key /r/i @b: element 'i' needs the attribute 'b' for its part of the key 'k'"));
    EXPECT_THAT(Texts(schema, "<r><i/></r>"),
        ElementsAre(
            "2:1 missing-key /r/i @a: element 'i' needs the attribute 'a' and the attribute 'b' for the key 'k'"));
}

TEST_F(KeyTrackerTest, CompositeKeyMayConsistOfAttributesAndElements)
{
    const std::string schema =
        ItemSchema("<xs:sequence><xs:element name='n' type='xs:int'/></xs:sequence><xs:attribute name='a'/>",
            "<xs:unique name='u'><xs:selector xpath='i'/><xs:field xpath='n'/><xs:field xpath='@a'/></xs:unique>");
    EXPECT_THAT(Texts(schema, "<r><i a='x'><n>1</n></i><i a='y'><n>1</n></i><i a='y'><n> 01 </n></i></r>"),
        ElementsAre("7:1 duplicate-key /r/i/n: the combination '01, y' in element 'i' is already used, but 'u' must be "
                    "unique in element 'r' (5:1 the same combination stands first)"));
}

TEST_F(KeyTrackerTest, FieldWithTwoValuesIsAFault)
{
    const std::string schema =
        ItemSchema("<xs:sequence><xs:element name='n' type='xs:string' maxOccurs='2'/></xs:sequence>",
            "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='n'/></xs:key>");
    EXPECT_THAT(Texts(schema, "<r><i><n>1</n><n>2</n></i></r>"),
        ElementsAre("4:1 missing-key /r/i/n: element 'i' has more than one value for the element 'n' of 'k'"));
}

namespace {

// Elements i with the attributes id and ref. The values of ref refer to those of id.
const std::string ReferenceSchema = ItemSchema("<xs:attribute name='id'/><xs:attribute name='ref'/>",
    "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>"
    "<xs:keyref name='kr' refer='k'><xs:selector xpath='i'/><xs:field xpath='@ref'/></xs:keyref>");

}  // namespace

TEST_F(KeyTrackerTest, UnknownReferenceHasTheKeysAndASuggestion)
{
    const auto& faults =
        Read(ReferenceSchema, "<r><i id='north'/><i id='south' ref='nort'/><i id='x' ref='south'/></r>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(Format(faults[0]),
        "3:2 unknown-reference /r/i @ref: the value 'nort' of attribute 'ref' is not among the values of 'k' in "
        "element 'r'; did you mean 'north'?");
    EXPECT_EQ(faults[0].value, VString("nort"));
    EXPECT_EQ(faults[0].suggestion, VString("north"));
    EXPECT_EQ(faults[0].allowed, (std::vector<VString>{"north", "south", "x"}));
    EXPECT_EQ(faults[0].element, 3u);
}

TEST_F(KeyTrackerTest, ReferenceMayPrecedeItsKey)
{
    EXPECT_THAT(Read(ReferenceSchema, "<r><i id='a' ref='b'/><i id='b'/></r>"), testing::IsEmpty());
}

TEST_F(KeyTrackerTest, UnknownReferencesWithTheSameValueAreOneFault)
{
    EXPECT_THAT(Texts(ReferenceSchema, "<r><i id='a' ref='zz'/><i id='b' ref='zz'/><i id='c' ref='zz'/></r>"),
        ElementsAre(
            "2:2 unknown-reference /r/i @ref: the value 'zz' of attribute 'ref' is not among the values of 'k' in "
            "element 'r'; 2 more like it"));
}

TEST_F(KeyTrackerTest, UnknownReferencesAreInDocumentOrder)
{
    const auto& faults = Read(ReferenceSchema, "<r><i id='a' ref='q'/><i id='b' ref='p'/><i id='c' ref='q'/></r>");
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[0].value, VString("q"));
    EXPECT_EQ(faults[1].value, VString("p"));
}

TEST_F(KeyTrackerTest, AllowedKeysAreLimitedTo100)
{
    std::string text = "<r>";
    for (int i = 0; i < 150; ++i)
        text += "<i id='" + std::to_string(i) + "'/>";
    const auto& faults = Read(ReferenceSchema, text + "<i id='x' ref='unknown'/></r>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].allowed.size(), 100u);
    EXPECT_EQ(faults[0].allowed[99], VString("99"));
}

namespace {

// A document element r with groups g, which may contain groups. Each group has a key and elements i.
std::string GroupSchema(const std::string& constraintsOfGroup, const std::string& constraintsOfRoot)
{
    return Schema("<xs:element name='r'><xs:complexType><xs:choice minOccurs='0' maxOccurs='unbounded'>"
                  "<xs:element ref='g'/><xs:element ref='i'/></xs:choice></xs:complexType>" +
        constraintsOfRoot +
        "</xs:element>"
        "<xs:element name='g'><xs:complexType><xs:choice minOccurs='0' maxOccurs='unbounded'>"
        "<xs:element ref='g'/><xs:element ref='i'/></xs:choice></xs:complexType>" +
        constraintsOfGroup +
        "</xs:element>"
        "<xs:element name='i'><xs:complexType><xs:attribute name='id'/><xs:attribute name='ref'/>"
        "</xs:complexType></xs:element>");
}

}  // namespace

TEST_F(KeyTrackerTest, KeyIsUniqueOnlyWithinItsElement)
{
    const std::string schema =
        GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>", "");
    EXPECT_THAT(Read(schema, "<r><g><i id='1'/></g><g><i id='1'/><g><i id='1'/></g></g></r>"), testing::IsEmpty());
    EXPECT_THAT(Texts(schema, "<r><g><i id='1'/><g><i id='2'/><i id='2'/></g><i id='1'/></g></r>"),
        ElementsAre(HasSubstr("6:2 duplicate-key /r/g/g/i @id: the value '2'"),
            HasSubstr("7:2 duplicate-key /r/g/i @id: the value '1'")));
}

TEST_F(KeyTrackerTest, NestedKeysWithDescendantsOverlap)
{
    const std::string schema =
        GroupSchema("<xs:key name='k'><xs:selector xpath='.//i'/><xs:field xpath='@id'/></xs:key>", "");
    EXPECT_THAT(Texts(schema, "<r><g><i id='1'/><g><i id='1'/><i id='1'/></g></g></r>"),
        ElementsAre(HasSubstr("5:2 duplicate-key /r/g/g/i @id: the value '1'"),
            HasSubstr("6:2 duplicate-key /r/g/g/i @id: the value '1'"),
            HasSubstr("6:2 duplicate-key /r/g/g/i @id: the value '1'")));
}

TEST_F(KeyTrackerTest, ReferenceMayReferToKeysOfDescendants)
{
    const std::string schema = GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>",
        "<xs:keyref name='kr' refer='k'><xs:selector xpath='.//i'/><xs:field xpath='@ref'/></xs:keyref>");
    const auto& faults =
        Read(schema, "<r><i ref='3'/><g><g><i id='1' ref='2'/></g><i id='2' ref='1'/><i id='30'/></g></r>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(Format(faults[0]),
        "2:2 unknown-reference /r/i @ref: the value '3' of attribute 'ref' is not among the values of 'k' in "
        "element 'r'");
    EXPECT_THAT(faults[0].allowed, testing::UnorderedElementsAre("1", "2", "30"));
}

// Xerces forgets the keys of all siblings but the last one, so it reports the first reference.
TEST_F(KeyTrackerTest, ReferenceMayReferToKeysOfAllSiblings)
{
    Reader reader(GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>",
        "<xs:keyref name='kr' refer='k'><xs:selector xpath='.//i'/><xs:field xpath='@ref'/></xs:keyref>"));
    reader.Read("<r><g><i id='1'/></g><g><i id='2' ref='1'/></g><g><i id='3' ref='4'/></g></r>");
    ASSERT_EQ(reader.faults.size(), 1u);
    EXPECT_EQ(reader.faults[0].value, VString("4"));
    EXPECT_EQ(reader.faults[0].allowed, (std::vector<VString>{"1", "2", "3"}));
}

TEST_F(KeyTrackerTest, ReferenceWithoutAnyKeyIsOneFault)
{
    const std::string schema = GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>",
        "<xs:keyref name='kr' refer='k'><xs:selector xpath='i'/><xs:field xpath='@ref'/></xs:keyref>");
    EXPECT_THAT(Texts(schema, "<r><i ref='3'/><i ref='4'/></r>"),
        ElementsAre(HasSubstr("2:2 unknown-reference /r/i @ref: the value '3'")));
}

TEST_F(KeyTrackerTest, SeveralReferencesMayShareAKey)
{
    const std::string schema = ItemSchema("<xs:attribute name='id'/><xs:attribute name='a'/><xs:attribute name='b'/>",
        "<xs:keyref name='ka' refer='k'><xs:selector xpath='i'/><xs:field xpath='@a'/></xs:keyref>"
        "<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>"
        "<xs:keyref name='kb' refer='k'><xs:selector xpath='i'/><xs:field xpath='@b'/></xs:keyref>");
    EXPECT_THAT(Read(schema, "<r><i id='1' a='1' b='1'/></r>"), testing::IsEmpty());
    EXPECT_THAT(Read(schema, "<r><i id='1' a='2' b='3'/></r>"), testing::SizeIs(2));
}

TEST_F(KeyTrackerTest, NestedReferencesUseTheKeysWithinTheirElement)
{
    const std::string schema =
        GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>"
                    "<xs:keyref name='kr' refer='k'><xs:selector xpath='i'/><xs:field xpath='@ref'/></xs:keyref>",
            "");
    EXPECT_THAT(Read(schema, "<r><g><i id='1' ref='2'/><g><i id='2' ref='2'/></g></g></r>"), testing::IsEmpty());
    EXPECT_THAT(Texts(schema, "<r><g><i id='1'/><g><i id='2' ref='1'/></g></g></r>"),
        ElementsAre(HasSubstr("5:2 unknown-reference /r/g/g/i @ref: the value '1'")));
}

namespace {

const std::string UnionKey = "<xs:element name='r'><xs:complexType><xs:sequence>"
                             "<xs:element name='a' minOccurs='0' maxOccurs='9'><xs:complexType>"
                             "<xs:sequence><xs:element name='x' type='xs:string' minOccurs='0'/></xs:sequence>"
                             "<xs:attribute name='y' type='xs:string'/></xs:complexType></xs:element>"
                             "<xs:element name='b' minOccurs='0' maxOccurs='9'><xs:complexType>"
                             "<xs:attribute name='y' type='xs:string'/></xs:complexType></xs:element>"
                             "</xs:sequence></xs:complexType>"
                             "<xs:key name='k'><xs:selector xpath='a | b'/><xs:field xpath='x | @y'/></xs:key>"
                             "</xs:element>";

}  // namespace

TEST_F(KeyTrackerTest, SelectorsAndFieldsMayBeUnions)
{
    EXPECT_THAT(Texts(Schema(UnionKey), "<r><a><x>1</x></a><a y='2'/><b y='1'/><b/></r>"),
        ElementsAre(HasSubstr("5:2 duplicate-key /r/b @y: the value '1' of attribute 'y' is already used"),
            HasSubstr("6:1 missing-key /r/b: element 'b' needs a value at 'x | @y' for the key 'k'")));
}

TEST_F(KeyTrackerTest, SelectorsMayHaveWildcards)
{
    const std::string schema =
        Schema("<xs:element name='r'><xs:complexType><xs:sequence>"
               "<xs:any minOccurs='0' maxOccurs='unbounded' processContents='lax'/></xs:sequence></xs:complexType>"
               "<xs:unique name='u'><xs:selector xpath='*/b'/><xs:field xpath='@*'/></xs:unique></xs:element>"
               "<xs:element name='a'><xs:complexType><xs:sequence><xs:element name='b' maxOccurs='9'><xs:complexType>"
               "<xs:attribute name='y'/></xs:complexType></xs:element></xs:sequence></xs:complexType></xs:element>");
    EXPECT_THAT(Texts(schema, "<r><a><b y='1'/></a><a><b y='1'/></a></r>"),
        ElementsAre(HasSubstr("5:2 duplicate-key /r/a/b @y: the value '1'")));
}

TEST_F(KeyTrackerTest, FieldMayBeTheElementItself)
{
    const std::string schema = Schema("<xs:element name='r'><xs:complexType><xs:sequence>"
                                      "<xs:element name='n' type='xs:decimal' maxOccurs='9'/></xs:sequence>"
                                      "</xs:complexType><xs:unique name='u'><xs:selector xpath='n'/>"
                                      "<xs:field xpath='.'/></xs:unique></xs:element>");
    EXPECT_THAT(Texts(schema, "<r><n>1.50</n><n>2</n><n> 1.5 </n></r>"),
        ElementsAre(HasSubstr("4:1 duplicate-key /r/n: the value '1.5' of element 'n' is already used")));
}

TEST_F(KeyTrackerTest, NumbersAndBooleanValuesAreComparedByValue)
{
    for (const auto& [type, first, second] : {std::tuple("boolean", "1", "true"),
             std::tuple("int", "7", "+007"),
             std::tuple("double", "10", "1E1"),
             std::tuple("token", " x  y ", "x y")}) {
        const std::string schema = ItemSchema("<xs:attribute name='id' type='xs:" + std::string(type) + "'/>", Key);
        EXPECT_THAT(
            Read(schema, "<r><i id='" + std::string(first) + "'/><i id='" + second + "'/></r>"), testing::SizeIs(1))
            << type;
    }
    const std::string schema = ItemSchema("<xs:attribute name='id' type='xs:string'/>", Key);
    EXPECT_THAT(Read(schema, "<r><i id='1'/><i id='01'/><i id=' 1'/></r>"), testing::IsEmpty());
}

TEST_F(KeyTrackerTest, NamesMatchOnlyInTheirNamespace)
{
    const std::string schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:t' xmlns:t='urn:t' "
        "elementFormDefault='qualified'>"
        "<xs:element name='r'><xs:complexType><xs:sequence><xs:any minOccurs='0' maxOccurs='9' processContents='lax'/>"
        "</xs:sequence></xs:complexType>"
        "<xs:key name='k'><xs:selector xpath='t:i'/><xs:field xpath='@id'/></xs:key>"
        "<xs:unique name='u'><xs:selector xpath='t:*'/><xs:field xpath='@id'/></xs:unique></xs:element>"
        "<xs:element name='i'><xs:complexType><xs:attribute name='id'/></xs:complexType></xs:element></xs:schema>";
    EXPECT_THAT(Texts(schema, "<r xmlns='urn:t' xmlns:o='urn:o'><i id='1'/><o:i id='1'/><i id='1'/></r>"),
        ElementsAre(HasSubstr("the key 'k'"), HasSubstr("but 'u'")));
}

TEST_F(KeyTrackerTest, LongValuesAreCutInMessages)
{
    const std::string value(100, 'v');
    const auto& faults = Read(ItemSchema(AttributeItem, Key), "<r><i id='" + value + "'/><i id='" + value + "'/></r>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].value, VString::fromStdString(value));
    EXPECT_TRUE(
        faults[0].message.contains("the value '" + VString::fromStdString(value.substr(0, 60)) + u"\u2026' of"));
}

TEST_F(KeyTrackerTest, UndeclaredElementsAreIgnored)
{
    Reader reader(ItemSchema(AttributeItem, Key));
    reader.Read("<r><x><i id='1'/></x><i id='1'/><i/></r>");
    EXPECT_FALSE(reader.GetMessages().empty());
    ASSERT_EQ(reader.faults.size(), 1u);
    EXPECT_EQ(reader.faults[0].code, DiagnosticCode::MissingKey);
}

namespace {

const std::string IdSchema =
    Schema("<xs:element name='r'><xs:complexType><xs:choice minOccurs='0' maxOccurs='unbounded'>"
           "<xs:element name='i'><xs:complexType><xs:attribute name='id' type='xs:ID'/>"
           "<xs:attribute name='ref' type='xs:IDREF'/><xs:attribute name='refs' type='xs:IDREFS'/></xs:complexType>"
           "</xs:element>"
           "<xs:element name='id' type='xs:ID'/><xs:element name='ref' type='xs:IDREF'/>"
           "</xs:choice></xs:complexType></xs:element>");

}  // namespace

TEST_F(KeyTrackerTest, DuplicateIdHasItsFirstPlace)
{
    EXPECT_THAT(Texts(IdSchema, "<r><i id='a'/><i id=' a '/><id>a</id></r>"),
        ElementsAre("3:2 duplicate-key /r/i @id: the value 'a' of attribute 'id' is already used, but each id must be "
                    "unique in the document (2:2 the same value stands first)",
            "4:1 duplicate-key /r/id: the value 'a' of element 'id' is already used, but each id must be unique in the "
            "document (2:2 the same value stands first)"));
}

TEST_F(KeyTrackerTest, UnknownIdHasTheIdsAndASuggestion)
{
    const auto& faults = Read(IdSchema, "<r><i ref='nort'/><ref>b</ref><i id='north' refs='north b c'/></r>");
    ASSERT_EQ(faults.size(), 3u);
    EXPECT_EQ(Format(faults[0]),
        "2:2 unknown-reference /r/i @ref: the value 'nort' of attribute 'ref' is not the id of an element; did you "
        "mean 'north'?");
    EXPECT_EQ(faults[0].allowed, (std::vector<VString>{"north"}));
    EXPECT_EQ(Format(faults[1]),
        "3:1 unknown-reference /r/ref: the value 'b' of element 'ref' is not the id of an element; 1 more like it");
    EXPECT_EQ(faults[2].value, VString("c"));
    EXPECT_EQ(faults[2].attribute, VString("refs"));
}

TEST_F(KeyTrackerTest, DerivedTypesOfIdsAreIds)
{
    const std::string schema = ItemSchema("<xs:attribute name='id'><xs:simpleType><xs:restriction base='xs:ID'>"
                                          "<xs:maxLength value='3'/></xs:restriction></xs:simpleType></xs:attribute>",
        "");
    EXPECT_THAT(Read(schema, "<r><i id='a'/><i id='a'/></r>"), testing::SizeIs(1));
}

namespace {

// Random schemas and documents. The element r contains elements g, which contain elements h. All three contain elements
// i and have constraints.
//
// These schemas avoid faults of Xerces: it mixes up the values of constraints, and of selected
// elements, that are nested in each other, and it lets ".//h" select the element h at which the path starts.
class RandomKeys {
public:
    explicit RandomKeys(unsigned int seed) : m_random(seed) {}

    std::string MakeSchema()
    {
        m_constraintCount = 0;
        return Schema(Container("r", "g") + Container("g", "h") + Container("h", "i") +
            "<xs:element name='i'><xs:complexType><xs:sequence>"
            "<xs:element name='n' type='xs:int' minOccurs='0'/></xs:sequence>" +
            Attributes() + "</xs:complexType></xs:element>");
    }

    std::string MakeDocument() { return "<r>" + Content("gh") + "</r>"; }

private:
    std::string Container(const std::string& name, const std::string& child)
    {
        return "<xs:element name='" + name +
            "'><xs:complexType><xs:choice minOccurs='0' maxOccurs='unbounded'>"
            "<xs:element ref='" +
            child + "'/>" + (child != "i" ? "<xs:element ref='i'/>" : "") + "</xs:choice>" + Attributes() +
            "</xs:complexType>" + Constraints() + "</xs:element>";
    }

    unsigned int Number(unsigned int end) { return static_cast<unsigned int>(m_random()) % end; }
    template <std::size_t Count>
    const char* OneOf(const char* const (&values)[Count])
    {
        return values[Number(Count)];
    }

    static std::string Attributes()
    {
        return "<xs:attribute name='a' type='xs:int'/><xs:attribute name='b' type='xs:int'/>";
    }

    std::string Paths(bool isComposite)
    {
        static constexpr const char* Selectors[] = {
            "i", ".//i", "g/i", "i | g", "*", "*/*", "h", ".", "./i", "g/h | h", "g/*/i"};
        static constexpr const char* Fields[] = {"@a", "@b", "n", "./n"};
        std::string paths = std::string("<xs:selector xpath='") + OneOf(Selectors) + "'/>";
        for (int i = 0; i < (isComposite ? 2 : 1); ++i)
            paths += std::string("<xs:field xpath='") + OneOf(Fields) + "'/>";
        return paths;
    }

    std::string Constraints()
    {
        std::string constraints;
        for (unsigned int count = Number(3); count > 0; --count) {
            const std::string name = "k" + std::to_string(++m_constraintCount);
            const std::string kind = Number(2) == 0 ? "key" : "unique";
            const bool isComposite = Number(3) == 0;
            constraints += "<xs:" + kind + " name='" + name + "'>" + Paths(isComposite) + "</xs:" + kind + ">";
            if (Number(2) == 0) {
                constraints +=
                    "<xs:keyref name='r" + name + "' refer='" + name + "'>" + Paths(isComposite) + "</xs:keyref>";
            }
        }
        return constraints;
    }

    std::string Tag(const std::string& name)
    {
        std::string tag = "<" + name;
        for (const char* attribute : {" a='", " b='"}) {
            if (Number(4) != 0)
                tag += attribute + std::to_string(Number(4)) + "'";
        }
        return tag + ">";
    }

    // `containers` are the names of the containers below each other.
    std::string Content(const std::string& containers)
    {
        std::string content;
        for (unsigned int count = Number(5); count > 0; --count) {
            if (!containers.empty() && Number(2) == 0) {
                const std::string name = containers.substr(0, 1);
                content += Tag(name) + Content(containers.substr(1)) + "</" + name + ">";
                continue;
            }
            content += Tag("i");
            if (Number(2) == 0)
                content += "<n> " + std::to_string(Number(4)) + "</n>";
            content += "</i>";
        }
        return content;
    }

    std::mt19937 m_random;
    int m_constraintCount = 0;
};

}  // namespace

TEST_F(KeyTrackerTest, FindsTheFaultsThatXercesReports)
{
    int faults = 0;
    for (unsigned int seed = 0; seed < 300; ++seed) {
        RandomKeys random(seed);
        const std::string schema = random.MakeSchema();
        for (int i = 0; i < 5; ++i) {
            const std::string document = random.MakeDocument();
            Reader reader(schema);
            reader.Read(document);
            SCOPED_TRACE(schema + "\n" + document);
            EXPECT_EQ(reader.found, reader.reported);
            faults += static_cast<int>(reader.found.size());
            if (HasFailure())
                return;
        }
    }
    EXPECT_GT(faults, 1000);
}

TEST_F(KeyTrackerTest, ManyFaultsTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(60);
    constexpr int Count = 100000;
    std::string duplicates = "<r>";
    std::string references = "<r>";
    std::string ids = "<r>";
    for (int i = 0; i < Count; ++i) {
        const std::string number = std::to_string(i);
        duplicates += "<i id='1'/>";
        references += "<i id='" + number + "' ref='r" + number + "'/>";
        ids += "<i id='same' ref='r" + number + "'/>";
    }
    EXPECT_THAT(Read(ReferenceSchema, duplicates + "</r>"), testing::SizeIs(Count - 1));
    EXPECT_THAT(Read(ReferenceSchema, references + "</r>"), testing::SizeIs(Count));
    EXPECT_EQ(m_reader->faults.front().allowed.size(), 100u);
    EXPECT_EQ(m_reader->faults.front().value, VString("r0"));
    EXPECT_TRUE(m_reader->faults.back().allowed.empty());
    EXPECT_THAT(Read(IdSchema, ids + "</r>"), testing::SizeIs(2 * Count - 1));
}

// Each element has a key, of which the outermost element collects the values.
TEST_F(KeyTrackerTest, ManyKeysOfNestedElementsTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(60);
    constexpr int Depth = 300;
    const std::string schema = GroupSchema("<xs:key name='k'><xs:selector xpath='i'/><xs:field xpath='@id'/></xs:key>",
        "<xs:keyref name='kr' refer='k'><xs:selector xpath='i'/><xs:field xpath='@ref'/></xs:keyref>");
    std::string text = "<r>";
    int number = 0;
    for (int level = 0; level < Depth; ++level) {
        text += "<g>";
        for (int i = 0; i < 100; ++i)
            text += "<i id='" + std::to_string(number++) + "'/>";
    }
    for (int level = 0; level < Depth; ++level)
        text += "</g>";
    Reader reader(schema);
    reader.Read(text + "<i ref='0'/><i ref='x'/></r>");
    ASSERT_EQ(reader.faults.size(), 1u);
    EXPECT_EQ(reader.faults[0].value, VString("x"));
}
