// The parser must report bad documents as errors. It must not crash, hang or read other files.

#include "tests/parsing/ParsingTestSupport.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FileInputSource.h"

namespace {

using testsupport::ParseBytes;
using testsupport::ParseResult;
using testsupport::Repeat;
using Events = std::vector<std::string>;

struct FaultRow {
    const char* name;
    std::string bytes;
    const char* message;  // the start of the last error
};

const FaultRow FaultRows[] = {
    {"empty", "", "Fatal Error(1,1): invalid document structure (id: "},
    {"white space only", " \n ", "Fatal Error(2,2): invalid document structure (id: "},
    {"no element", "<!-- c -->", "Fatal Error(1,11): "},
    {"no XML", "hello", "Fatal Error(1,1): "},
    {"truncated in content", "<a><b>text", "Fatal Error(1,11): input ended before all started tags were ended"},
    {"truncated in a tag", "<a><b c='1", "Fatal Error(1,11): "},
    {"truncated in a comment", "<a><!-- c", "Fatal Error("},
    {"truncated in CDATA", "<a><![CDATA[x", "Fatal Error("},
    {"truncated in the DTD", "<!DOCTYPE a [<!ELEMENT", "Fatal Error("},
    {"NUL in text", std::string("<a>\0</a>", 8), "Fatal Error("},
    {"NUL in a tag", std::string("<a\0/>", 5), "Fatal Error("},
    {"control character", "<a>\x01</a>", "Fatal Error(1,5): invalid character 0x1"},
    {"two roots", "<a/><b/>", "Fatal Error(1,5): "},
    {"crossed tags", "<a><b></a></b>", "Fatal Error(1,9): expected end of tag 'b'"},
    {"attribute twice", "<a b='1' b='2'/>", "Fatal Error(1,12): attribute 'b' is already specified"},
    {"undefined entity", "<a>&e;</a>", "Fatal Error(1,7): entity 'e' not found"},
    {"unknown encoding", "<?xml version='1.0' encoding='klingon'?><a/>", "Fatal Error("},
    {"unknown version", "<?xml version='7.0'?><a/>", "Fatal Error("},
};

TEST(BadInputTest, FaultyDocumentsAreErrors)
{
    for (const FaultRow& row : FaultRows) {
        SCOPED_TRACE(row.name);
        const ParseResult result = ParseBytes(row.bytes, "f.xml");
        ASSERT_FALSE(result.errors.empty());
        EXPECT_TRUE(result.errors.back().startsWith(row.message)) << result.errors.back();
        EXPECT_TRUE(result.errors.back().endsWith("(id: f.xml)")) << result.errors.back();
    }
}

TEST(BadInputTest, IncompleteCharactersAreErrors)
{
    for (const char* bytes :
        {"<a>\xC3", "<a>\xC3</a>", "<a>\xE2\x82", "<a>\xF0\x9F\x98</a>", "<a b='\xC3'/>", "<\xC3"}) {
        SCOPED_TRACE(bytes);
        const ParseResult result = ParseBytes(bytes);
        EXPECT_FALSE(result.errors.empty());
    }
}

TEST(BadInputTest, EveryTruncatedDocumentIsAnError)
{
    const std::string text =
        "<?xml version='1.0'?><!DOCTYPE a [<!ENTITY e 'x'>]><a b='1'>&e;\xC3\xA4<![CDATA[y]]><!-- c --><?p i?></a>";
    for (std::size_t length = 0; length < text.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_FALSE(ParseBytes(text.substr(0, length)).errors.empty());
    }
    EXPECT_TRUE(ParseBytes(text).errors.empty());
}

TEST(BadInputTest, ExternalEntitiesAreRefused)
{
    const char* const declarations[] = {
        "<!ENTITY x SYSTEM 'file:///etc/passwd'>",
        "<!ENTITY x PUBLIC '-//P//' 'http://host/p'>",
        "<!ENTITY % x SYSTEM 'file:///etc/passwd'> %x;",
    };
    for (const char* declaration : declarations) {
        SCOPED_TRACE(declaration);
        const ParseResult result = ParseBytes(std::string("<!DOCTYPE a [\n") + declaration + "]><a>&x;</a>");
        ASSERT_EQ(result.errors.size(), 2u);
        EXPECT_EQ(result.errors[0], result.errors[1]);
        EXPECT_TRUE(result.fatal);
        EXPECT_EQ(result.events, Events{});
    }
}

TEST(BadInputTest, RefusalOfAnExternalEntityNamesPositionAndEntity)
{
    const ParseResult result = ParseBytes("<!DOCTYPE a [\n<!ENTITY x SYSTEM 'y'>]><a/>");
    ASSERT_EQ(result.errors.size(), 2u);
    EXPECT_EQ(result.errors[0], VString("XML External <!ENTITY> definitions are not allowed.(2,23) 'x'"));
}

TEST(BadInputTest, RefusalOfAnExternalEntityIsInTheLanguageOfTheSession)
{
    const testsupport::Session session("de_DE");
    const ParseResult result = ParseBytes("<!DOCTYPE a [<!ENTITY x SYSTEM 'y'>]><a/>");
    ASSERT_EQ(result.errors.size(), 2u);
    EXPECT_EQ(result.errors[1], VString("XML-Definitionen externer <!ENTITY> sind nicht zul\xC3\xA4ssig.(1,36) 'x'"));
}

TEST(BadInputTest, ExceptionOfTheSanitizerIsAnError)
{
    const ParseResult result = ParseBytes("<?p :b='1'/>");
    EXPECT_EQ(result.errors, std::vector<VString>{"Unexpected exception"});
    EXPECT_FALSE(result.fatal);
    EXPECT_EQ(result.events, Events{});
}

TEST(BadInputTest, ExternalDtdSubsetIsIgnored)
{
    const testsupport::TemporaryFolder folder;
    const std::string dtd = folder.Write("a.dtd", "<!ATTLIST a b CDATA 'loaded'>").toStdString();
    const ParseResult result = ParseBytes("<!DOCTYPE a SYSTEM '" + dtd + "'><a/>");
    EXPECT_EQ(result.errors, std::vector<VString>{});
    EXPECT_EQ(result.events, (Events{"<a>", "</>"}));
}

const VString ExpansionLimit = "parser has encountered more than '50000' entity expansions in the document; "
                               "this is the limit imposed by the application (id: id)";

TEST(BadInputTest, GeneralEntityBombIsStopped)
{
    const ParseResult result = ParseBytes(testsupport::GeneralEntityBomb(9, 10));
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(result.errors[0], VString("Fatal Error(12,8): ") + ExpansionLimit);
    EXPECT_TRUE(result.fatal);
}

TEST(BadInputTest, ParameterEntityBombIsStopped)
{
    for (const char* leaf : {"", "<!-- c -->", "<!ENTITY x 'y'>"}) {
        SCOPED_TRACE(leaf);
        const ParseResult result = ParseBytes(testsupport::ParameterEntityBomb(8, 10, leaf));
        ASSERT_EQ(result.errors.size(), 1u);
        EXPECT_EQ(result.errors[0], VString("Fatal Error(10,5): ") + ExpansionLimit);
        EXPECT_TRUE(result.fatal);
        EXPECT_EQ(result.events, Events{});
    }
}

TEST(BadInputTest, CountsRepeatedUsesOfAParameterEntity)
{
    std::string text = "<!DOCTYPE r [<!ENTITY % e0 ''><!ENTITY % e1 '";
    for (int i = 0; i < 300; ++i)
        text += "&#37;e0;";
    text += "'>";
    for (int i = 0; i < 300; ++i)
        text += "%e1;";
    const ParseResult result = ParseBytes(text + "]><r/>");
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_TRUE(result.errors[0].endsWith(ExpansionLimit));
}

// Returns a document that expands `count` parameter entities.
std::string DocumentWithExpansions(int count)
{
    std::string text = "<!DOCTYPE r [<!ENTITY % e ''>";
    for (int i = 0; i < count; ++i)
        text += "%e;";
    return text + "]><r/>";
}

TEST(BadInputTest, FiftyThousandExpansionsAreAllowed)
{
    EXPECT_EQ(ParseBytes(DocumentWithExpansions(50000)).errors, std::vector<VString>{});
    EXPECT_EQ(ParseBytes(DocumentWithExpansions(50001)).errors.size(), 1u);
}

TEST(BadInputTest, GeneralEntitiesOfTheContentDoNotCountAsParameterEntities)
{
    std::string text = "<!DOCTYPE r [<!ENTITY % p ''><!ENTITY g 'x'>";
    for (int i = 0; i < 30000; ++i)
        text += "%p;";
    text += "]><r>";
    for (int i = 0; i < 30000; ++i)
        text += "&g;";
    EXPECT_EQ(ParseBytes(text + "</r>").errors, std::vector<VString>{});
}

struct AmplifierRow {
    const char* name;
    std::string text;
    const char* excess = "'100000000' characters of entities";
};

// Returns a document with these declarations and this document element.
std::string Document(const std::string& declarations, const std::string& element)
{
    return "<!DOCTYPE r [" + declarations + "]>" + element;
}

// Returns `before`, a number and `after` for each number from 0 to count - 1.
std::string Numbered(int count, const std::string& before, const std::string& after)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += before + std::to_string(i) + after;
    return text;
}

