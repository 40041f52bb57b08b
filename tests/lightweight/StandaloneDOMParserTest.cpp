#include "vancorexml/main/parser/StandaloneDOMParser.h"

#include <string>
#include <vector>

#include "tests/common/SinkCaptures.h"
#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

namespace {

constexpr const char* const Schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
    "<xs:complexType><xs:attribute name='n' type='xs:int' default='7'/></xs:complexType>"
    "</xs:element></xs:schema>";

std::unique_ptr<InputSource> SchemaSource()
{
    return std::make_unique<StringInputSource>(Schema, "schema.xsd", false);
}

}  // namespace

TEST(StandaloneDOMParserTest, RootIsTheOnlyChildOfTheDocumentWrapper)
{
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a>text</a>", "id");
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(tree->GetName(), VString("Document"));
    ASSERT_EQ(tree->GetChildren().size(), 1u);
    const StandaloneDOMElement& root = tree->GetChildren()[0];
    EXPECT_EQ(root.GetName(), VString("a"));
    EXPECT_EQ(root.GetAllText(), VString("text"));
    EXPECT_EQ(root.GetTextNodes().size(), 1u);
}

TEST(StandaloneDOMParserTest, TextsAndChildrenKeepTheirOrder)
{
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a>1<b :c='x'/>2</a>", "id");
    const StandaloneDOMElement& root = tree->GetChildren()[0];
    ASSERT_EQ(root.GetTextNodes().size(), 2u);
    EXPECT_EQ(root.GetChild("b")->GetAttribute(":c"), VString("x"));
    EXPECT_FALSE(root.IsEncoded());
}

TEST(StandaloneDOMParserTest, BlankTextIsDropped)
{
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a>\n  <b/>\n</a>", "id");
    EXPECT_FALSE(tree->GetChildren()[0].get().HasText());
}

TEST(StandaloneDOMParserTest, BlankTextIsKeptWhenAsked)
{
    Utf8InputSource source("<a>\n  <b/>\n</a>", "id", false);
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlInputSource(source, true);
    EXPECT_EQ(tree->GetChildren()[0].get().GetAllText(), VString("\n  \n"));
}

TEST(StandaloneDOMParserTest, DiagnosticPositionsCountTheSkippedWhiteSpace)
{
    struct Row {
        const char* text;
        SourcePosition start;
    };
    const Row rows[] = {
        {"  <a></b>", {1, 6}},
        {"\n \t<a></b>", {2, 6}},
        {"\r\n\n<a>\n</b>", {4, 1}},
        {"\f\r<a></b>", {2, 4}},
    };
    for (const Row& row : rows) {
        const StandaloneDOMParser::Result result = StandaloneDOMParser().ParseXmlString(row.text, "id");
        ASSERT_EQ(result.diagnostics.size(), 1u) << row.text;
        EXPECT_EQ(result.diagnostics[0].start.line, row.start.line) << row.text;
        EXPECT_EQ(result.diagnostics[0].start.column, row.start.column) << row.text;
    }
}

TEST(StandaloneDOMParserTest, EveryStringOverloadSkipsLeadingWhiteSpace)
{
    const StandaloneDOMParser parser;
    const std::string text = "\n \t<?xml version='1.0'?><a/>";
    EXPECT_TRUE(parser.ParseXmlString(text, "id").second.empty());
    EXPECT_TRUE(parser.ParseXmlString(VString::fromStdString(text), "id").second.empty());
    EXPECT_TRUE(parser.ParseXmlString(text.c_str(), "id").second.empty());
}

TEST(StandaloneDOMParserTest, ParseXmlBytesDoesNotSkipLeadingWhiteSpace)
{
    const std::string text = " <?xml version='1.0'?><a/>";
    const StandaloneDOMParser parser;
    EXPECT_FALSE(parser.ParseXmlBytes({text.begin(), text.end()}).second.empty());
    EXPECT_TRUE(parser.ParseXmlBytes({text.begin() + 1, text.end()}).second.empty());
}

