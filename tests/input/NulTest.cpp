// Xerces treats a NUL as the end of its input. A document with text behind a NUL must be an error, because a program
// that accepts the document and writes it back would lose that text.

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

// A document with every kind of markup. The tests replace ENCODING.
const std::string RichDocument =
    "<?xml version='1.0' encoding='ENCODING' standalone='yes'?>\n"
    "<!-- c -->\n"
    "<?p i?>\n"
    "<!DOCTYPE a [\n"
    "<!-- d -->\n"
    "<?q j?>\n"
    "<!ENTITY e 'x&#65;y'>\n"
    "<!ENTITY % p '<!ENTITY f \"1\">'>\n"
    "%p;\n"
    "<!ELEMENT a (#PCDATA|b)*>\n"
    "<!ATTLIST a c CDATA 'd' e (f|g) 'f'>\n"
    "<!ELEMENT b EMPTY><!ATTLIST b x CDATA #IMPLIED>\n"
    "<!NOTATION n PUBLIC 'z'>\n"
    "]>\n"
    "<a c='1' :d='2'>text &e; &#65;<!-- c --><?r k?><![CDATA[ cd ]]><b x = \"3\" ></b></a>\n"
    "<!-- e -->\n"
    "<?s l?>\n";

std::string RichDocumentIn(const std::string& encoding)
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

// Returns `text` with a NUL in place of each "^".
std::string WithNuls(std::string text)
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

struct PositionRow {
    const char* name;
    std::string text;  // with a NUL
    const char* position;

    // Returns the only error that a parse of the text must report.
    std::vector<VString> Errors() const
    {
        return {VString("Fatal Error") + position + ": invalid character 0x0 (id: id)"};
    }
};

const PositionRow AfterElementRows[] = {
    {"at the end", WithNuls("<a/>^"), "(1,5)"},
    {"before more text", WithNuls("<a/>^<b/>more"), "(1,5)"},
    {"after line ends", WithNuls("<a/>\r\n\n ^"), "(3,2)"},
    {"after a comment", WithNuls("<a/>\n<!-- c -->^\n"), "(2,11)"},
    {"after an instruction", WithNuls("<a/><?p i?>^"), "(1,12)"},
    {"after characters of several bytes", WithNuls("<a>\xC3\xA4\xF0\x9F\x98\x80</a>^"), "(1,11)"},
};

const PositionRow DeclarationRows[] = {
    {"after the word version", WithNuls("<?xml version^='1.0'?><a/>"), "(1,14)"},
    {"within a name", WithNuls("<?xml version^other='1.0'?><a/>"), "(1,14)"},
    {"in the second line", WithNuls("<?xml version='1.0'\r\nencoding^='utf-8'?><a/>"), "(2,9)"},
};

}  // namespace

TEST(NulTest, NulAnywhereIsAFatalErrorWithAPosition)
{
    for (std::size_t i = 0; i <= RichDocumentIn("utf-8").size(); ++i) {
        SCOPED_TRACE(RichDocumentIn("utf-8").substr(0, i) + "^");
        const ParseResult result = ParseBytes(WithNul(RichDocumentIn("utf-8"), i));
        ASSERT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.fatal);
        EXPECT_TRUE(result.errors.back().startsWith("Fatal Error("));
    }
}

TEST(NulTest, NulAnywhereIsAnErrorInEveryEncoding)
{
    const auto hasErrors = [](const std::string& bytes) { return !ParseBytes(bytes).errors.empty(); };
    const auto richWithNul = [](const std::string& encoding, std::size_t position) {
        return WithNul(RichDocumentIn(encoding), std::min(position, RichDocumentIn(encoding).size()));
    };
    for (std::size_t i = 0; i <= RichDocument.size() + 2; ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE(hasErrors(richWithNul("iso-8859-1", i)));
        EXPECT_TRUE(hasErrors(testsupport::Utf16(richWithNul("utf-16", i))));
        EXPECT_TRUE(hasErrors(Utf32(richWithNul("ucs-4", i))));
        EXPECT_TRUE(hasErrors("\xEF\xBB\xBF" + richWithNul("utf-8", i)));
    }
}

TEST(NulTest, NulAnywhereIsAFatalErrorWhenValidating)
{
    for (std::size_t i = 0; i <= RichDocumentIn("utf-8").size(); ++i) {
        SCOPED_TRACE(i);
        const ParseResult result = ParseValidating(WithNul(RichDocumentIn("utf-8"), i));
        ASSERT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.fatal);
    }
}