// Declares the entities e0 to e(count - 1). The first one is `leaf`. Each further one refers ten times to the one
// before.
std::string NestedEntities(int count, const std::string& leaf)
{
    std::string text = "<!ENTITY e0 '" + leaf + "'>";
    for (int i = 1; i < count; ++i)
        text += "<!ENTITY e" + std::to_string(i) + " '" + Repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    return text;
}

const std::string Megabyte(1000000, 'x');
const std::string LongEntity = "<!ENTITY e '" + Megabyte + "'>";
const std::string LongParameterEntity = "<!ENTITY % p '<!--" + Megabyte + "-->'>";
const std::string LongDefault = "<!ATTLIST a a CDATA '" + Megabyte + "'>";

// Most of these documents expand a megabyte 120 times.
const AmplifierRow AmplifierRows[] = {
    {"text", Document(LongEntity, "<r>" + Repeat("&e;", 120) + "</r>")},
    {"nested", Document(LongEntity + "<!ENTITY f '&e;&e;&e;&e;&e;&e;'>", "<r>" + Repeat("&f;", 20) + "</r>")},
    {"a comment", Document("<!ENTITY e '<!--" + Megabyte + "-->'>", "<r>" + Repeat("&e;", 120) + "</r>")},
    {"one attribute", Document(LongEntity, "<r a='" + Repeat("&e;", 120) + "'/>")},
    {"many attributes", Document(LongEntity, "<r>" + Repeat("<a a='&e;'/>", 120) + "</r>")},
    {"the default of an attribute", Document(LongEntity + "<!ATTLIST r a CDATA '" + Repeat("&e;", 120) + "'>", "<r/>")},
    {"the default of many attributes",
        Document(LongDefault, "<r>" + Repeat("<a/>", 120) + "</r>"),
        "'80000000' characters of default attributes"},
    {"many empty defaults",
        Document("<!ATTLIST a " + Numbered(3000, " b", " CDATA ''") + ">", "<r>" + Repeat("<a/>", 3000) + "</r>"),
        "'3000000' default attributes"},
    {"a parameter entity", Document(LongParameterEntity + Repeat("%p;", 120), "<r/>")},
    {"a parameter entity, a default, an attribute and a text",
        Document(
            LongParameterEntity + Repeat("%p;", 30) + LongEntity + "<!ATTLIST r d CDATA '" + Repeat("&e;", 30) + "'>",
            "<r a='" + Repeat("&e;", 30) + "'>" + Repeat("&e;", 30) + "</r>")},
    {"blanks that an attribute drops",
        Document("<!ENTITY e '" + std::string(1000000, ' ') + "'><!ATTLIST r a NMTOKENS #IMPLIED>",
            "<r a='" + Repeat("&e;", 120) + "'/>")},
    {"a circular entity after the excess",
        Document(LongEntity + "<!ENTITY f '" + Repeat("&e;", 120) + "&g;'><!ENTITY g '&f;'>", "<r a='&g;'/>")},
    {"five levels in one attribute", Document(NestedEntities(5, std::string(50000, 'x')), "<r a='&e4;'/>")},
    {"thirty levels in an attribute", Document(NestedEntities(30, "x"), "<r a='&e29;'/>"), "'50000' entity expansions"},
    {"thirty levels in a default",
        Document(NestedEntities(30, "x") + "<!ATTLIST r a CDATA '&e29;'>", "<r/>"),
        "'50000' entity expansions"},
};

