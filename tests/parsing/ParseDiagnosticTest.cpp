#include "vancorexml/main/parser/ParseDiagnostic.h"

#include <xercesc/util/OutOfMemoryException.hpp>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLParseException.h"

using Layout = ParseDiagnostic::Layout;
using Severity = ParseDiagnostic::Severity;

static void PrintTo(const ParseDiagnostic& diagnostic, std::ostream* out)
{
    *out << static_cast<int>(diagnostic.severity) << "/" << static_cast<int>(diagnostic.layout) << " "
         << diagnostic.GetText() << " [" << diagnostic.sourceId << "]";
}

namespace {

using testsupport::RecordingHandler;

using Diagnostics = std::vector<ParseDiagnostic>;

ParseDiagnostic Fault(Severity severity, const VString& message, std::uint64_t line, std::uint64_t column)
{
    return {severity, Layout::Fault, message, "id", line, column, VString()};
}

ParseDiagnostic Message(Severity severity, const VString& message)
{
    return {severity, Layout::Message, message, "id", 0, 0, VString()};
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

TEST(ParseDiagnosticTest, GetTextOfAFaultJoinsAllParts)
{
    EXPECT_EQ(Fault(Severity::Warning, "odd", 3, 7).GetText(), VString("Warning(3,7): odd (id: id)"));
    EXPECT_EQ(Fault(Severity::Error, "odd", 3, 0).GetText(), VString("Error(3,0): odd (id: id)"));
    EXPECT_EQ(Fault(Severity::FatalError, "odd", 0, 0).GetText(), VString("Fatal Error: odd (id: id)"));
}

TEST(ParseDiagnosticTest, GetTextOfOtherLayoutsBeginsWithTheMessage)
{
    EXPECT_EQ(Message(Severity::FatalError, "over %1").GetText(), VString("over %1"));
    const ParseDiagnostic refused{Severity::Error, Layout::ExternalEntity, "No (1,2) 'x'.", "id", 3, 7, "%1"};
    EXPECT_EQ(refused.GetText(), VString("No (1,2) 'x'.(3,7) '%1'"));
}

TEST(ParseDiagnosticTest, TextsOfAnUnchangedDocumentEqualItsErrors)
{
    const Parsed parser("<a>\n<b></c>");
    EXPECT_EQ(parser->GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "expected end of tag 'b'", 2, 6)});
    EXPECT_EQ(parser->GetDiagnostics()[0].GetText(), parser->GetErrors()[0]);
}

TEST(ParseDiagnosticTest, PositionRefersToTheSourceAndErrorTextsToTheScannedText)
{
    const Parsed parser("\n\n <a :b='1' :c='2'></x>");
    EXPECT_EQ(parser->GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "expected end of tag 'a'", 3, 21)});
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

TEST(ParseDiagnosticTest, RefusedEntityIsRecordedTwiceWithItsName)
{
    for (const char* language : {"en_US", "de_DE", "ja_JP"}) {
        const testsupport::Session session(language);
        const Parsed parser("\n  <!DOCTYPE a [\n<!ENTITY e SYSTEM 'x'>]><a :b='1'/>");
        ASSERT_EQ(parser->GetDiagnostics().size(), 2u);
        ParseDiagnostic expected = parser->GetDiagnostics()[0];
        EXPECT_EQ(expected.severity, Severity::Error);
        EXPECT_EQ(expected.layout, Layout::ExternalEntity);
        EXPECT_EQ(expected.sourceId, VString("id"));
        EXPECT_EQ(expected.line, 3u);
        EXPECT_EQ(expected.column, 23u);
        EXPECT_EQ(expected.entity, VString("e"));
        EXPECT_EQ(parser->GetErrors()[0], expected.message + "(2,23) 'e'");
        expected.severity = Severity::FatalError;
        EXPECT_EQ(parser->GetDiagnostics()[1], expected);
    }
}

TEST(ParseDiagnosticTest, ExceptionHasAMessageAndNoPosition)
{
    EXPECT_EQ(DiagnosticsOfException(XMLParseException("enough")),
        (Diagnostics{Message(Severity::Error, "enough"), Message(Severity::FatalError, "enough")}));
    EXPECT_EQ(DiagnosticsOfException(xercesc::OutOfMemoryException()),
        Diagnostics{Message(Severity::Error, "OutOfMemoryException")});
    EXPECT_EQ(DiagnosticsOfException(42), Diagnostics{Message(Severity::Error, "Unexpected exception")});
}

TEST(ParseDiagnosticTest, NulHasItsPositionInTheSource)
{
    const Parsed inDeclaration(std::string("\n<?xml version='1.0\0'?><a/>", 27));
    EXPECT_EQ(
        inDeclaration->GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "invalid character 0x0", 2, 19)});
    const Parsed behind(std::string("\n<a :b='1'/>\0", 13));
    EXPECT_EQ(behind->GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "invalid character 0x0", 2, 12)});
}

TEST(ParseDiagnosticTest, BytesBehindTheDocumentHaveTheirPositionInTheSource)
{
    const Parsed parser("\n<a :b='1'/>\xC3");
    EXPECT_EQ(parser->GetDiagnostics(),
        Diagnostics{Fault(Severity::FatalError, "invalid bytes at the end of the document", 2, 12)});
}