TEST(NulTest, DocumentWithoutNulHasNoErrorsInAnyEncoding)
{
    const std::string documents[] = {
        RichDocumentIn("utf-8"),
        "\xEF\xBB\xBF" + RichDocumentIn("utf-8"),
        RichDocumentIn("iso-8859-1"),
        testsupport::Utf16(RichDocumentIn("utf-16")),
        Utf32(RichDocumentIn("ucs-4")),
    };
    for (const std::string& bytes : documents)
        EXPECT_EQ(ParseBytes(bytes).errors, std::vector<VString>{});
}

TEST(NulTest, ReportsThePositionOfANulAfterTheDocumentElement)
{
    for (const PositionRow& row : AfterElementRows) {
        SCOPED_TRACE(row.name);
        const ParseResult result = ParseBytes(row.text);
        EXPECT_EQ(result.errors, row.Errors());
        EXPECT_TRUE(result.fatal);
    }
}

TEST(NulTest, ReportsThePositionOfANulInTheXmlDeclaration)
{
    for (const PositionRow& row : DeclarationRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ParseBytes(row.text).errors, row.Errors());
        EXPECT_EQ(ParseBytes("\xEF\xBB\xBF" + row.text).errors, row.Errors());
        if (row.text.find("utf-8") == std::string::npos) {
            EXPECT_EQ(ParseBytes(testsupport::Utf16(row.text)).errors, row.Errors());
            EXPECT_EQ(ParseBytes(Utf32(row.text)).errors, row.Errors());
        }
    }
}

TEST(NulTest, BuildsTheElementsBeforeTheNul)
{
    EXPECT_EQ(ParseBytes(WithNuls("<a>1<b/></a>^<c/>")).events, (Events{"<a>", "1", "<b>", "</>", "</>"}));
}

TEST(NulTest, ParserStaysUsableAfterANul)
{
    DOMParser parser;
    EXPECT_TRUE(parser.ParseXmlString(WithNuls("<a/>^<b/>"), "id")->HasErrors());
    const auto document = parser.ParseXmlString("<c/>", "id");
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(testsupport::TreeText(*document), "<c></c>");
}

TEST(NulTest, StoppingBeforeTheNulAvoidsTheError)
{
    Utf8InputSource source(WithNuls("<a><b/></a>^"), "id", false);
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    handler->doneAfter = 1;
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
}

TEST(NulTest, EveryParseOperationReportsANul)
{
    const std::string text = WithNuls("<a/>\n^<b/>more");
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

// The NUL is in a later chunk, because the check of the encoding already refuses a NUL in the first one.
TEST(NulTest, NulInALaterChunkOfAFileIsAnError)
{
    const testsupport::TemporaryFolder folder;
    const std::string text = "<a>" + std::string(5000, 'x') + "</a>\n";
    FileInputSource source(folder.Write("a.xml", text + WithNuls("^<b/>")));
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    ASSERT_EQ(testsupport::Errors(*document).size(), 1u);
    EXPECT_TRUE(testsupport::Errors(*document)[0].startsWith("Fatal Error(2,1): invalid character 0x0"));
}

TEST(NulTest, NulAnywhereInASchemaIsAnErrorWithAPosition)
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

TEST(NulTest, NulInASchemaIsAnErrorInEveryEncoding)
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

TEST(NulTest, NulInAnIncludedSchemaIsAnError)
{
    const testsupport::TemporaryFolder folder;
    Utf8InputSource document("<a/>", "id", false);
    auto handler = std::make_shared<testsupport::RecordingHandler>();
    handler->schemaPath = folder.Write("included.xsd", WithNuls(std::string(Schema) + "\n^more"));
    const auto parser = XercesXMLParser::Create(document, handler);
    parser->LoadXSDString(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include schemaLocation='x.xsd'/></xs:schema>",
        "schema");
    EXPECT_EQ(parser->GetErrors(),
        std::vector<VString>{"Fatal Error(2,1): invalid character 0x0 (id: " + handler->schemaPath + ")"});
}

// The document is "<?xml version='1.0' encoding='ibm037'?><a/>".
TEST(NulTest, NulAnywhereInAnEbcdicDocumentIsAnError)
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

// Xerces drops an incomplete character at the end of its input. It also drops the text that it reads as the missing
// bytes of that character.
TEST(IncompleteEndTest, DocumentThatEndsWithAnIncompleteCharacterIsAnError)
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

TEST(IncompleteEndTest, BytesOfAnIncompleteCharacterAreValidInOtherEncodings)
{
    const std::string latin = "<?xml version='1.0' encoding='iso-8859-1'?><a/><!--\xE9-->";
    DOMParser parser;
    EXPECT_FALSE(parser.ParseXmlBytes({latin.begin(), latin.end()})->HasErrors());
}