TEST(BadInputTest, ExcessiveExpansionIsStopped)
{
    for (const AmplifierRow& row : AmplifierRows) {
        SCOPED_TRACE(row.name);
        Utf8InputSource source(row.text, "id", false);
        const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::MeasuringHandler>());
        parser->Parse();
        const std::vector<VString>& errors = parser->GetErrors();
        const VString message = VString("parser has encountered more than ") + row.excess +
            " in the document; this is the limit imposed by the application (id: id)";
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_TRUE(errors[0].startsWith("Fatal Error(1,")) << errors[0];
        EXPECT_TRUE(errors[0].endsWith("): " + message)) << errors[0];
        EXPECT_TRUE(parser->HasFatallyErrored());
    }
}

struct AllowedRow {
    const char* name;
    std::string text;
    std::size_t length;  // of all texts and attribute values together
};

TEST(BadInputTest, LongTextsAndManyEntitiesAreAllowed)
{
    const std::string shortEntity = "<!ENTITY s 'xy'>";
    const std::string defaults = Numbered(1000, " attribute", " CDATA 'the default value of an attribute'");
    const AllowedRow rows[] = {
        {"one long entity among short ones",
            Document(LongEntity + shortEntity, "<r>&e;" + Repeat("&s;", 40000) + "</r>"),
            1080000},
        {"short entities in attributes", Document(shortEntity, "<r>" + Repeat("<a b='&s;'/>", 40000) + "</r>"), 80000},
        {"a long default for few elements", Document(LongDefault, "<r>" + Repeat("<a/>", 20) + "</r>"), 20000000},
        {"a long entity that is not used",
            Document(LongEntity + shortEntity, "<r>" + Repeat("<a b='&s;'/>", 200) + Repeat("&s;", 200) + "</r>"),
            800},
        {"many short entities beside a longer one",
            Document("<!ENTITY longer '" + std::string(10000, 'x') + "'>" + shortEntity,
                "<r>" + Repeat("<a b='&s;'/>", 12000) + "</r>"),
            24000},
        {"short entities in defaults beside a long one",
            Document(LongEntity + shortEntity + "<!ATTLIST r a CDATA '" + Repeat("&s;", 200) + "'>", "<r/>"),
            400},
        {"parameter entities beside a long entity",
            Document(LongEntity + "<!ENTITY % p ''>" + Repeat("%p;", 200), "<r/>"),
            0},
        {"a huge entity that is not used", Document(NestedEntities(30, "x"), "<r a='&e1;'/>"), 10},
        {"two million defaults",
            Document("<!ATTLIST a " + defaults + ">", "<r>" + Repeat("<a/>", 2000) + "</r>"),
            66000000},
        {"a default that is not used", Document(LongDefault, "<r>" + Repeat("<a a='x'/>", 120) + "</r>"), 120},
    };
    for (const AllowedRow& row : rows) {
        SCOPED_TRACE(row.name);
        Utf8InputSource source(row.text, "id", false);
        const auto handler = std::make_shared<testsupport::MeasuringHandler>();
        const auto parser = XercesXMLParser::Create(source, handler);
        parser->Parse();
        EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
        EXPECT_EQ(handler->length, row.length);
    }
}

