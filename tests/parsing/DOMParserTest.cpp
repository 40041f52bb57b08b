#include "vancorexml/main/parser/DOMParser.h"

#include <thread>

#include "tests/common/SinkCaptures.h"
#include "tests/parsing/ParsingTestSupport.h"
#include "vancoredata/VResource.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vansys/MemoryScope.h"

namespace {

using testsupport::Errors;
using testsupport::TreeText;

const char* const Schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                           "<xs:element name='a' type='xs:int'/></xs:schema>";

std::unique_ptr<InputSource> SchemaSource(const VString& id)
{
    return std::make_unique<StringInputSource>(Schema, id, false);
}

struct DOMParserTest : testing::Test {
    std::string Parse(const char* text) { return TreeText(*parser.ParseXmlString(text, "id")); }

    DOMParser parser;
};

TEST_F(DOMParserTest, OptionsAreOffAtFirst)
{
    EXPECT_FALSE(parser.GetEnableLineNumbersOnElements());
    EXPECT_FALSE(parser.GetRestrictExternalPaths());
    parser.SetEnableLineNumbersOnElements(true);
    parser.SetRestrictExternalPaths(true);
    EXPECT_TRUE(parser.GetEnableLineNumbersOnElements());
    EXPECT_TRUE(parser.GetRestrictExternalPaths());
}

TEST_F(DOMParserTest, DocumentsInheritTheRestrictionOfExternalPaths)
{
    EXPECT_FALSE(parser.ParseXmlString("<a/>", "id")->GetRestrictExternalPaths());
    parser.SetRestrictExternalPaths(true);
    EXPECT_TRUE(parser.ParseXmlString("<a/>", "id")->GetRestrictExternalPaths());
}

TEST_F(DOMParserTest, TheDocumentElementIsBelowTheSyntheticRoot)
{
    const auto document = parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(document->GetRoot().GetName(), VString("Document"));
    ASSERT_NE(document->GetDocumentRoot(), nullptr);
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), VString("a"));
    EXPECT_EQ(document->GetDocumentRoot()->GetDOMManager(), document.get());
}

struct TreeRow {
    const char* name;
    const char* text;
    const char* tree;
};

const TreeRow TreeRows[] = {
    {"leading white space", " \n\t<a/>", "<a></a>"},
    {"blank text is dropped", "<a> \n <b/>\t</a>", "<a><b></b></a>"},
    {"text keeps its blanks", "<a> x </a>", "<a> x </a>"},
    {"a no-break space is text", "<a>\xC2\xA0</a>", "<a>\xC2\xA0</a>"},
    {"text around children is joined", "<a>1<b/> <b/>2</a>", "<a>12<b></b><b></b></a>"},
    {"attributes", "<a c='2' b='1'/>", "<a b='1' c='2'></a>"},
    {"leading colons", "<a :b='1'/>", "<a :b='1'></a>"},
    {"siblings in order", "<a><b/><c><d/></c><b/></a>", "<a><b></b><c><d></d></c><b></b></a>"},
    {"comments and instructions are dropped", "<a><!-- c --><?p i?></a><!-- c -->", "<a></a>"},
};

TEST_F(DOMParserTest, BuildsTheTree)
{
    for (const TreeRow& row : TreeRows) {
        SCOPED_TRACE(row.name);
        const auto document = parser.ParseXmlString(row.text, "id");
        EXPECT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
        EXPECT_EQ(TreeText(*document), row.tree);
    }
}

TEST_F(DOMParserTest, KeepsBlankTextWhenRequested)
{
    Utf8InputSource source("<a> <b/>\n</a>", "id", false);
    EXPECT_EQ(TreeText(*parser.ParseXmlInputSource(source, true)), "<a> \n<b></b></a>");
}

