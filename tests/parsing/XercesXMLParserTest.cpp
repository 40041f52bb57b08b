#include "vancorexml/main/parser/XercesXMLParser.h"

#include <new>
#include <stdexcept>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLURL.hpp>

#include "tests/common/SinkCaptures.h"
#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/XMLParseException.h"

namespace {

using testsupport::ParseBytes;
using testsupport::ParseResult;
using testsupport::RecordingHandler;
using Events = std::vector<std::string>;

struct EventRow {
    const char* name;
    std::string text;
    Events events;
};

const EventRow EventRows[] = {
    {"empty element", "<a/>", {"<a>", "</>"}},
    {"nested", "<a><b/></a>", {"<a>", "<b>", "</>", "</>"}},
    {"attributes", "<a b='1' c=''/>", {"<a b='1' c=''>", "</>"}},
    {"adjacent texts are one text", "<a>x&amp;y<![CDATA[<z>]]>&#65;<!-- c -->w</a>", {"<a>", "x&y<z>Aw", "</>"}},
    {"text before and after children", "<a>1<b>2</b>3</a>", {"<a>", "1", "<b>", "2", "</>", "3", "</>"}},
    {"white space between elements", "<a>\n <b/>\n</a>", {"<a>", "\n ", "<b>", "</>", "\n", "</>"}},
    {"ignorable white space is text",
        "<!DOCTYPE a [<!ELEMENT a (b)><!ELEMENT b EMPTY>]><a> <b/></a>",
        {"<a>", " ", "<b>", "</>", "</>"}},
    {"nothing outside of the topmost element is text",
        "<?xml version='1.0'?>\n <!-- c -->\n<?p i?> <!DOCTYPE a>\n\n<a>1</a>\n <!-- c --> <?p i?>\n",
        {"<a>", "1", "</>"}},
    {"prefixes stay", "<x:a xmlns:x='u' x:b='1'/>", {"<x:a x:b='1' xmlns:x='u'>", "</>"}},
    {"undeclared prefixes pass", "<x:a y:b='1'/>", {"<x:a y:b='1'>", "</>"}},
    {"leading colons are restored", "<a :b='1' c='2'/>", {"<a :b='1' c='2'>", "</>"}},
    {"leading colons in child elements",
        "<a><b :c='1'/><b :c='2'/></a>",
        {"<a>", "<b :c='1'>", "</>", "<b :c='2'>", "</>", "</>"}},
    {"element names are not restored", "<IllegalColon:a/>", {"<IllegalColon:a>", "</>"}},
    {"defaulted attributes", "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a/>", {"<a b='d'>", "</>"}},
    {"internal entities", "<!DOCTYPE a [<!ENTITY e 'x<b/>y'>]><a>&e;</a>", {"<a>", "x", "<b>", "</>", "y", "</>"}},
    {"line endings are line feeds", "<a>1\r\n2\r3</a>", {"<a>", "1\n2\n3", "</>"}},
    {"supplementary characters", "<a>\xF0\x9F\x98\x80</a>", {"<a>", "\xF0\x9F\x98\x80", "</>"}},
};

TEST(XercesXMLParserTest, PassesTheDocumentToTheHandler)
{
    for (const EventRow& row : EventRows) {
        SCOPED_TRACE(row.name);
        const ParseResult result = ParseBytes(row.text);
        EXPECT_EQ(result.events, row.events);
        EXPECT_EQ(result.errors, std::vector<VString>{});
        EXPECT_FALSE(result.fatal);
    }
}

TEST(XercesXMLParserTest, LongTextIsPassedInOnePiece)
{
    const std::string text(3000000, 'x');
    EXPECT_EQ(ParseBytes("<a>" + text + "</a>").events, (Events{"<a>", text, "</>"}));
}

// Xerces delivers the text of an entity and an empty CDATA section as separate pieces.
TEST(XercesXMLParserTest, AdjacentTextsArePassedInOnePiece)
{
    for (const std::size_t longest : {1U, 3U, 40U, 300U}) {
        std::string text = "<!DOCTYPE a [<!ENTITY e 'entity'>]><a><![CDATA[]]>";
        std::string whole;
        for (std::size_t length = 1; length <= longest; ++length) {
            const std::string piece(length, static_cast<char>('a' + length % 26));
            text += piece + "&e;<![CDATA[" + piece + "]]><![CDATA[]]>";
            whole += piece + "entity" + piece;
        }
        EXPECT_EQ(ParseBytes(text + "<b> </b></a>").events, (Events{"<a>", whole, "<b>", " ", "</>", "</>"}));
    }
}

TEST(XercesXMLParserTest, DifferentNamesAndTextsAreNotConfused)
{
    std::string text = "<a>";
    Events events{"<a>"};
    for (int i = 0; i < 5000; ++i) {
        const std::string n = std::to_string(i);
        text += "<e" + n + " a" + n + "='" + n + "'>" + n + "</e" + n + ">";
        events.insert(events.end(), {"<e" + n + " a" + n + "='" + n + "'>", n, "</>"});
    }
    events.push_back("</>");
    EXPECT_EQ(ParseBytes(text + "</a>").events, events);
}

struct EncodingRow {
    const char* name;
    std::string bytes;
    const char* text;
};

const EncodingRow EncodingRows[] = {
    {"undeclared UTF-8", "<a>\xC3\xA4</a>", "\xC3\xA4"},
    {"UTF-8 with a byte order mark", "\xEF\xBB\xBF<a>\xC3\xA4</a>", "\xC3\xA4"},
    {"declared Latin-1", "<?xml version='1.0' encoding='iso-8859-1'?><a>\xE4</a>", "\xC3\xA4"},
    {"UTF-16", testsupport::Utf16("<a>x</a>"), "x"},
    {"declared UTF-16", testsupport::Utf16("<?xml version='1.0' encoding='UTF-16'?><a>x</a>"), "x"},
};

TEST(XercesXMLParserTest, EncodingOfByteSourcesIsDetected)
{
    for (const EncodingRow& row : EncodingRows) {
        SCOPED_TRACE(row.name);
        const ParseResult result = ParseBytes(row.bytes);
        EXPECT_EQ(result.errors, std::vector<VString>{});
        EXPECT_EQ(result.events, (Events{"<a>", row.text, "</>"}));
    }
}

TEST(XercesXMLParserTest, DecodedTextIgnoresItsDeclaredEncoding)
{
    for (const char* encoding : {"iso-8859-1", "UTF-16LE", "UTF-16", "windows-1252", "UTF-8", "no-such-encoding"}) {
        SCOPED_TRACE(encoding);
        StringInputSource source(
            VString("<?xml version='1.0' encoding='") + encoding + "'?><a>\xC3\xA4</a>", "id", false);
        auto handler = std::make_shared<RecordingHandler>();
        const auto parser = XercesXMLParser::Create(source, handler);
        parser->Parse();
        EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
        EXPECT_EQ(handler->events, (Events{"<a>", "\xC3\xA4", "</>"}));
    }
}

TEST(XercesXMLParserTest, IllFormedDocumentIsAFatalErrorWithPositionAndId)
{
    const ParseResult result = ParseBytes("<a>\n<b></c>\n</a>", "file.xml");
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(result.errors[0], VString("Fatal Error(2,6): expected end of tag 'b' (id: file.xml)"));
    EXPECT_TRUE(result.fatal);
    EXPECT_EQ(result.events, (Events{"<a>", "\n", "<b>"}));
}

TEST(XercesXMLParserTest, AnyIdIsAllowed)
{
    for (const char* id : {"", "%4 %1", "a b{}<>\xC3\xA4\\:?#", "http://h/p?q", "file:///x/%zz", "C:\\x\\y.xml"}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(ParseBytes("<a/>", id).errors, std::vector<VString>{});
        const ParseResult result = ParseBytes("<a>", id);
        ASSERT_EQ(result.errors.size(), 1u);
        EXPECT_TRUE(result.errors[0].endsWith(VString(" (id: ") + id + ")"));
    }
}

TEST(XercesXMLParserTest, MetadataOfAnErrorIsTheConstantNoError)
{
    Utf8InputSource source("<a>", "id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    parser->Parse();
    EXPECT_EQ(parser->GetMetadataForErrors(), std::vector<VError::ErrorInfo>{VError::ErrorInfo::NoError});
}

TEST(XercesXMLParserTest, WarningsWithoutErrorAreNotReported)
{
    const ParseResult result = ParseBytes("<!DOCTYPE a [<!ATTLIST a b CDATA '1'><!ATTLIST a b CDATA '2'>]><a/>");
    EXPECT_EQ(result.warnings, std::vector<VString>{});
    EXPECT_EQ(result.errors, std::vector<VString>{});
}

TEST(XercesXMLParserTest, WarningsAreReportedWithAnError)
{
    const ParseResult result = ParseBytes("<!DOCTYPE a [<!ATTLIST a b CDATA '1'>\n<!ATTLIST a b CDATA '2'>]><a>");
    ASSERT_EQ(result.warnings.size(), 1u);
    EXPECT_TRUE(result.warnings[0].startsWith("Warning(2,")) << result.warnings[0];
    EXPECT_TRUE(result.warnings[0].endsWith(" (id: id)")) << result.warnings[0];
    EXPECT_EQ(result.errors.size(), 1u);
    EXPECT_TRUE(result.fatal);
}

TEST(XercesXMLParserTest, DoneHandlerStopsWithoutError)
{
    Utf8InputSource source("<a><b/><c/><d/><e/></a>", "id", false);
    auto handler = std::make_shared<RecordingHandler>();
    handler->doneAfter = 2;
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    EXPECT_GE(handler->events.size(), 2u);
    EXPECT_LE(handler->events.size(), 3u);
}

TEST(XercesXMLParserTest, ErrorsAfterAnEarlyStopAreNotReported)
{
    Utf8InputSource source("<a><b></a>", "id", false);
    auto handler = std::make_shared<RecordingHandler>();
    handler->doneAfter = 1;
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->events, Events{"<a>"});
}

TEST(XercesXMLParserTest, DoneHandlerGetsNoEventsOfTheNextParse)
{
    Utf8InputSource source("<a><b/></a>", "id", false);
    auto handler = std::make_shared<RecordingHandler>();
    handler->doneAfter = 1;
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    handler->events.clear();
    parser->Parse();
    EXPECT_EQ(handler->events, Events{});
    EXPECT_FALSE(parser->HasErrors());
}

template <typename Exception>
std::unique_ptr<XercesXMLParser> ParseThrowing(InputSource& source, Exception exception)
{
    auto parser = XercesXMLParser::Create(
        source, std::make_shared<testsupport::ThrowingHandler<Exception>>(std::move(exception)));
    parser->Parse();
    return parser;
}

TEST(XercesXMLParserTest, ParseExceptionIsRecordedTwice)
{
    Utf8InputSource source("<a><b/></a>", "id", false);
    const auto parser = ParseThrowing(source, XMLParseException("enough"));
    EXPECT_EQ(parser->GetErrors(), (std::vector<VString>{"enough", "enough"}));
    EXPECT_EQ(parser->GetMetadataForErrors().size(), 2u);
    EXPECT_TRUE(parser->HasFatallyErrored());
}

TEST(XercesXMLParserTest, OtherExceptionsAreRecordedAsUnexpected)
{
    Utf8InputSource source("<a><b/></a>", "id", false);
    for (const auto& parser : {ParseThrowing(source, std::runtime_error("x")),
             ParseThrowing(source, std::bad_alloc()),
             ParseThrowing(source, VantoraException("x", VError::ErrorInfo::NoError)),
             ParseThrowing(source, 7)}) {
        EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"Unexpected exception"});
        EXPECT_FALSE(parser->HasFatallyErrored());
    }
}

