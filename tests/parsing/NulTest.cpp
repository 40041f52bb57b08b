// Xerces treats a NUL as the end of its input. A document with text behind a NUL must be an error:
// a program that accepted it and wrote it back would lose that text.

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FileInputSource.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"

namespace {

using testsupport::ParseBytes;
using testsupport::ParseResult;
using Events = std::vector<std::string>;

constexpr const char* Schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'/></xs:schema>";

// Markup of every kind.
const std::string RichDocument =
    "<?xml version='1.0' encoding='ENCODING' standalone='yes'?>\n<!-- c -->\n<?p i?>\n"
    "<!DOCTYPE a [\n<!-- d -->\n<?q j?>\n<!ENTITY e 'x&#65;y'>\n<!ENTITY % p '<!ENTITY f \"1\">'>\n%p;\n"
    "<!ELEMENT a (#PCDATA|b)*>\n<!ATTLIST a c CDATA 'd' e (f|g) 'f'>\n<!ELEMENT b EMPTY><!ATTLIST b x CDATA #IMPLIED>\n<!NOTATION n PUBLIC 'z'>\n]>\n"
    "<a c='1' :d='2'>text &e; &#65;<!-- c --><?r k?><![CDATA[ cd ]]><b x = \"3\" ></b></a>\n<!-- e -->\n<?s l?>\n";

std::string Rich(const std::string& encoding)
{
    std::string text = RichDocument;
    return text.replace(text.find("ENCODING"), 8, encoding);
}

std::string WithNul(std::string text, std::size_t position)
{
    return text.insert(position, 1, '\0');
}

std::string Utf32(const std::string& ascii)
{
    std::string bytes("\xFF\xFE\0\0", 4);
    for (const char unit : ascii)
        bytes += unit + std::string(3, '\0');
    return bytes;
}

// The text with "^" as a NUL.
std::string Nuls(std::string text)
{
    std::replace(text.begin(), text.end(), '^', '\0');
    return text;
}

ParseResult ParseValidating(const std::string& bytes)
{
    Utf8InputSource source(bytes, "id", false);
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->LoadXSDString(Schema, "schema");
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    parser->Parse();
    return {handler->events, parser->GetErrors(), parser->GetWarnings(), parser->HasFatallyErrored()};
}

std::vector<VString> SchemaErrors(const std::string& bytes)
{
    Utf8InputSource document("<a/>", "id", false);
    Utf8InputSource schema(bytes, "schema", false);
    const auto parser = XercesXMLParser::Create(document, std::make_shared<testsupport::RecordingHandler>());
    parser->LoadXSDSource(schema);
    return parser->GetErrors();
}

}  // namespace

TEST(NulTest, EveryNulOfADocumentIsAFatalErrorWithAPlace)
{
    for (std::size_t i = 0; i <= Rich("utf-8").size(); ++i) {
        SCOPED_TRACE(Rich("utf-8").substr(0, i) + "^");
        const ParseResult result = ParseBytes(WithNul(Rich("utf-8"), i));
        ASSERT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.fatal);
        EXPECT_TRUE(result.errors.back().startsWith("Fatal Error("));
    }
}

TEST(NulTest, EveryNulIsAnErrorInEveryEncoding)
{
    for (std::size_t i = 0; i <= RichDocument.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(ParseBytes(WithNul(Rich("iso-8859-1"), std::min(i, Rich("iso-8859-1").size()))).errors.empty());
        EXPECT_FALSE(
            ParseBytes(testsupport::Utf16(WithNul(Rich("utf-16"), std::min(i, Rich("utf-16").size())))).errors.empty());
        EXPECT_FALSE(ParseBytes(Utf32(WithNul(Rich("ucs-4"), std::min(i, Rich("ucs-4").size())))).errors.empty());
        EXPECT_FALSE(
            ParseBytes("\xEF\xBB\xBF" + WithNul(Rich("utf-8"), std::min(i, Rich("utf-8").size()))).errors.empty());
    }
}

TEST(NulTest, EveryNulIsAnErrorToAValidatingParser)
{
    for (std::size_t i = 0; i <= Rich("utf-8").size(); ++i) {
        SCOPED_TRACE(i);
        const ParseResult result = ParseValidating(WithNul(Rich("utf-8"), i));
        ASSERT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.fatal);
    }
}

TEST(NulTest, DocumentsWithoutNulAreGoodInEveryEncoding)
{
    for (const std::string& bytes : {Rich("utf-8"),
             "\xEF\xBB\xBF" + Rich("utf-8"),
             Rich("iso-8859-1"),
             testsupport::Utf16(Rich("utf-16")),
             Utf32(Rich("ucs-4"))})
        EXPECT_EQ(ParseBytes(bytes).errors, std::vector<VString>{});
}