TEST_F(DOMParserTest, AllParseOperationsBuildTheSameDocument)
{
    const testsupport::TemporaryFolder folder;
    const std::string text = "<a b='1'>\xC3\xA4</a>";
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    Utf8InputSource source(text, "id", false);
    std::vector<std::unique_ptr<DOM>> documents;
    documents.push_back(parser.ParseXmlBytes(bytes));
    documents.push_back(parser.ParseXmlBytes(std::vector<unsigned char>(bytes)));
    documents.push_back(parser.ParseXmlString(text, "id"));
    documents.push_back(parser.ParseXmlString(std::string(text), "id"));
    documents.push_back(parser.ParseXmlString(VString::fromStdString(text), "id"));
    const VString wide = VString::fromStdString(text);
    documents.push_back(parser.ParseXmlString(wide, "id"));
    documents.push_back(parser.ParseXmlString(text.c_str(), "id"));
    documents.push_back(parser.ParseXmlFile(folder.Write("a.xml", text)));
    documents.push_back(parser.ParseXmlInputSource(source, false));
    for (const auto& document : documents)
        EXPECT_EQ(TreeText(*document), "<a b='1'>\xC3\xA4</a>");
}

TEST_F(DOMParserTest, NullTextIsAnError)
{
    EXPECT_TRUE(parser.ParseXmlString(static_cast<const char*>(nullptr), "id")->HasErrors());
}

