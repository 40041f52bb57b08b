// The diagnostics of schemas with faults.
#include <memory>
#include <string>
#include <vector>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/XercesXMLParser.h"

namespace {

// Loads `content` between the tags of a schema, which take the first and the last line.
std::vector<ParseDiagnostic> Load(const std::string& content)
{
    StringInputSource nothing(VString(), VString(), false);
    const auto parser = XercesXMLParser::Create(nothing, std::make_shared<testsupport::RecordingHandler>());
    parser->LoadXSDString(VString::fromStdString(
                              "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n" + content + "\n</xs:schema>"),
        "schema");
    return parser->GetDiagnostics();
}

void ExpectOne(const std::string& content, SourcePosition start, SourcePosition end, const VString& suggestion)
{
    SCOPED_TRACE(content);
    const std::vector<ParseDiagnostic> diagnostics = Load(content);
    ASSERT_FALSE(diagnostics.empty());
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::BadSchema);
    EXPECT_EQ(diagnostics[0].sourceId, "schema");
    EXPECT_EQ(diagnostics[0].start, start);
    EXPECT_EQ(diagnostics[0].end, end);
    EXPECT_EQ(diagnostics[0].suggestion, suggestion);
    EXPECT_EQ(diagnostics[0].message.endsWith("; did you mean '" + suggestion + "'?"), !suggestion.IsEmpty())
        << diagnostics[0].message;
}

TEST(SchemaFaultsTest, GoodSchemaHasNoDiagnostics)
{
    EXPECT_EQ(Load("<xs:element name='a' type='xs:int'/>").size(), 0u);
}

TEST(SchemaFaultsTest, MisspeltNamesGetASuggestionAtTheNameOfTheTag)
{
    ExpectOne("<xs:element name='a' type='xs:strin'/>", {2, 2}, {2, 12}, "string");
    ExpectOne("<xs:element name='a'>\n <xs:complexType><xs:sequnce/></xs:complexType></xs:element>",
        {3, 19},
        {3, 29},
        "sequence");
    ExpectOne("<xs:element name='a' type='xs:int' nilable='true'/>", {2, 2}, {2, 12}, "nillable");
}

TEST(SchemaFaultsTest, OtherFaultsGetNoSuggestion)
{
    ExpectOne("<xs:element name='a' type='other'/>", {2, 2}, {2, 12}, "");
}

TEST(SchemaFaultsTest, SchemaThatIsNotWellFormedHasOneDiagnostic)
{
    const std::vector<ParseDiagnostic> diagnostics = Load("<xs:element name='a'><xs:complexType></xs:element>");
    ASSERT_EQ(diagnostics.size(), 1u);
    EXPECT_EQ(diagnostics[0].code, DiagnosticCode::BadSchema);
    EXPECT_EQ(diagnostics[0].message,
        "element 'xs:complexType' is still open; add '</xs:complexType>' before "
        "'</xs:element>'");
    ASSERT_TRUE(diagnostics[0].related);
    EXPECT_EQ(diagnostics[0].related->start.line, 2u);
}

}  // namespace