TEST(StandaloneDOMParserTest, FaultReturnsTheTreeBuiltSoFarAndAnError)
{
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString("<a><b/><c></a>", "fault.xml");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors[0].startsWith("Fatal Error(1,"));
    EXPECT_TRUE(errors[0].endsWith(" (id: fault.xml)"));
    EXPECT_NE(tree->GetChildren()[0].get().GetChild("b"), nullptr);
}

TEST(StandaloneDOMParserTest, DocumentWithExcessiveEntityExpansionIsRejected)
{
    std::string start = "<!DOCTYPE a [<!ENTITY e '" + std::string(1000000, 'x') + "'>]><a b='";
    const auto [sound, noErrors] =
        StandaloneDOMParser().ParseXmlString(VString::fromStdString(start + "&e;&e;'/>"), "id");
    EXPECT_TRUE(noErrors.empty());
    EXPECT_EQ(sound->GetChildren()[0].get().GetAttribute("b").length(), 2000000);
    for (int i = 0; i < 120; ++i)
        start += "&e;";
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString(VString::fromStdString(start + "'/>"), "id");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors[0].contains("characters of entities"));
}

TEST(StandaloneDOMParserTest, ParseXmlFileReadsAFileAndPropagatesReadErrors)
{
    const testsupport::TemporaryFolder folder;
    const StandaloneDOMParser parser;
    EXPECT_TRUE(parser.ParseXmlFile(folder.Write("a.xml", "\n<a/>")).second.empty());
    EXPECT_THROW(parser.ParseXmlFile(folder.Path("missing.xml")), VIO::Exception);
}

TEST(StandaloneDOMParserTest, DoesNotValidateWithoutASchema)
{
    EXPECT_TRUE(StandaloneDOMParser().ParseXmlString("<a n='x'/>", "id").second.empty());
}

TEST(StandaloneDOMParserTest, AddedSchemaValidatesEveryDocumentAndAddsDefaults)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(SchemaSource());
    for (int i = 0; i < 3; ++i) {
        const auto valid = parser.ParseXmlString("<a/>", "id");
        EXPECT_TRUE(valid.second.empty());
        EXPECT_EQ(valid.first->GetChildren()[0].get().GetAttribute("n"), VString("7"));
        EXPECT_FALSE(parser.ParseXmlString("<a n='x'/>", "id").second.empty());
    }
}

TEST(StandaloneDOMParserTest, SchemaFromAFileValidatesEveryDocument)
{
    const testsupport::TemporaryFolder folder;
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<FileInputSource>(folder.Write("schema.xsd", Schema)));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(parser.ParseXmlString("<a/>", "id").second.empty());
        EXPECT_FALSE(parser.ParseXmlString("<a n='x'/>", "id").second.empty());
    }
}

TEST(StandaloneDOMParserTest, ResourceCanBeUsedAsASchema)
{
    StandaloneDOMParser parser;
    parser.AddXSDResourceId(QtVanResourceId::FileFormatKxeXsd);
    EXPECT_TRUE(parser.ParseXmlString("<captions version='18.1'/>", "id").second.empty());
    EXPECT_FALSE(parser.ParseXmlString("<captions version='17'/>", "id").second.empty());
}

TEST(StandaloneDOMParserTest, ErrorMessagesOmitTheErrorsInsideABrokenSchema)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element", "broken.xsd", false));
    const auto errors = parser.ParseXmlString("<a/>", "id").second;
    ASSERT_FALSE(errors.empty());
    for (const VString& error : errors)
        EXPECT_FALSE(error.contains("broken.xsd")) << error;
}

TEST(StandaloneDOMParserTest, ResultListsTheFaultsAsDiagnostics)
{
    const StandaloneDOMParser parser;
    const auto result = parser.ParseXmlString("<a>\n<b></a>", "id");
    ASSERT_EQ(result.diagnostics.size(), 1u);
    EXPECT_EQ(result.diagnostics[0].severity, ParseDiagnostic::Severity::FatalError);
    EXPECT_EQ(result.diagnostics[0].sourceId, VString("id"));
    EXPECT_EQ(result.diagnostics[0].start.line, 2u);
    EXPECT_EQ(result.second.size(), 1u);
    EXPECT_TRUE(parser.ParseXmlString("<a/>", "id").diagnostics.empty());
}

