#include "vancorexml/main/parser/ParseDiagnostic.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLParseException.h"

using Severity = ParseDiagnostic::Severity;

static void PrintTo(const ParseDiagnostic& diagnostic, std::ostream* out)
{
    *out << static_cast<int>(diagnostic.severity) << " " << diagnostic.sourceId << ":" << diagnostic.start.line << ":"
         << diagnostic.start.column << " " << GetDiagnosticName(diagnostic.code) << ": " << diagnostic.message;
}

namespace {

using testing::ElementsAre;
using testsupport::RecordingHandler;

using Diagnostics = std::vector<ParseDiagnostic>;

// Matches a diagnostic of the document "id" that begins on this line.
auto IsFault(Severity severity, std::uint64_t line)
{
    return testing::AllOf(testing::Field(&ParseDiagnostic::severity, severity),
        testing::Field(&ParseDiagnostic::sourceId, VString("id")),
        testing::Field(&ParseDiagnostic::start, testing::Field(&SourcePosition::line, line)));
}

// Matches a diagnostic of the document "id" that begins at this place.
auto IsFaultAt(Severity severity, std::uint64_t line, std::uint64_t column)
{
    return testing::AllOf(
        IsFault(severity, line), testing::Field(&ParseDiagnostic::start, SourcePosition{line, column}));
}

ParseDiagnostic Message(Severity severity, const VString& message)
{
    ParseDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.message = message;
    diagnostic.sourceId = "id";
    return diagnostic;
}

// A parser that has parsed `bytes` as the document "id", without the white space before it.
class Parsed {
public:
    explicit Parsed(
        const std::string& bytes, std::shared_ptr<SAXInterface> handler = std::make_shared<RecordingHandler>())
        : m_source(bytes, "id", true),
          m_parser(XercesXMLParser::Create(m_source, std::move(handler)))
    {
        m_parser->Parse();
    }
    const XercesXMLParser* operator->() const { return m_parser.get(); }

private:
    Utf8InputSource m_source;
    std::unique_ptr<XercesXMLParser> m_parser;
};

template <typename Exception>
Diagnostics DiagnosticsOfException(Exception exception)
{
    const Parsed parser(
        "\n<a :b='1'/>", std::make_shared<testsupport::ThrowingHandler<Exception>>(std::move(exception)));
    return parser->GetDiagnostics();
}

TEST(ParseDiagnosticTest, DiagnosticHasTheSeverityTheIdAndTheLineOfItsError)
{
    const Parsed parser("<a>\n<b></c>");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"Fatal Error(2,6): expected end of tag 'b' (id: id)"});
    EXPECT_THAT(parser->GetDiagnostics(), ElementsAre(IsFault(Severity::FatalError, 2)));
}

TEST(ParseDiagnosticTest, PositionRefersToTheSourceAndErrorTextsToTheScannedText)
{
    const Parsed parser("\n\n <a :b='1' :c='2'></x>");
    EXPECT_THAT(parser->GetDiagnostics(), ElementsAre(IsFault(Severity::FatalError, 3)));
    EXPECT_EQ(parser->GetDiagnostics(), Parsed("\n\n <a zb='1' zc='2'></x>")->GetDiagnostics());
    const std::size_t inserted = std::string(" xmlns:IllegalColon='http://vancorexml.invalid/xml/ThisShouldNotAppear'"
                                             "IllegalColonIllegalColon")
                                     .size();
    const VString column = VString::number(static_cast<std::uint64_t>(20 + inserted));
    EXPECT_EQ(
        parser->GetErrors(), std::vector<VString>{"Fatal Error(1," + column + "): expected end of tag 'a' (id: id)"});
}

// Each document has its error behind the same line, once with an ordinary name and once with a name that begins with a
// colon.
TEST(ParseDiagnosticTest, ColonNamesDoNotShiftPositionsInAnyEncodingOfOneByte)
{
    for (const std::string start : {"",
             "\xEF\xBB\xBF",
             "<?xml version='1.0' encoding='iso-8859-1'?><!--gr\xF6\xDF\x65-->",
             "<?xml version='1.0' encoding='utf-8'?><!--gr\xC3\xB6\xC3\x9F\x65 \xF0\x9F\x98\x80-->"}) {
        const Parsed plain(start + "<a zb='1'></x>");
        const Parsed colon(start + "<a :b='1'></x>");
        ASSERT_EQ(plain->GetDiagnostics().size(), 1u) << start;
        EXPECT_EQ(colon->GetDiagnostics(), plain->GetDiagnostics()) << start;
    }
}