TEST(BadInputTest, AHundredMillionCharactersOfEntitiesAreAllowed)
{
    const std::string start = Document(LongEntity + "<!ENTITY f '&e;&e;&e;&e;&e;'><!ENTITY one 'x'>",
        "<r>" + Repeat("<a b='&f;'/>", 10) + Repeat("&e;", 49) + "<a b='&e;'/>");
    Utf8InputSource source(start + "</r>", "id", false);
    const auto handler = std::make_shared<testsupport::MeasuringHandler>();
    const auto parser = XercesXMLParser::Create(source, handler);
    parser->Parse();
    EXPECT_EQ(parser->GetErrors(), std::vector<VString>{});
    EXPECT_EQ(handler->length, 100000000u);
    for (const char* more : {"&one;", "<a b='&one;'/>"})
        EXPECT_EQ(ParseBytes(start + more + "</r>").errors.size(), 1u);
}

TEST(BadInputTest, EntityBombIsStoppedInEveryEncoding)
{
    const std::string bomb = Document(NestedEntities(5, std::string(50000, 'x')), "<r a='&e4;'/>");
    const std::string documents[] = {
        testsupport::Utf16(bomb),
        "<?xml version='1.0' encoding='iso-8859-1'?><!--\xE4-->" + bomb,
        "<?xml version='1.1'?>" + bomb,
        "\xEF\xBB\xBF" + bomb,
    };
    for (const std::string& bytes : documents) {
        Utf8InputSource source(bytes, "id", false);
        const auto parser = XercesXMLParser::Create(source, std::make_shared<testsupport::MeasuringHandler>());
        parser->Parse();
        ASSERT_EQ(parser->GetErrors().size(), 1u);
        EXPECT_TRUE(parser->GetErrors()[0].contains("characters of entities")) << parser->GetErrors()[0];
    }
}