TEST_F(DOMParserTest, StringsSkipLeadingWhitespaceAndBytesDoNot)
{
    const std::string text = " <?xml version='1.0'?><a/>";
    EXPECT_FALSE(parser.ParseXmlString(text, "id")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString(VString::fromStdString(text), "id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlBytes(std::vector<unsigned char>(text.begin(), text.end()))->HasErrors());
}

TEST_F(DOMParserTest, FilesSkipLeadingWhitespace)
{
    const testsupport::TemporaryFolder folder;
    EXPECT_FALSE(parser.ParseXmlFile(folder.Write("a.xml", "\n<?xml version='1.0'?><a/>"))->HasErrors());
}

TEST_F(DOMParserTest, OnlyByteStringsUseTheirDeclaredEncoding)
{
    const std::string text = "<?xml version='1.0' encoding='iso-8859-1'?><a>\xC3\xA4</a>";
    EXPECT_EQ(TreeText(*parser.ParseXmlString(VString::fromStdString(text), "id")), "<a>\xC3\xA4</a>");
    EXPECT_EQ(TreeText(*parser.ParseXmlString(text, "id")), "<a>\xC3\x83\xC2\xA4</a>");
}

TEST_F(DOMParserTest, ErrorsAreRecordedOnTheRootInOrder)
{
    const auto document = parser.ParseXmlString("<a b='1' b='2' c='1' c='2'/>", "id");
    const std::vector<VString> errors = Errors(*document);
    ASSERT_GE(errors.size(), 1u);
    std::list<VString> onRoot;
    document->GetRoot().GetErrors(onRoot);
    EXPECT_EQ(std::vector<VString>(onRoot.begin(), onRoot.end()), errors);
    EXPECT_TRUE(document->HasUnreportedErrors());
    EXPECT_FALSE(document->HasCancelErrors());
    EXPECT_EQ(document->GetMetadataForErrors().size(), errors.size());
    EXPECT_EQ(document->GetMetadataForErrors().front(), VError::ErrorInfo::NoError);
}

TEST_F(DOMParserTest, IllFormedDocumentKeepsTheElementsBeforeTheError)
{
    const auto document = parser.ParseXmlString("<a><b>x</b><c>", "f.xml");
    EXPECT_EQ(TreeText(*document), "<a><b>x</b><c></c></a>");
    EXPECT_EQ(Errors(*document),
        std::vector<VString>{
            "Fatal Error(1,15): input ended before all started tags were ended; last tag started is 'c' (id: f.xml)"});
}

TEST_F(DOMParserTest, PositionsPointBehindTheTags)
{
    parser.SetEnableLineNumbersOnElements(true);
    const auto document = parser.ParseXmlString("<a>\n  <b>\n\n  </b>\n</a>", "id");
    const DOMElement& b = document->GetDocumentRoot()->GetRequiredChild("b");
    EXPECT_EQ(b.GetStartLine(), 2);
    EXPECT_EQ(b.GetStartColumn(), 6);
    EXPECT_EQ(b.GetEndLine(), 4);
    EXPECT_EQ(b.GetEndColumn(), 7);
}

TEST_F(DOMParserTest, WithoutLineNumbersPositionsAreUnknown)
{
    const auto document = parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(document->GetDocumentRoot()->GetStartLine(), 0);
    EXPECT_EQ(document->GetDocumentRoot()->GetEndColumn(), 0);
}

TEST_F(DOMParserTest, PositionsAreRightAfterADeclarationOfVersion11)
{
    parser.SetEnableLineNumbersOnElements(true);
    const auto document = parser.ParseXmlString("<?xml version='1.1'?>\n<a/>", "id");
    EXPECT_EQ(document->GetDocumentRoot()->GetStartLine(), 2);
}

// Returns the text in an encoding of `width` bytes for each character. The ASCII byte is at `position`.
std::string Widen(const std::string& ascii, std::size_t width, std::size_t position)
{
    std::string bytes(ascii.size() * width, '\0');
    for (std::size_t i = 0; i < ascii.size(); ++i)
        bytes[i * width + position] = ascii[i];
    return bytes;
}

TEST_F(DOMParserTest, AnyWhiteSpaceMayFollowTheStartOfTheDeclaration)
{
    using namespace std::string_literals;
    parser.SetEnableLineNumbersOnElements(true);
    for (const std::string end : {"\n", "\r", "\r\n", " \n", "\t\r", "\n\n", "\t"}) {
        const int line = end == "\n\n" ? 3 : end == "\t" ? 1 : 2;
        const std::string rest = end + "version='1.0'?><a>\n<b/></a>";
        const std::string text = "<?xml" + rest;
        const std::string latin1 = "<?xml" + end + "version='1.0' encoding='ISO-8859-1'?><a b='\xE4'>\n<b/></a>";
        for (const std::string& bytes : {text,
                 "\xEF\xBB\xBF" + text,
                 latin1,
                 "\xFF\xFE" + Widen(text, 2, 0),
                 "\xFE\xFF" + Widen(text, 2, 1),
                 Widen(text, 2, 0),
                 Widen(text, 2, 1),
                 "\xFF\xFE\0\0"s + Widen(text, 4, 0),
                 "\0\0\xFE\xFF"s + Widen(text, 4, 3)}) {
            Utf8InputSource source(bytes, "id", false);
            const auto document = parser.ParseXmlInputSource(source, false);
            ASSERT_EQ(Errors(*document), std::vector<VString>()) << bytes;
            const DOMElement& root = *document->GetDocumentRoot();
            EXPECT_EQ(root.GetStartLine(), line) << bytes;
            EXPECT_EQ(root.GetEndLine(), line + 1) << bytes;
            EXPECT_EQ(root.GetRequiredChild("b").GetStartColumn(), 5) << bytes;
        }
    }
}

TEST_F(DOMParserTest, FaultsBehindALineEndInTheDeclarationHaveTheRightPlace)
{
    EXPECT_EQ(Errors(*parser.ParseXmlString("<?xml\nvorsion='1.0'?>\n<a/>", "id")),
        std::vector<VString>{"Fatal Error(2,8): expected version, encoding, or standalone declaration (id: id)"});
}

// Sets a statistics handler that calls `replace`, which replaces or removes the handler. Expects that the captures of
// the handler live until it returns.
void ExpectCapturesOutlive(const std::function<void(DOMParser&)>& replace)
{
    DOMParser parser;
    auto capture = std::make_shared<int>(7);
    const std::weak_ptr<int> observer = capture;
    bool wasAlive = false;
    parser.SetStatisticsEventHandler([&, capture = std::move(capture)](const DOMParserStatistics&) {
        const std::weak_ptr<int>& captured = observer;
        bool& result = wasAlive;
        replace(parser);
        result = !captured.expired();
    });
    EXPECT_FALSE(parser.ParseXmlString("<a/>", "id")->HasErrors());
    EXPECT_TRUE(wasAlive);
    EXPECT_TRUE(observer.expired());
}

TEST_F(DOMParserTest, AStatisticsHandlerMayRemoveItself)
{
    ExpectCapturesOutlive([](DOMParser& used) { used.SetStatisticsEventHandler(nullptr); });
}

TEST_F(DOMParserTest, AStatisticsHandlerMayReplaceItself)
{
    int calls = 0;
    ExpectCapturesOutlive([&](DOMParser& used) {
        used.SetStatisticsEventHandler([&](const DOMParserStatistics&) { ++calls; });
        used.ParseXmlString("<b/>", "id");
    });
    EXPECT_EQ(calls, 1);
}

TEST_F(DOMParserTest, AStatisticsHandlerMayDestroyItsParser)
{
    auto owned = std::make_unique<DOMParser>();
    owned->SetStatisticsEventHandler([&](const DOMParserStatistics&) { owned.reset(); });
    const auto document = owned->ParseXmlString("<a/>", "id");
    EXPECT_EQ(testsupport::TreeText(*document), "<a></a>");
    EXPECT_FALSE(owned);
}

TEST_F(DOMParserTest, AStatisticsHandlerKeepsItsState)
{
    std::vector<int> counts;
    parser.SetStatisticsEventHandler(
        [&counts, count = 0](const DOMParserStatistics&) mutable { counts.push_back(++count); });
    parser.ParseXmlString("<a/>", "id");
    parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(counts, (std::vector<int>{1, 2}));
}

TEST_F(DOMParserTest, RvaluesAreMovedFrom)
{
    std::string string = std::string(1000, ' ') + "<a/>";
    VString wide = "<b/>";
    std::vector<unsigned char> bytes{'<', 'c', '/', '>'};
    EXPECT_EQ(TreeText(*parser.ParseXmlString(std::move(string), "id")), "<a></a>");
    EXPECT_EQ(TreeText(*parser.ParseXmlString(std::move(wide), "id")), "<b></b>");
    EXPECT_EQ(TreeText(*parser.ParseXmlBytes(std::move(bytes))), "<c></c>");
    EXPECT_TRUE(string.empty());
    EXPECT_TRUE(wide.IsEmpty());
    EXPECT_EQ(bytes.capacity(), 0u);
}

TEST_F(DOMParserTest, LvaluesAreNotChanged)
{
    std::string string = "<a/>";
    VString wide = "<b/>";
    std::vector<unsigned char> bytes{'<', 'c', '/', '>'};
    parser.ParseXmlString(string, "id");
    parser.ParseXmlString(wide, "id");
    parser.ParseXmlBytes(bytes);
    EXPECT_EQ(string, "<a/>");
    EXPECT_EQ(wide, VString("<b/>"));
    EXPECT_EQ(bytes.size(), 4u);
}

// Calls `act` when a parser first reads the source.
struct ActingSource : StringInputSource {
    ActingSource(const char* text, std::function<void()> act)
        : StringInputSource(text, "acting", false),
          action(std::move(act))
    {}
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        if (action)
            std::exchange(action, nullptr)();
        return StringInputSource::GetXercesInputSource(mode);
    }
    std::function<void()> action;
};

TEST_F(DOMParserTest, ASourceMayUseTheParserThatReadsIt)
{
    std::string inner;
    ActingSource source("<a><b/></a>", [&] { inner = Parse("<c/>"); });
    EXPECT_EQ(TreeText(*parser.ParseXmlInputSource(source, false)), "<a><b></b></a>");
    EXPECT_EQ(inner, "<c></c>");
    EXPECT_EQ(Parse("<d/>"), "<d></d>");
}

TEST_F(DOMParserTest, ASchemaMayUseTheParserThatReadsIt)
{
    std::string inner;
    parser.AddXSDInputSource(std::make_unique<ActingSource>(Schema, [&] {
        for (int i = 0; i < 20; ++i)
            parser.AddXSDInputSource(SchemaSource("s.xsd"));
        inner = Parse("<a>1</a>");
    }));
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>1</a>", "id")), std::vector<VString>{});
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>x</a>", "id")).size(), 1u);
    EXPECT_EQ(inner, "<a>1</a>");
}

TEST_F(DOMParserTest, ParserStaysUsableAfterASchemaThrows)
{
    parser.AddXSDInputSource(std::make_unique<ActingSource>(Schema, [] { throw 7; }));
    EXPECT_THROW(parser.ParseXmlString("<a>1</a>", "id"), int);
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>1</a>", "id")), std::vector<VString>{});
}

TEST_F(DOMParserTest, StatisticsAreReportedOncePerParse)
{
    std::vector<std::string> reports;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics& statistics) {
        reports.push_back(std::to_string(statistics.sourceSize) + " " + statistics.sourceId.toStdString());
    });
    parser.ParseXmlString("  <a/>", "name");
    parser.ParseXmlBytes({'<', 'a'});
    EXPECT_EQ(reports, (std::vector<std::string>{"6 name", "2 "}));
    parser.SetStatisticsEventHandler(nullptr);
    parser.ParseXmlString("<a/>", "name");
    EXPECT_EQ(reports.size(), 2u);
}