// Xerces decodes these encodings with ICU, and has a function that writes behind a buffer for long texts.
TEST(ParseDiagnosticTest, FaultIsFoundBehindALongTextInOtherEncodings)
{
    const std::string text(100'000, 'x');
    for (const std::string encoding : {"windows-1251", "koi8-r", "Shift_JIS", "Big5"}) {
        const Parsed parser("<?xml version='1.0' encoding='" + encoding + "'?><a>" + text + "\n<b></a>");
        ASSERT_THAT(parser->GetDiagnostics(), ElementsAre(IsFaultAt(Severity::FatalError, 2, 4))) << encoding;
        EXPECT_EQ(parser->GetDiagnostics()[0].code, DiagnosticCode::UnclosedElement) << encoding;
    }
}

TEST(ParseDiagnosticTest, RefusedEntityHasTwoErrorsAndOneDiagnosticWithItsName)
{
    for (const char* language : {"en_US", "de_DE", "ja_JP"}) {
        const testsupport::Session session(language);
        const Parsed parser("\n  <!DOCTYPE a [\n<!ENTITY e SYSTEM 'x'>]><a :b='1'/>");
        EXPECT_THAT(parser->GetErrors(), ElementsAre(testing::_, parser->GetErrors().front()));
        EXPECT_TRUE(parser->GetErrors().front().endsWith("(2,23) 'e'")) << language;
        ASSERT_THAT(parser->GetDiagnostics(), ElementsAre(IsFault(Severity::FatalError, 3)));
        EXPECT_EQ(parser->GetDiagnostics()[0].code, DiagnosticCode::ExternalEntity);
        EXPECT_EQ(parser->GetDiagnostics()[0].value, VString("e"));
    }
}

TEST(ParseDiagnosticTest, ExceptionHasAMessageAndNoPosition)
{
    EXPECT_EQ(
        DiagnosticsOfException(XMLParseException("enough")), Diagnostics{Message(Severity::FatalError, "enough")});
    ParseDiagnostic outOfMemory = Message(Severity::Error, "OutOfMemoryException");
    outOfMemory.code = DiagnosticCode::OutOfMemory;
    EXPECT_EQ(DiagnosticsOfException(xercesc::OutOfMemoryException()), Diagnostics{outOfMemory});
    outOfMemory.message = "Unexpected exception";
    EXPECT_EQ(DiagnosticsOfException(std::bad_alloc()), Diagnostics{outOfMemory});
    EXPECT_EQ(DiagnosticsOfException(42), Diagnostics{Message(Severity::Error, "Unexpected exception")});
}

TEST(ParseDiagnosticTest, ThrownParseExceptionIsAnErrorAndAFatalError)
{
    const Parsed parser(
        "<a/>", std::make_shared<testsupport::ThrowingHandler<XMLParseException>>(XMLParseException("enough")));
    EXPECT_EQ(parser->GetErrors(), (std::vector<VString>{"enough", "enough"}));
    EXPECT_TRUE(parser->HasFatallyErrored());
}

TEST(ParseDiagnosticTest, NulHasItsPositionInTheSource)
{
    const Parsed inDeclaration(std::string("\n<?xml version='1.0\0'?><a/>", 27));
    EXPECT_EQ(inDeclaration->GetErrors(), std::vector<VString>{"Fatal Error(1,19): invalid character 0x0 (id: id)"});
    EXPECT_THAT(inDeclaration->GetDiagnostics(), ElementsAre(IsFaultAt(Severity::FatalError, 2, 19)));
    const Parsed behind(std::string("\n<a :b='1'/>\0", 13));
    EXPECT_THAT(behind->GetDiagnostics(), ElementsAre(IsFaultAt(Severity::FatalError, 2, 12)));
}

TEST(ParseDiagnosticTest, BytesBehindTheDocumentHaveTheirPositionInTheSource)
{
    const Parsed parser("\n<a :b='1'/>\xC3");
    EXPECT_THAT(parser->GetDiagnostics(), ElementsAre(IsFaultAt(Severity::FatalError, 2, 12)));
}

TEST(ParseDiagnosticTest, ExceededEntityLimitIsAFatalErrorInTheSource)
{
    const Parsed plain(testsupport::GeneralEntityBomb(9, 12));
    const Parsed shifted("\n\n" + testsupport::GeneralEntityBomb(9, 12));
    EXPECT_EQ(plain->GetErrors(), shifted->GetErrors());
    ASSERT_EQ(plain->GetDiagnostics().size(), 1u);
    const SourcePosition start = plain->GetDiagnostics()[0].start;
    EXPECT_THAT(shifted->GetDiagnostics(), ElementsAre(IsFaultAt(Severity::FatalError, start.line + 2, start.column)));
}

TEST(ParseDiagnosticTest, Utf16DocumentHasTheSameDiagnostics)
{
    const Parsed parser(testsupport::Utf16("<a>\n<b></c>"));
    EXPECT_THAT(parser->GetDiagnostics(), ElementsAre(IsFault(Severity::FatalError, 2)));
    EXPECT_EQ(parser->GetDiagnostics(), Parsed("<a>\n<b></c>")->GetDiagnostics());
}

TEST(ParseDiagnosticTest, ParseWithoutErrorsHasNoDiagnostics)
{
    EXPECT_EQ(Parsed("\n<a :b='1'/>")->GetDiagnostics(), Diagnostics());
}

// A schema and documents that it refuses.
class SchemaDiagnosticTest : public testing::Test {
protected:
    static constexpr const char* Schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                          "<xs:element name='a'><xs:complexType/></xs:element></xs:schema>";

    Diagnostics ParseNext(const std::string& text)
    {
        m_source = std::make_unique<Utf8InputSource>(text, "id", true);
        m_parser->Reload(*m_source, std::make_shared<RecordingHandler>());
        m_parser->Parse();
        return m_parser->GetDiagnostics();
    }

    std::unique_ptr<Utf8InputSource> m_source = std::make_unique<Utf8InputSource>("", "id", true);
    std::unique_ptr<XercesXMLParser> m_parser =
        XercesXMLParser::Create(*m_source, std::make_shared<RecordingHandler>());
};

TEST_F(SchemaDiagnosticTest, ErrorsAreInOrder)
{
    m_parser->LoadXSDString(Schema, "schema");
    const Diagnostics diagnostics = ParseNext("\n<a :x='1'\n :y='2'></b>");
    ASSERT_EQ(m_parser->GetErrors().size(), 3u);
    EXPECT_TRUE(m_parser->GetErrors()[0].contains("attribute ':x' is not declared for element 'a' (id: id)"));
    EXPECT_TRUE(m_parser->GetErrors()[1].contains("attribute ':y' is not declared for element 'a' (id: id)"));
    EXPECT_TRUE(m_parser->GetErrors()[2].contains("expected end of tag 'a' (id: id)"));
    ASSERT_EQ(diagnostics.size(), 3u);
    EXPECT_EQ(diagnostics[0].severity, Severity::Error);
    EXPECT_THAT(diagnostics[1], IsFault(Severity::Error, 3));
    EXPECT_THAT(diagnostics[2], IsFault(Severity::FatalError, 3));
}

TEST_F(SchemaDiagnosticTest, EachParseDropsTheDiagnosticsOfThePreviousParse)
{
    m_parser->LoadXSDString(Schema, "schema");
    EXPECT_EQ(ParseNext("\n\n<a :b='1'></x>").back().start.line, 3u);
    EXPECT_THAT(ParseNext("<a></x>"), ElementsAre(IsFault(Severity::FatalError, 1)));
    EXPECT_EQ(ParseNext("<a/>"), Diagnostics());
}

TEST_F(SchemaDiagnosticTest, ClearErrorsAndWarningsDropsTheDiagnostics)
{
    ParseNext("<a");
    ASSERT_FALSE(m_parser->GetDiagnostics().empty());
    m_parser->ClearErrorsAndWarnings();
    EXPECT_EQ(m_parser->GetDiagnostics(), Diagnostics());
}

TEST_F(SchemaDiagnosticTest, FaultOfASchemaHasTheIdAndThePositionOfTheSchema)
{
    Utf8InputSource schema(" \n <xs:schema", "schema", true);
    m_parser->LoadXSDSource(schema);
    ASSERT_FALSE(m_parser->GetDiagnostics().empty());
    EXPECT_EQ(m_parser->GetDiagnostics()[0].sourceId, VString("schema"));
    EXPECT_EQ(m_parser->GetDiagnostics()[0].start.line, 2u);
    EXPECT_TRUE(m_parser->GetErrors()[0].startsWith("Fatal Error(1,11): ")) << m_parser->GetErrors()[0];
    EXPECT_TRUE(m_parser->GetErrors()[0].endsWith(" (id: schema)"));
}

TEST_F(SchemaDiagnosticTest, WarningKeepsItsPlaceBetweenTheErrors)
{
    m_parser->LoadXSDString(Schema, "schema");
    const Diagnostics diagnostics = ParseNext("\n<!DOCTYPE a [<!ELEMENT a EMPTY><!ELEMENT a EMPTY>\n"
                                              "<!ATTLIST a b CDATA '1'>\n<!ATTLIST a b CDATA '2'>]>\n<a></b>");
    ASSERT_GE(diagnostics.size(), 3u);
    EXPECT_EQ(diagnostics[0].severity, Severity::Error);
    EXPECT_EQ(diagnostics[0].start.line, 2u);
    EXPECT_EQ(diagnostics[1].severity, Severity::Warning);
    EXPECT_EQ(diagnostics[1].start.line, 4u);
    EXPECT_EQ(diagnostics.back().severity, Severity::FatalError);
    EXPECT_EQ(m_parser->GetWarnings().size(), 1u);
    EXPECT_TRUE(m_parser->GetWarnings()[0].startsWith("Warning(3,")) << m_parser->GetWarnings()[0];
}

TEST(DOMParserDiagnosticsTest, GetDiagnosticsReturnsTheDiagnosticsOfTheLastParse)
{
    DOMParser parser;
    EXPECT_EQ(parser.GetDiagnostics(), Diagnostics());
    const auto faulty = parser.ParseXmlString("\n<a :b='1'></x>", "id");
    EXPECT_THAT(parser.GetDiagnostics(), ElementsAre(IsFault(Severity::FatalError, 2)));
    EXPECT_TRUE(faulty->GetErrors().front().startsWith("Fatal Error(1,"));
    const auto good = parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(parser.GetDiagnostics(), Diagnostics());
}

TEST(DOMParserDiagnosticsTest, SchemaDiagnosticsPrecedeDocumentDiagnostics)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>("<xs:schema", "schema", false));
    const auto document = parser.ParseXmlString("<a", "id");
    const std::vector<VString> errors = testsupport::Errors(*document);
    EXPECT_TRUE(errors.front().endsWith(" (id: schema)"));
    EXPECT_TRUE(errors.back().endsWith(" (id: id)"));
    EXPECT_EQ(parser.GetDiagnostics().front().sourceId, VString("schema"));
    EXPECT_EQ(parser.GetDiagnostics().back().sourceId, VString("id"));
}