TEST(StandaloneDOMParserTest, DiagnosticsOfSchemasPrecedeThoseOfTheDocument)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element", "broken.xsd", false));
    const auto result = parser.ParseXmlString("<a>", "id");
    ASSERT_GE(result.diagnostics.size(), 2u);
    EXPECT_EQ(result.diagnostics.front().sourceId, VString("broken.xsd"));
    EXPECT_EQ(result.diagnostics.back().sourceId, VString("id"));
}

TEST(StandaloneDOMParserTest, DiagnosticsIncludeWarnings)
{
    const auto result = StandaloneDOMParser().ParseXmlString(
        "<!DOCTYPE a [<!ATTLIST a b CDATA '1'>\n<!ATTLIST a b CDATA '2'>]><a>", "id");
    EXPECT_EQ(result.second.size(), 1u);
    ASSERT_EQ(result.diagnostics.size(), 2u);
    EXPECT_EQ(result.diagnostics[0].severity, ParseDiagnostic::Severity::Warning);
}

TEST(StandaloneDOMParserTest, ResultIsStillAPair)
{
    const StandaloneDOMParser parser;
    std::pair<std::unique_ptr<StandaloneDOMElement>, std::vector<VString>> pair = parser.ParseXmlString("<a", "id");
    EXPECT_EQ(pair.first->GetName(), VString("Document"));
    EXPECT_FALSE(pair.second.empty());
    pair = parser.ParseXmlString("<a/>", "id");
    EXPECT_TRUE(pair.second.empty());
    std::unique_ptr<StandaloneDOMElement> tree;
    std::vector<VString> errors;
    std::tie(tree, errors) = parser.ParseXmlString("<b/>", "id");
    EXPECT_EQ(tree->GetChildren()[0].get().GetName(), VString("b"));
    EXPECT_EQ(std::get<0>(parser.ParseXmlString("<a/>", "id"))->GetChildren().size(), 1u);
    auto&& [reference, messages] = parser.ParseXmlString("<c/>", "id");
    tree = std::move(reference);
    EXPECT_EQ(tree->GetChildren()[0].get().GetName(), VString("c"));
    const StandaloneDOMParser::Result made(std::move(tree), std::vector<VString>{"e"});
    EXPECT_EQ(made.second.size(), 1u);
}

TEST(StandaloneDOMParserTest, SchemaWithoutAnIdRaises)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(Schema, "", false));
    EXPECT_THROW(parser.ParseXmlString("<a/>", "id"), LogicException);
}

TEST(StandaloneDOMParserTest, StatisticsHandlerMayReplaceItself)
{
    StandaloneDOMParser parser;
    auto capture = std::make_shared<int>(7);
    const std::weak_ptr<int> observer = capture;
    bool wasAlive = false;
    int calls = 0;
    parser.SetStatisticsEventHandler([&, capture = std::move(capture)](const DOMParserStatistics&) {
        const std::weak_ptr<int>& captured = observer;
        bool& result = wasAlive;
        parser.SetStatisticsEventHandler([&calls](const DOMParserStatistics&) { ++calls; });
        result = !captured.expired();
    });
    parser.ParseXmlString(VString("<a/>"), "id");
    EXPECT_TRUE(wasAlive);
    EXPECT_TRUE(observer.expired());
    parser.ParseXmlString(VString("<a/>"), "id");
    EXPECT_EQ(calls, 1);
}

TEST(StandaloneDOMParserTest, StatisticsHandlerMayDestroyItsParser)
{
    auto parser = std::make_unique<StandaloneDOMParser>();
    parser->SetStatisticsEventHandler([&](const DOMParserStatistics&) { parser.reset(); });
    EXPECT_EQ(parser->ParseXmlString(VString("<a/>"), "id").first->GetChildren().size(), 1u);
    EXPECT_FALSE(parser);
}