TEST_F(DOMParserTest, SchemasValidateEveryLaterParse)
{
    EXPECT_FALSE(parser.ParseXmlString("<a>x</a>", "id")->HasErrors());
    parser.AddXSDInputSource(SchemaSource("s.xsd"));
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(Errors(*parser.ParseXmlString("<a>1</a>", "id")), std::vector<VString>{});
        EXPECT_EQ(Errors(*parser.ParseXmlString("<a>x</a>", "id")).size(), 1u);
    }
}

TEST_F(DOMParserTest, SchemaFilesAreReadForEachParse)
{
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("s.xsd", Schema);
    parser.AddXSDInputSource(std::make_unique<FileInputSource>(file));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Errors(*parser.ParseXmlString("<a>1</a>", "id")), std::vector<VString>{});
        EXPECT_EQ(Errors(*parser.ParseXmlString("<a>x</a>", "id")).size(), 1u);
    }
    folder.Write("s.xsd", VString(Schema).replace("xs:int", "xs:string").toStdString());
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>x</a>", "id")), std::vector<VString>{});
}

TEST_F(DOMParserTest, SchemaErrorsPrecedeDocumentErrors)
{
    parser.AddXSDInputSource(std::make_unique<StringInputSource>("<xs:schema", "bad.xsd", false));
    const std::vector<VString> errors = Errors(*parser.ParseXmlString("<a", "doc.xml"));
    ASSERT_GE(errors.size(), 2u);
    EXPECT_TRUE(errors.front().endsWith("(id: bad.xsd)"));
    EXPECT_TRUE(errors.back().endsWith("(id: doc.xml)"));
}