// Returns the element with this number in document order, or null.
const DOMElement* ElementAt(const DOM& document, std::size_t number)
{
    DOMElementTraversal::PreorderGeneratorTemplate<const DOMElement> walk(document.GetRoot());
    walk.Next();
    const DOMElement* element = nullptr;
    for (std::size_t i = 0; i < number; ++i)
        element = walk.Next();
    return element;
}

TEST(DOMParserDiagnosticsTest, DocumentHasTheDiagnosticsOfItsParseWithTheirElements)
{
    const char* const schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                               "<xs:element name='a'><xs:complexType><xs:sequence>"
                               "<xs:element name='b' maxOccurs='unbounded' type='xs:int'/>"
                               "</xs:sequence></xs:complexType></xs:element></xs:schema>";
    for (const char* text :
        {"<a><b>1</b><b>x</b><b y=''>2</b></a>", "<a><b>1</b><c/></a>", "<a><b>x</b><b", "<a/>", "x"}) {
        DOMParser parser;
        parser.AddXSDInputSource(std::make_unique<StringInputSource>(schema, "schema", false));
        const auto document = parser.ParseXmlString(text, "id");
        const std::vector<DOMParseDiagnostic>& diagnostics = document->GetParseDiagnostics();
        EXPECT_FALSE(diagnostics.empty()) << text;
        ASSERT_EQ(diagnostics.size(), parser.GetDiagnostics().size()) << text;
        for (std::size_t i = 0; i < diagnostics.size(); ++i) {
            EXPECT_EQ(diagnostics[i].diagnostic, parser.GetDiagnostics()[i]) << text;
            EXPECT_EQ(diagnostics[i].element, ElementAt(*document, diagnostics[i].diagnostic.element)) << text;
        }
    }
}