TEST(BadInputTest, ManyElementsDoNotCountAsExpansions)
{
    std::string text = "<r>";
    for (int i = 0; i < 60000; ++i)
        text += "<a/>";
    EXPECT_EQ(ParseBytes(text + "</r>").errors, std::vector<VString>{});
}

TEST(BadInputTest, RecursiveEntitiesAreAnError)
{
    EXPECT_TRUE(ParseBytes("<!DOCTYPE r [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><r>&a;</r>").fatal);
    EXPECT_TRUE(ParseBytes("<!DOCTYPE r [<!ENTITY % a '&#37;b;'><!ENTITY % b '&#37;a;'>%a;]><r/>").fatal);
}

TEST(BadInputTest, DeepDocumentIsParsed)
{
    constexpr int Depth = 1000000;
    std::string text;
    for (int i = 0; i < Depth; ++i)
        text += "<a>";
    for (int i = 0; i < Depth; ++i)
        text += "</a>";
    const std::unique_ptr<DOM> document = DOMParser().ParseXmlString(std::move(text), "deep");
    EXPECT_FALSE(document->HasErrors());
    int depth = 0;
    for (const DOMElement* element = document->GetDocumentRoot(); element; element = element->GetChild("a"))
        ++depth;
    EXPECT_EQ(depth, Depth);
}

struct BadFileTest : testing::Test {
    testsupport::TemporaryFolder folder;
    DOMParser parser;
};

TEST_F(BadFileTest, MissingFileThrows)
{
    EXPECT_THROW(parser.ParseXmlFile(folder.Path("missing.xml")), VIO::Exception);
}

TEST_F(BadFileTest, DirectoryThrows)
{
    EXPECT_THROW(parser.ParseXmlFile(folder.Path("")), VIO::Exception);
}

TEST_F(BadFileTest, NonUtf8FileThrowsUnlessItDeclaresItsEncoding)
{
    EXPECT_THROW(parser.ParseXmlFile(folder.Write("a.xml", "<a>\xE4</a>")), VIO::Exception);
    const auto document =
        parser.ParseXmlFile(folder.Write("a.xml", "<?xml version='1.0' encoding='iso-8859-1'?><a>\xE4</a>"));
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), VString("\xC3\xA4"));
}

TEST_F(BadFileTest, AnEmptyFileIsAnError)
{
    const VString file = folder.Write("a.xml", "");
    const auto document = parser.ParseXmlFile(file);
    const VString message = "Fatal Error(1,1): invalid document structure (id: " + file + ")";
    EXPECT_EQ(testsupport::Errors(*document), std::vector<VString>{message});
    EXPECT_EQ(document->GetDocumentRoot(), nullptr);
}