TEST(XercesXMLParserTest, OutOfMemoryIsRecordedByName)
{
    Utf8InputSource source("<a><b/></a>", "id", false);
    const auto parser = ParseThrowing(source, xercesc::OutOfMemoryException());
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"OutOfMemoryException"});
    EXPECT_EQ(parser->GetMetadataForErrors(), std::vector<VError::ErrorInfo>{VError::ErrorInfo::NoError});
    EXPECT_FALSE(parser->HasFatallyErrored());
}

TEST(XercesXMLParserTest, XercesExceptionIsRecordedWithItsMessage)
{
    struct Unreadable : Utf8InputSource {
        Unreadable() : Utf8InputSource("<a/>", "id", false) {}
        XercesInputSource GetXercesInputSource(ColonProcessingMode) override
        {
            throw xercesc::MalformedURLException(__FILE__, __LINE__, xercesc::XMLExcepts::URL_MalformedURL);
        }
    };
    Unreadable source;
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"malformed URL"});
    EXPECT_EQ(parser->GetMetadataForErrors(), std::vector<VError::ErrorInfo>{VError::ErrorInfo::NoError});
    EXPECT_FALSE(parser->HasFatallyErrored());
}

TEST(XercesXMLParserTest, DiagnosticsBeforeAnExceptionAreDropped)
{
    Utf8InputSource source("<!DOCTYPE a [<!ATTLIST a b CDATA '1'><!ATTLIST a b CDATA '2'>]><a/>", "id", false);
    const auto parser = ParseThrowing(source, XMLParseException("enough"));
    EXPECT_EQ(parser->GetErrors().size(), 2u);
    EXPECT_EQ(parser->GetWarnings(), std::vector<VString>{});
}