TEST(DOMParserDiagnosticsTest, DocumentKeepsItsDiagnosticsWhenTheParserGoesOn)
{
    DOMParser parser;
    const auto faulty = parser.ParseXmlString("<a></b>", "id");
    const auto sound = parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(faulty->GetParseDiagnostics().size(), 1u);
    EXPECT_TRUE(sound->GetParseDiagnostics().empty());
}

TEST(ParseDiagnosticTest, ManyErrorsBehindManyColonNamesTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(60);
    StringInputSource source(
        "<a>" + VString::fromStdString(testsupport::Repeat("<b :c='1'/>", 20000)) + "</a>", "id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    parser->LoadXSDString("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                          "<xs:element name='a'><xs:complexType><xs:sequence>"
                          "<xs:element name='b' maxOccurs='unbounded'><xs:complexType>"
                          "<xs:attribute name='d' use='required'/></xs:complexType></xs:element>"
                          "</xs:sequence></xs:complexType></xs:element></xs:schema>",
        "schema");
    parser->Parse();
    EXPECT_EQ(parser->GetErrors().size(), 40000u);
    // The attribute :c is reported once, and the missing d at each element.
    ASSERT_EQ(parser->GetDiagnostics().size(), 20001u);
    for (std::uint64_t i = 2; i < 20001; ++i)
        ASSERT_EQ(parser->GetDiagnostics()[i].start.column, 5 + 11 * (i - 1));
}

}  // namespace