TEST(NulTest, ANulBehindTheDocumentElementIsFoundWhereItStands)
{
    for (const auto& [text, place] : std::vector<std::pair<std::string, std::string>>{{"<a/>^", "(1,5)"},
             {"<a/>^<b/>more", "(1,5)"},
             {"<a/>\r\n\n ^", "(3,2)"},
             {"<a/>\n<!-- c -->^\n", "(2,11)"},
             {"<a/><?p i?>^", "(1,12)"},
             {"<a>\xC3\xA4\xF0\x9F\x98\x80</a>^", "(1,11)"}}) {
        SCOPED_TRACE(text);
        const ParseResult result = ParseBytes(Nuls(text));
        EXPECT_EQ(result.errors,
            std::vector<VString>{VString(("Fatal Error" + place + ": invalid character 0x0 (id: id)").c_str())});
        EXPECT_TRUE(result.fatal);
    }
}

TEST(NulTest, ANulInAnXmlDeclarationIsFoundWhereItStands)
{
    for (const auto& [text, place] :
        std::vector<std::pair<std::string, std::string>>{{"<?xml version^='1.0'?><a/>", "(1,14)"},
            {"<?xml version^other='1.0'?><a/>", "(1,14)"},
            {"<?xml version='1.0'\r\nencoding^='utf-8'?><a/>", "(2,9)"}}) {
        SCOPED_TRACE(text);
        const std::vector<VString> expected{
            VString(("Fatal Error" + place + ": invalid character 0x0 (id: id)").c_str())};
        EXPECT_EQ(ParseBytes(Nuls(text)).errors, expected);
        EXPECT_EQ(ParseBytes("\xEF\xBB\xBF" + Nuls(text)).errors, expected);
        if (text.find("utf-8") == std::string::npos) {
            EXPECT_EQ(ParseBytes(testsupport::Utf16(Nuls(text))).errors, expected);
            EXPECT_EQ(ParseBytes(Utf32(Nuls(text))).errors, expected);
        }
    }
}

TEST(NulTest, BuildsTheElementsBeforeTheNul)
{
    EXPECT_EQ(ParseBytes(Nuls("<a>1<b/></a>^<c/>")).events, (Events{"<a>", "1", "<b>", "</>", "</>"}));
}

TEST(NulTest, AParserGoesOnWithTheNextDocument)
{
    DOMParser parser;
    EXPECT_TRUE(parser.ParseXmlString(Nuls("<a/>^<b/>"), "id")->HasErrors());
    const auto document = parser.ParseXmlString("<c/>", "id");
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(testsupport::TreeText(*document), "<c></c>");
}

TEST(NulTest, ABuilderThatStopsBeforeTheNulDoesNotMeetIt)
{
    Utf8InputSource source(Nuls("<a><b/></a>^"), "id", false);
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    handler->doneAfter = 1;
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
}