TEST(XercesXMLParserTest, SourceWithoutXercesViewIsAnError)
{
    struct Plain : InputSource {
        Plain() : InputSource("id") {}
        bool GetNextLine(std::string&) override { return false; }
        bool GetBytes(std::string&, unsigned int) override { return false; }
        void ResetToStart() override {}
        unsigned long long Size() const override { return 0; }
    };
    Plain source;
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{"Unexpected exception"});
}

TEST(XercesXMLParserTest, PassesContentOnlyWhileThisIsEnabled)
{
    const auto handler = std::make_shared<RecordingHandler>();
    Utf8InputSource source("<a b='1'>x<c/></a>", "id", false);
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->SetEnableContent(false);
    parser->Parse();
    EXPECT_EQ(handler->events, Events{});
    source.ResetToStart();
    parser->SetEnableContent(true);
    parser->Parse();
    EXPECT_EQ(handler->events, (Events{"<a b='1'>", "x", "<c>", "</>", "</>"}));
}

TEST(XercesXMLParserTest, ParsingWithOldErrorsAsserts)
{
    // Parse() clears the errors, so only a derived class can reach the assertion.
    struct Exposed : XercesXMLParser {
        using XercesXMLParser::XercesXMLParser;
        static void CallDoParse(XercesXMLParser& parser) { (parser.*(&Exposed::DoParse))(); }
        static void CallError(XercesXMLParser& parser)
        {
            (parser.*(&Exposed::Error))("bad", VError::ErrorInfo::NoError);
        }
    };
    Utf8InputSource source("<a/>", "id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    Exposed::CallError(*parser);
    const char* const file = "vancorexml\\main\\parser\\XercesXMLParser";
    const auto parse = [&] { Exposed::CallDoParse(*parser); };
    testsupport::ExpectLogicException(parse, file, 231, "HasErrors() == false", 0xE60C9000);
}

// Returns true if GetCurrentLocation leaves both arguments unchanged.
bool HasNoPosition(SAXFileLocation& parser)
{
    int line = -1;
    int column = -2;
    parser.GetCurrentLocation(line, column);
    return line == -1 && column == -2;
}

TEST(XercesXMLParserTest, KnowsItsPositionDuringTheParse)
{
    struct Locating : RecordingHandler {
        void StartElement(const VString& name, const AttributeMap& attributes) override
        {
            int line = 0;
            int column = 0;
            parser->GetCurrentLocation(line, column);
            positions.push_back(name.toStdString() + " " + std::to_string(line) + "," + std::to_string(column));
            RecordingHandler::StartElement(name, attributes);
        }
        SAXFileLocation* parser = nullptr;
        Events positions;
    };
    Utf8InputSource source("<a>\n  <b\n/></a>", "id", false);
    auto handler = std::make_shared<Locating>();
    const auto parser = XercesXMLParser::Create(source, handler);
    handler->parser = parser.get();
    parser->Parse();
    EXPECT_EQ(handler->positions, (Events{"a 1,4", "b 3,3"}));
}

TEST(XercesXMLParserTest, HasNoPositionBeforeAParse)
{
    Utf8InputSource source("<a/>", "id", false);
    EXPECT_TRUE(HasNoPosition(*XercesXMLParser::Create(source, std::make_shared<RecordingHandler>())));
}

struct EndRow {
    const char* name;
    std::string text;
    std::size_t doneAfter;  // IsDone() is true after this number of events; 0 for never
};

const EndRow EndRows[] = {
    {"a normal end", "<a>\n<b/></a>", 0},
    {"a stop by the builder", "<a>\n<b/><c/></a>", 1},
    {"a stop at the end", "<a/>", 2},
    {"a fault", "<a>\n<b></a>", 0},
    {"an entity that is refused", "<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]><a/>", 0},
    {"no text", "", 0},
    {"an encoding that is not known", "<?xml version='1.0' encoding='none'?><a/>", 0},
    {"a NUL", std::string("<a/>\0", 5), 0},
    {"XML 1.1", "<?xml version='1.1'?><a/>", 0},
};

TEST(XercesXMLParserTest, HasNoPositionAfterAParse)
{
    for (const EndRow& row : EndRows) {
        SCOPED_TRACE(row.name);
        Utf8InputSource source(row.text, "id", false);
        auto handler = std::make_shared<RecordingHandler>();
        handler->doneAfter = row.doneAfter;
        const auto parser = XercesXMLParser::Create(source, handler);
        for (int round = 0; round < 2; ++round) {
            parser->Parse();
            EXPECT_TRUE(HasNoPosition(*parser));
        }
        parser->Reload(source, handler);
        EXPECT_TRUE(HasNoPosition(*parser));
    }
}

TEST(XercesXMLParserTest, HasNoPositionAfterACallbackThatThrows)
{
    Utf8InputSource source("<a><b/></a>", "id", false);
    EXPECT_TRUE(HasNoPosition(*ParseThrowing(source, std::runtime_error("x"))));
    EXPECT_TRUE(HasNoPosition(*ParseThrowing(source, XMLParseException("x"))));
}

// The driver reads the input before the parse begins. So it has no position yet, and must not return that of the last
// parse.
TEST(XercesXMLParserTest, HasNoPositionWhileTheInputIsRead)
{
    struct Asking : Utf8InputSource {
        Asking() : Utf8InputSource("<a/>", "id", false) {}
        XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
        {
            EXPECT_TRUE(HasNoPosition(*parser));
            return Utf8InputSource::GetXercesInputSource(mode);
        }
        SAXFileLocation* parser = nullptr;
    };
    Asking source;
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingHandler>());
    source.parser = parser.get();
    parser->Parse();
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
}