TEST_F(BadFileTest, EncodingErrorDuringTheParseIsAnError)
{
    FileInputSource source(folder.Write("a.xml", "<a>\xE4</a>"));
    const auto document = parser.ParseXmlInputSource(source, false);
    EXPECT_EQ(testsupport::Errors(*document), std::vector<VString>{"Unexpected exception"});
}

// Supplies its document byte by byte. The read with the number `failingRead`, counted from 0, throws.
class FailingSource : public InputSource, public IXercesInputSourceProvider {
public:
    explicit FailingSource(int failingRead) : InputSource("failing"), m_failingRead(failingRead) {}

    bool GetNextLine(std::string&) override { return false; }
    bool GetBytes(std::string& bytes, unsigned int) override
    {
        if (m_read == m_failingRead)
            throw VantoraException("cannot read", VError::ErrorInfo::NoError);
        if (m_read == static_cast<int>(m_text.size()))
            return false;
        bytes = m_text[static_cast<std::size_t>(m_read++)];
        return true;
    }
    void ResetToStart() override { m_read = 0; }
    unsigned long long Size() const override { return m_text.size(); }
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        auto all = std::make_shared<std::string>();
        std::string bytes;
        while (GetBytes(bytes, 1))
            *all += bytes;
        return XercesInputSource(all, 0, Id(), mode, TextEncoding::Detected);
    }

private:
    const std::string m_text = "<a><b/></a>";
    int m_failingRead;
    int m_read = 0;
};

TEST_F(BadFileTest, FailedReadIsAnErrorAndTheParserStaysUsable)
{
    for (int failingRead = 0; failingRead < 11; ++failingRead) {
        SCOPED_TRACE(failingRead);
        FailingSource source(failingRead);
        const auto document = parser.ParseXmlInputSource(source, false);
        EXPECT_EQ(testsupport::Errors(*document), std::vector<VString>{"Unexpected exception"});
        EXPECT_EQ(testsupport::TreeText(*document), "");
        EXPECT_EQ(testsupport::TreeText(*parser.ParseXmlString("<c/>", "id")), "<c></c>");
    }
    FailingSource whole(11);
    FailingSource sound(-1);
    EXPECT_TRUE(parser.ParseXmlInputSource(whole, false)->HasErrors());
    EXPECT_EQ(testsupport::TreeText(*parser.ParseXmlInputSource(sound, false)), "<a><b></b></a>");
}

// Returns the text in code units of `size` bytes.
std::string InUnits(const std::string& ascii, std::size_t size, bool isBigEndian)
{
    std::string bytes;
    for (const char character : ascii) {
        std::string unit(size, '\0');
        unit[isBigEndian ? size - 1 : 0] = character;
        bytes += unit;
    }
    return bytes;
}

struct UnitsRow {
    const char* name;
    std::size_t size;
    bool isBigEndian;
    std::string mark;
    std::string declaration;
};

std::ostream& operator<<(std::ostream& out, const UnitsRow& row)
{
    return out << row.name;
}

class LargeUnitsTest : public testing::TestWithParam<UnitsRow> {
protected:
    static std::string Document(const std::string& text)
    {
        const UnitsRow& row = GetParam();
        return row.mark + InUnits(row.declaration + text, row.size, row.isBigEndian);
    }
};

const UnitsRow LargeUnits[] = {
    {"Utf16LittleEndian", 2, false, "", ""},
    {"Utf16BigEndian", 2, true, "", ""},
    {"Utf16LittleEndianWithMark", 2, false, "\xFF\xFE", ""},
    {"Utf16BigEndianWithMark", 2, true, "\xFE\xFF", ""},
    {"Utf16LittleEndianDeclared", 2, false, "", "<?xml version='1.0' encoding='UTF-16'?>"},
    {"Utf16BigEndianDeclared", 2, true, "", "<?xml version='1.0' encoding='UTF-16'?>"},
    {"Utf32LittleEndianWithMark", 4, false, std::string("\xFF\xFE\0\0", 4), ""},
    {"Utf32BigEndianWithMark", 4, true, std::string("\0\0\xFE\xFF", 4), ""},
    {"Utf32LittleEndianDeclared", 4, false, "", "<?xml version='1.0' encoding='UCS-4'?>"},
    {"Utf32BigEndianDeclared", 4, true, "", "<?xml version='1.0' encoding='UCS-4'?>"},
};