TEST_F(DOMParserTest, SchemaWithoutIdAsserts)
{
    parser.AddXSDInputSource(SchemaSource(VString()));
    const char* const file = "vancorexml\\main\\parser\\XercesXMLParser";
    const auto parse = [&] { parser.ParseXmlString("<a/>", "id"); };
    testsupport::ExpectLogicException(parse, file, 203, "!xsdSource.Id().IsEmpty()", 0xC83A570E);
}

TEST_F(DOMParserTest, ASchemaResourceValidates)
{
    const VString name = LookupResource(QtVanResourceId::FileFormatOauthConfigXsd);
    ResourceRegistrationCache::GetInstance().RegisterText(name, Schema);
    parser.AddXSDResourceId(QtVanResourceId::FileFormatOauthConfigXsd);
    ResourceRegistrationCache::GetInstance().UnregisterText(name);
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>1</a>", "id")), std::vector<VString>{});
    EXPECT_EQ(Errors(*parser.ParseXmlString("<a>x</a>", "id")).size(), 1u);
}

// Returns the metrics scopes that close while `run` runs, innermost first.
std::vector<Metrics::ScopeRecord> Measure(const std::function<void()>& run)
{
    const testsupport::MetricsCapture metrics;
    run();
    return metrics.records;
}

int Count(const std::vector<Metrics::ScopeRecord>& records, const std::string& name)
{
    return static_cast<int>(std::count_if(
        records.begin(), records.end(), [&](const Metrics::ScopeRecord& record) { return record.name == name; }));
}