TEST(StandaloneDOMParserTest, StatisticsAreReportedOncePerParse)
{
    StandaloneDOMParser parser;
    std::vector<std::pair<unsigned long long, VString>> seen;
    parser.SetStatisticsEventHandler([&seen](const DOMParserStatistics& statistics) {
        seen.emplace_back(statistics.sourceSize, statistics.sourceId);
    });
    parser.ParseXmlString("  <ä/>", "first");
    parser.ParseXmlBytes({'<', 'a', '/', '>'});
    const std::vector<std::pair<unsigned long long, VString>> expected{{5, "first"}, {4, ""}};
    EXPECT_EQ(seen, expected);
    parser.SetStatisticsEventHandler({});
    EXPECT_NO_THROW(parser.ParseXmlString("<a/>", "third"));
}

TEST(StandaloneDOMParserTest, EveryEntryPointRecordsAMetricsScope)
{
    const testsupport::MetricsCapture metrics;
    const testsupport::TemporaryFolder folder;
    const StandaloneDOMParser parser;
    parser.ParseXmlString("<a/>", "id");
    parser.ParseXmlBytes({'<', 'a', '/', '>'});
    parser.ParseXmlFile(folder.Write("a.xml", "<a/>"));
    const std::vector<std::string> names = metrics.Names();
    const auto count = [&names](const std::string& operation) {
        return std::count(names.begin(), names.end(), "StandaloneDOMParser_" + operation);
    };
    EXPECT_EQ(count("ParseXmlString"), 1);
    EXPECT_EQ(count("ParseXmlBytes"), 1);
    EXPECT_EQ(count("ParseXmlFile"), 1);
    EXPECT_EQ(count("ParseXmlInputSource"), 3);
}

TEST(StandaloneDOMParserTest, ParsesAMillionLevels)
{
    constexpr int depth = 1000000;
    std::string text;
    text.reserve(7 * depth);
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString(text, "deep");
    EXPECT_TRUE(errors.empty());
    int levels = 0;
    for (const StandaloneDOMElement* at = tree->GetChild("a"); at; at = at->GetChild("a"))
        ++levels;
    EXPECT_EQ(levels, depth);
}

// All overloads decode alike, although valid UTF-8 is not converted.
TEST(StandaloneDOMParserTest, ByteStringIsReadAsUtf8WhateverItDeclares)
{
    const std::string text = "<?xml version='1.0' encoding='iso-8859-1'?><a>\xC3\xA9</a>";
    for (const std::string& bytes : {text, " \n" + text, "\xEF\xBB\xBF" + text}) {
        const auto result = StandaloneDOMParser().ParseXmlString(bytes, "id");
        EXPECT_TRUE(result.second.empty()) << bytes;
        ASSERT_TRUE(result.first->GetChild("a")) << bytes;
        EXPECT_EQ(result.first->GetChild("a")->GetAllText(), VString("\xC3\xA9")) << bytes;
    }
    const auto repaired = StandaloneDOMParser().ParseXmlString(std::string("<a>\xC3</a>"), "id");
    EXPECT_EQ(repaired.first->GetChild("a")->GetAllText(), VString("\xEF\xBF\xBD"));
}

TEST(StandaloneDOMParserTest, RemovedChildOutlivesItsTree)
{
    std::unique_ptr<StandaloneDOMElement> child;
    {
        const auto result = StandaloneDOMParser().ParseXmlString("<a><b>text<c/></b><d/></a>", "id");
        StandaloneDOMElement& a = *result.first->GetChild("a");
        child = a.RemoveChild(*a.GetChild("b"));
    }
    EXPECT_EQ(child->GetAllText(), VString("text"));
    child->AppendChild(std::make_unique<StandaloneDOMElement>("e"));
    EXPECT_EQ(child->GetChildren().size(), 2U);
}