// Xerces drops the bytes of an incomplete code unit.
TEST_P(LargeUnitsTest, IncompleteUnitAtTheEndIsAnErrorAtItsPlace)
{
    const std::string document = Document("\n<a>\n</a>\n");
    EXPECT_EQ(ParseBytes(document).errors, std::vector<VString>{});
    for (std::size_t count = 1; count < GetParam().size; ++count) {
        Utf8InputSource source(document + std::string(count, '<'), "id", false);
        DOMParser parser;
        const auto tree = parser.ParseXmlInputSource(source, false);
        ASSERT_EQ(testsupport::Errors(*tree).size(), 1u) << count;
        EXPECT_THAT(testsupport::Errors(*tree).front().toStdString(),
            testing::HasSubstr("invalid bytes at the end of the document"));
        ASSERT_EQ(parser.GetDiagnostics().size(), 1u);
        EXPECT_EQ(parser.GetDiagnostics()[0].code, DiagnosticCode::BadBytes);
        EXPECT_EQ(parser.GetDiagnostics()[0].start, (SourcePosition{4, 1}));
    }
}

TEST_P(LargeUnitsTest, IncompleteUnitInAnElementIsAnErrorOfThatElement)
{
    Utf8InputSource source(Document("<a>\n<b>x</b>") + std::string(1, '<'), "id", false);
    DOMParser parser;
    EXPECT_TRUE(parser.ParseXmlInputSource(source, false)->HasErrors());
    ASSERT_EQ(parser.GetDiagnostics().size(), 1u);
    EXPECT_EQ(parser.GetDiagnostics()[0].code, DiagnosticCode::UnclosedElement);
}

INSTANTIATE_TEST_SUITE_P(
    BadInputTest, LargeUnitsTest, testing::ValuesIn(LargeUnits), [](const auto& test) { return test.param.name; });

TEST(BadInputTest, IncompleteCharacterAtTheEndIsAnErrorInEncodingsOfSeveralBytes)
{
    const std::pair<std::string, std::string> characters[] = {
        {"EUC-JP", "\xB0"}, {"GB18030", "\x90"}, {"GB18030", "\x90\x30"}, {"Big5", "\xB0"}, {"EUC-KR", "\xB0"}};
    for (const auto& [encoding, start] : characters) {
        const std::string document = "<?xml version='1.0' encoding='" + encoding + "'?>\n<a>x</a>";
#if defined(_WIN32)
        // Xerces uses the converters of the system, which do not read all of these encodings.
        if (!ParseBytes(document).errors.empty())
            continue;
#endif
        EXPECT_EQ(ParseBytes(document).errors, std::vector<VString>{}) << encoding;
        Utf8InputSource source(document + start, "id", false);
        DOMParser parser;
        EXPECT_TRUE(parser.ParseXmlInputSource(source, false)->HasErrors()) << encoding;
        ASSERT_EQ(parser.GetDiagnostics().size(), 1u);
        EXPECT_EQ(parser.GetDiagnostics()[0].code, DiagnosticCode::BadBytes);
        EXPECT_EQ(parser.GetDiagnostics()[0].start, (SourcePosition{2, 9}));
    }
}

// The last byte of each of these documents is not the ">" of the root element.
TEST(BadInputTest, DocumentsThatEndWithOtherBytesAreComplete)
{
    const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>";
    std::vector<std::string> documents{latin + "\n", latin + "\t", latin + "<!--x-->"};
#if !defined(_WIN32)
    documents.push_back("<?xml version='1.0' encoding='ISO-2022-JP'?><a>x</a>\x1B(B");
#endif
    for (const std::string& document : documents)
        EXPECT_EQ(ParseBytes(document).errors, std::vector<VString>{}) << document;
}

}  // namespace