TEST(ParseDiagnosticTest, ExceededEntityLimitIsAFatalErrorInTheSource)
{
    const Parsed plain(testsupport::GeneralEntityBomb(9, 12));
    const Parsed shifted("\n\n" + testsupport::GeneralEntityBomb(9, 12));
    ASSERT_EQ(plain->GetDiagnostics().size(), 1u);
    ParseDiagnostic expected = plain->GetDiagnostics()[0];
    EXPECT_EQ(expected.severity, Severity::FatalError);
    EXPECT_EQ(expected.GetText(), plain->GetErrors()[0]);
    expected.line += 2;
    EXPECT_EQ(shifted->GetDiagnostics(), Diagnostics{expected});
}

TEST(ParseDiagnosticTest, Utf16DocumentHasTheSamePositions)
{
    const Parsed parser(testsupport::Utf16("<a>\n<b></c>"));
    EXPECT_EQ(parser->GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "expected end of tag 'b'", 2, 6)});
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

TEST_F(SchemaDiagnosticTest, ErrorsAreInOrderWithPositionsInTheSource)
{
    m_parser->LoadXSDString(Schema, "schema");
    const Diagnostics diagnostics = ParseNext("\n<a :x='1'\n :y='2'></b>");
    EXPECT_EQ(diagnostics,
        (Diagnostics{Fault(Severity::Error, "attribute ':x' is not declared for element 'a'", 3, 9),
            Fault(Severity::Error, "attribute ':y' is not declared for element 'a'", 3, 9),
            Fault(Severity::FatalError, "expected end of tag 'a'", 3, 11)}));
    EXPECT_EQ(m_parser->GetErrors().size(), 3u);
}

TEST_F(SchemaDiagnosticTest, EachParseDropsTheDiagnosticsOfThePreviousParse)
{
    m_parser->LoadXSDString(Schema, "schema");
    EXPECT_EQ(ParseNext("\n\n<a :b='1'></x>").back().line, 3u);
    EXPECT_EQ(ParseNext("<a></x>"), Diagnostics{Fault(Severity::FatalError, "expected end of tag 'a'", 1, 6)});
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
    const ParseDiagnostic& diagnostic = m_parser->GetDiagnostics()[0];
    EXPECT_EQ(diagnostic.sourceId, VString("schema"));
    EXPECT_EQ(diagnostic.line, 2u);
    ParseDiagnostic scanned = diagnostic;
    scanned.line -= 1;
    scanned.column -= 1;
    EXPECT_EQ(m_parser->GetErrors()[0], scanned.GetText());
}

TEST_F(SchemaDiagnosticTest, WarningKeepsItsPlaceBetweenTheErrors)
{
    m_parser->LoadXSDString(Schema, "schema");
    const Diagnostics diagnostics = ParseNext("\n<!DOCTYPE a [<!ELEMENT a EMPTY><!ELEMENT a EMPTY>\n"
                                              "<!ATTLIST a b CDATA '1'>\n<!ATTLIST a b CDATA '2'>]>\n<a></b>");
    ASSERT_GE(diagnostics.size(), 3u);
    EXPECT_EQ(diagnostics[0].severity, Severity::Error);
    EXPECT_EQ(diagnostics[0].line, 2u);
    EXPECT_EQ(diagnostics[1].severity, Severity::Warning);
    EXPECT_EQ(diagnostics[1].line, 4u);
    EXPECT_EQ(diagnostics.back().severity, Severity::FatalError);
    EXPECT_EQ(m_parser->GetWarnings().size(), 1u);
    EXPECT_EQ(m_parser->GetErrors().size(), diagnostics.size() - 1);
}

TEST(DOMParserDiagnosticsTest, GetDiagnosticsReturnsTheDiagnosticsOfTheLastParse)
{
    DOMParser parser;
    EXPECT_EQ(parser.GetDiagnostics(), Diagnostics());
    const auto faulty = parser.ParseXmlString("\n<a :b='1'></x>", "id");
    EXPECT_EQ(parser.GetDiagnostics(), Diagnostics{Fault(Severity::FatalError, "expected end of tag 'a'", 2, 13)});
    EXPECT_NE(faulty->GetErrors().front(), parser.GetDiagnostics()[0].GetText());
    const auto good = parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(parser.GetDiagnostics(), Diagnostics());
}

TEST(DOMParserDiagnosticsTest, SchemaDiagnosticsPrecedeDocumentDiagnostics)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>("<xs:schema", "schema", false));
    const auto document = parser.ParseXmlString("<a", "id");
    const std::vector<VString> errors = testsupport::Errors(*document);
    ASSERT_EQ(parser.GetDiagnostics().size(), errors.size());
    EXPECT_EQ(parser.GetDiagnostics().front().sourceId, VString("schema"));
    EXPECT_EQ(parser.GetDiagnostics().back().sourceId, VString("id"));
    for (std::size_t i = 0; i < errors.size(); ++i)
        EXPECT_EQ(parser.GetDiagnostics()[i].GetText(), errors[i]);
}

TEST(ParseDiagnosticTest, ManyErrorsBehindManyColonNamesTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(60);
    StringInputSource source(
        "<a>" + VString::fromStdString(testsupport::Repeat("<b :c='1'/>", 20000)) + "</a>", "id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    parser->LoadXSDString("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                          "<xs:element name='a'><xs:complexType><xs:sequence>"
                          "<xs:element name='b' maxOccurs='unbounded'><xs:complexType/></xs:element>"
                          "</xs:sequence></xs:complexType></xs:element></xs:schema>",
        "schema");
    parser->Parse();
    ASSERT_EQ(parser->GetDiagnostics().size(), 20000u);
    for (std::uint64_t i = 0; i < 20000; ++i)
        ASSERT_EQ(parser->GetDiagnostics()[i].column, 4 + 11 * (i + 1));
}

}  // namespace