TEST(NulTest, EveryParseOperationReportsANul)
{
    const std::string text = Nuls("<a/>\n^<b/>more");
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    const testsupport::TemporaryFolder folder;
    const VString file = folder.Write("a.xml", text);
    const VString string = VString::fromStdString(text);
    StringInputSource source(string, "id", false);

    DOMParser parser;
    EXPECT_TRUE(parser.ParseXmlBytes(bytes)->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString(text, "id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString(std::string(text), "id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString(string, "id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlFile(file)->HasErrors());
    EXPECT_TRUE(parser.ParseXmlInputSource(source, true)->HasErrors());

    const StandaloneDOMParser standalone;
    EXPECT_EQ(standalone.ParseXmlBytes(bytes).second.size(), 1u);
    EXPECT_EQ(standalone.ParseXmlString(text, "id").second.size(), 1u);
    EXPECT_EQ(standalone.ParseXmlString(string, "id").second.size(), 1u);
    EXPECT_EQ(standalone.ParseXmlFile(file).second.size(), 1u);
    EXPECT_EQ(standalone.ParseXmlInputSource(source, true).second.size(), 1u);
}

// A NUL in the first chunk already fails the check of the encoding.
TEST(NulTest, AFileReadInChunksMayHoldTheNulInALaterOne)
{
    const testsupport::TemporaryFolder folder;
    const std::string text = "<a>" + std::string(5000, 'x') + "</a>\n";
    FileInputSource source(folder.Write("a.xml", text + Nuls("^<b/>")));
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    ASSERT_EQ(testsupport::Errors(*document).size(), 1u);
    EXPECT_TRUE(testsupport::Errors(*document)[0].startsWith("Fatal Error(2,1): invalid character 0x0"));
}

TEST(NulTest, EveryNulOfASchemaIsAnErrorWithAPlace)
{
    const std::string text =
        std::string("<?xml version='1.0' encoding='utf-8'?>\n<!-- c -->") + Schema + "\n<!-- d --> ";
    ASSERT_EQ(SchemaErrors(text), std::vector<VString>{});
    for (std::size_t i = 0; i <= text.size(); ++i) {
        SCOPED_TRACE(text.substr(0, i) + "^");
        const std::vector<VString> errors = SchemaErrors(WithNul(text, i));
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_TRUE(errors[0].startsWith("Fatal Error("));
        EXPECT_TRUE(errors[0].endsWith(": invalid character 0x0 (id: schema)"));
    }
}

TEST(NulTest, EveryNulOfASchemaIsAnErrorInEveryEncoding)
{
    const std::vector<VString> expected{"Fatal Error(2,2): invalid character 0x0 (id: schema)"};
    const std::string text = std::string(Schema) + "\n ";
    const auto declared = [](const std::string& encoding) {
        return "<?xml version='1.0' encoding='" + encoding + "'?>";
    };
    EXPECT_EQ(SchemaErrors(text), std::vector<VString>{});
    EXPECT_EQ(SchemaErrors(testsupport::Utf16(text)), std::vector<VString>{});
    EXPECT_EQ(SchemaErrors(Utf32(declared("ucs-4") + text)), std::vector<VString>{});
    EXPECT_EQ(SchemaErrors(WithNul(text, text.size())), expected);
    EXPECT_EQ(SchemaErrors(declared("iso-8859-1") + WithNul(text, text.size())), expected);
    EXPECT_EQ(SchemaErrors(testsupport::Utf16(WithNul(text, text.size()))), expected);
    EXPECT_EQ(SchemaErrors(Utf32(declared("ucs-4") + WithNul(text, text.size()))), expected);
}

TEST(NulTest, ANulInAnIncludedSchemaIsAnError)
{
    const testsupport::TemporaryFolder folder;
    Utf8InputSource document("<a/>", "id", false);
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    handler->schemaPath = folder.Write("included.xsd", Nuls(std::string(Schema) + "\n^more"));
    const auto parser = XercesXMLParser::Create(document, handler);
    parser->LoadXSDString(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include schemaLocation='x.xsd'/></xs:schema>",
        "schema");
    EXPECT_EQ(parser->GetErrors(),
        std::vector<VString>{"Fatal Error(2,1): invalid character 0x0 (id: " + handler->schemaPath + ")"});
}

// <?xml version='1.0' encoding='ibm037'?><a/>
TEST(NulTest, EveryNulInAnEbcdicDocumentIsAnError)
{
    const std::string document =
        "\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95\x7E\x7D\xF1\x4B\xF0\x7D\x40\x85\x95"
        "\x83\x96\x84\x89\x95\x87\x7E\x7D\x89\x82\x94\xF0\xF3\xF7\x7D\x6F\x6E\x4C\x81\x61\x6E";
    const auto hasErrors = [](const std::string& bytes) {
        DOMParser parser;
        return parser.ParseXmlBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()))->HasErrors();
    };
    ASSERT_FALSE(hasErrors(document));
    for (std::size_t i = 0; i <= document.size(); ++i)
        EXPECT_TRUE(hasErrors(WithNul(document, i))) << i;
}

// Xerces drops the bytes of a character that the end of the input cuts off, and the text among them.
TEST(IncompleteEndTest, ADocumentThatEndsWithinACharacterIsAnError)
{
    for (const std::string end : {"\xE2\x82", "\xC3", "\xF0\x9F\x98", "\xFF<b/>", "\n\xFD<b>x"}) {
        for (const std::string document : {"<a/>", "<!DOCTYPE a [<!ENTITY e 'v'>]><a>&e;</a>"}) {
            const std::string text = document + end;
            DOMParser parser;
            EXPECT_TRUE(parser.ParseXmlString(text, "id")->HasErrors()) << text;
            EXPECT_TRUE(parser.ParseXmlBytes({text.begin(), text.end()})->HasErrors()) << text;
            EXPECT_FALSE(parser.ParseXmlString(document, "id")->HasErrors()) << text;
        }
    }
}

TEST(IncompleteEndTest, OtherEncodingsMayEndLikeThat)
{
    const std::string latin = "<?xml version='1.0' encoding='iso-8859-1'?><a/><!--\xE9-->";
    DOMParser parser;
    EXPECT_FALSE(parser.ParseXmlBytes({latin.begin(), latin.end()})->HasErrors());
}