TEST(XercesXMLParserTest, ReloadParsesAnotherDocumentWithAnotherHandler)
{
    Utf8InputSource source("<a/>", "id", false);
    auto first = std::make_shared<RecordingHandler>();
    const auto parser = XercesXMLParser::Create(source, first);
    parser->Parse();
    Utf8InputSource other("<b/>", "id", false);
    auto second = std::make_shared<RecordingHandler>();
    parser->Reload(other, second);
    EXPECT_EQ(first.use_count(), 1);
    parser->Parse();
    EXPECT_EQ(first->events, (Events{"<a>", "</>"}));
    EXPECT_EQ(second->events, (Events{"<b>", "</>"}));
}

TEST(XercesXMLParserTest, ReleasesItsHandlerInItsDestructor)
{
    Utf8InputSource source("<a/>", "id", false);
    auto handler = std::make_shared<RecordingHandler>();
    {
        const auto parser = XercesXMLParser::Create(source, handler);
        EXPECT_GT(handler.use_count(), 1);
    }
    EXPECT_EQ(handler.use_count(), 1);
}

TEST(XercesXMLParserTest, RecordsMetricsScopesForItsSteps)
{
    const testsupport::MetricsCapture metrics;
    ParseBytes("<a/>");
    EXPECT_THAT(metrics.Names(),
        testing::IsSupersetOf({"XercesXMLParser_PrepareParserState", "XercesXMLParser_DoXercesParse"}));
}

}  // namespace