TEST_F(DOMParserTest, ReusesItsDriverUnlessThereAreSchemas)
{
    const auto parse = [this] { parser.ParseXmlString("<a>1</a>", "id"); };
    parse();
    EXPECT_EQ(Count(Measure(parse), "XercesXMLParser_PrepareParserState"), 0);
    parser.AddXSDInputSource(SchemaSource("s.xsd"));
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(Count(Measure(parse), "XercesXMLParser_PrepareParserState"), 2);
}

TEST_F(DOMParserTest, RecordsSizeAndBeginningOfTheSource)
{
    const std::string text = "<a>" + std::string(200, 'x') + "</a>";
    std::string tree;
    const auto records = Measure([&] { tree = TreeText(*parser.ParseXmlString(text, "id")); });
    ASSERT_GE(records.size(), 2u);
    const Metrics::ScopeRecord& inner = records[records.size() - 2];
    const Metrics::ScopeRecord& outer = records.back();
    EXPECT_STREQ(inner.name, "DOMParser_ParseXmlInputSource");
    EXPECT_STREQ(outer.name, "DOMParser_ParseXmlString");
    using Values = std::vector<std::pair<VString, VString>>;
    EXPECT_EQ(inner.values, (Values{{"'xmls'", "207"}, {"'xmlt'", VString::fromStdString(text.substr(0, 128))}}));
    EXPECT_EQ(outer.values, (Values{{"'xmls'", "207"}}));
    EXPECT_EQ(tree, text);
}

TEST_F(DOMParserTest, RecordsMetricsScopesForBytesAndForSchemas)
{
    parser.AddXSDInputSource(SchemaSource("s.xsd"));
    const auto records = Measure([this] { parser.ParseXmlBytes({'<', 'a', '/', '>'}); });
    EXPECT_EQ(Count(records, "DOMParser_ParseXmlBytes"), 1);
    EXPECT_EQ(Count(records, "DOMParser_ParseXmlInputSource_withXSD"), 1);
    EXPECT_EQ(Count(records, "DOMParser_ParseXmlInputSource"), 0);
}

TEST_F(DOMParserTest, NonUtf8FileThrowsWhileMetricsAreRecorded)
{
    const testsupport::TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", "<a>\xE4</a>"));
    EXPECT_THROW(Measure([&] { parser.ParseXmlInputSource(source, false); }), VantoraException);
}

TEST_F(DOMParserTest, SetsTheMemoryScopeDuringAParse)
{
    std::string during;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics&) { during = MemoryScope::Current(); });
    parser.ParseXmlString("<a/>", "id");
    EXPECT_EQ(during, "DOMParser");
    EXPECT_EQ(MemoryScope::Current(), nullptr);
}

TEST_F(DOMParserTest, TracesTheParseOfAFile)
{
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a/>");
    const testsupport::ActivityCapture activities;
    parser.ParseXmlFile(file);
    const std::vector<art::ActivityRecord>& records = activities.records;
    ASSERT_GE(records.size(), 2u);
    EXPECT_STREQ(records.front().name, "InputSourceFromFileName");
    EXPECT_STREQ(records.back().name, "dom-parser.parse-xml-file");
    using Tags = std::vector<std::pair<VString, VString>>;
    EXPECT_EQ(records.back().tags, (Tags{{"filename", file}, {"source-size", "4"}}));
}

TEST_F(DOMParserTest, ParsersOnSeveralThreadsAreIndependent)
{
    std::vector<std::thread> threads;
    std::vector<std::string> trees(4);
    for (std::string& tree : trees) {
        threads.emplace_back([&tree] {
            DOMParser own;
            for (int i = 0; i < 50; ++i)
                tree = TreeText(*own.ParseXmlString("<a :b='1'>x</a>", "id"));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& tree : trees)
        EXPECT_EQ(tree, "<a :b='1'>x</a>");
}

}  // namespace
