#include "vanxml/ErrorLines.h"

#include <algorithm>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

struct EscapedText {
    const char* name;
    const char* text;
    const char* escaped;
};

std::ostream& operator<<(std::ostream& out, const EscapedText& text)
{
    return out << text.name;
}

}  // namespace

class EscapeControlCharactersTest : public testing::TestWithParam<EscapedText> {};

TEST_P(EscapeControlCharactersTest, EscapesControlAndDirectionCharacters)
{
    EXPECT_EQ(EscapeControlCharacters(GetParam().text), GetParam().escaped);
}

const EscapedText EscapedTexts[] = {
    {"Empty", "", ""},
    {"PlainText", "größe 漢 😀 'a'", "größe 漢 😀 'a'"},
    {"Backslashes", "C:\\new\\table.xml", "C:\\new\\table.xml"},
    {"LineEnds", "a\r\nb\nc", "a\\r\\nb\\nc"},
    {"Tab", "a\tb", "a\\tb"},
    {"EscapeSequence", "\x1B[31mred", "\\x1b[31mred"},
    {"Bell", "\x07", "\\x07"},
    {"Delete", "\x7F", "\\x7f"},
    {"FirstAndLastC1Control", "\302\200\302\233\302\237\u00A0", "\\u0080\\u009b\\u009f\u00A0"},
    {"LineAndParagraphSeparator", "\u2028\u2029", "\\u2028\\u2029"},
    {"RightToLeftOverride", "a\u202Eb", "a\\u202eb"},
    {"DirectionalIsolates", "\u2066\u2069", "\\u2066\\u2069"},
    {"DirectionalMarks", "\u061C\u200E\u200F", "\\u061c\\u200e\\u200f"},
    {"InvalidUtf8Byte", "a\377b", "a\\xffb"},
    {"TruncatedCharacter", "\xE6\xBC", "\\xe6\\xbc"},
};

INSTANTIATE_TEST_SUITE_P(Texts, EscapeControlCharactersTest, testing::ValuesIn(EscapedTexts), [](const auto& test) {
    return test.param.name;
});

TEST(EscapeControlCharactersTest, EscapesANul)
{
    EXPECT_EQ(EscapeControlCharacters(std::string_view("a\0b", 3)), "a\\x00b");
}

namespace {

bool IsControl(char c)
{
    return (static_cast<unsigned char>(c) < 0x20 && c != '\n') || c == 0x7F;
}

// The errors fill `count` lines and contain no control characters but line feeds.
void ExpectSafeLines(const std::string& errors, int count)
{
    EXPECT_TRUE(std::none_of(errors.begin(), errors.end(), IsControl)) << errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), count) << errors;
}

const std::string schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>";
const std::string schema = schemaStart +
    "<xs:element name='a'><xs:complexType><xs:attribute name='n' type='xs:int'/></xs:complexType></xs:element>"
    "</xs:schema>";

}  // namespace

TEST(ErrorLinesTest, ControlCharactersOfADocumentAreEscaped)
{
    const TemporaryFolder folder;
    const std::string schemaFile = folder.Write("a.xsd", schema).toStdString();
    const std::string document = "<?xml version='1.1'?><a n='&#x1b;[31m&#x9b;x'/>";
    const ToolResult result = RunTool({"check", "--schema", schemaFile, "-"}, document);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("'\\x1b[31m\\u009bx'"));
    ExpectSafeLines(FirstLines(result.errors), 1);
    ExpectSafeLines(result.errors, 3);
}

TEST(ErrorLinesTest, EveryCommandEscapesFileNames)
{
    const TemporaryFolder folder;
#if defined(_WIN32)
    // A name on Windows cannot contain ASCII control characters and backslashes.
    const std::string file = folder.Write("a\u0085\u202Eb.kxa", "<analysis>").toStdString();
    const std::string shown = folder.Path("a\\u0085\\u202eb.kxa").toStdString();
#else
    const std::string file = folder.Write("a\n\x1B[31mb\\c.kxa", "<analysis>").toStdString();
    const std::string shown = folder.Path("a\\n\\x1b[31mb\\c.kxa").toStdString();
#endif
    const std::string missing = folder.Path("no\n\x1B").toStdString();
    const std::string shownMissing = folder.Path("no\\n\\x1b").toStdString();
    const std::vector<std::string> commands[] = {
        {"check", file},
        {"check", file, "--schema", "none", "--format", "gcc"},
        {"format", file},
        {"query", file, "a"},
        {"version", file},
    };
    for (const std::vector<std::string>& arguments : commands) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, StartsWith(shown + ":"));
        ExpectSafeLines(FirstLines(result.errors), 1);
    }
    const std::vector<std::string> commandsWithMissingFile[] = {
        {"check", missing},
        {"format", missing},
        {"format", SAMPLES_FOLDER "/sales.kxa", "-o", missing + "/a"},
        {"check", "--schema", missing, file},
        {"schema", "show", missing},
    };
    for (const std::vector<std::string>& arguments : commandsWithMissingFile) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, StartsWith("vanxml: "));
        EXPECT_THAT(result.errors, HasSubstr(shownMissing));
        const bool namesHelp = result.errors.find("\nRun 'vanxml help ") != std::string::npos;
        ExpectSafeLines(result.errors, namesHelp ? 2 : 1);
    }
}

TEST(ErrorLinesTest, NamesOfSchemasAndOfIncludedSchemasAreEscaped)
{
    const TemporaryFolder folder;
    const std::string includes =
        "<xs:include schemaLocation='gone%0A%1B.xsd'/><xs:include schemaLocation='gone&#10;&#9;.xsd'/>";
#if defined(_WIN32)
    const VString name = "s\u0085.xsd";
    const VString shown = "s\\u0085.xsd";
#else
    const VString name = "s\n\x1B.xsd";
    const VString shown = "s\\n\\x1b.xsd";
#endif
    const std::string file = folder.Write(name, schemaStart + includes + "</xs:schema>").toStdString();
    const ToolResult result = RunTool({"check", "--schema", file, "-"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(folder.Path(shown).toStdString() + ":1:"));
    ExpectSafeLines(FirstLines(result.errors), 2);
}

TEST(ErrorLinesTest, CommandLineErrorsAreEscaped)
{
    const std::vector<std::string> mistakes[] = {
        {"sh\nred\x1B"},
        {"format", "a.xml", "--sh\ny\x1B"},
        {"version", "a.xml", "x\n\x1B"},
        {"check", "a.xml", "--jobs", "1\n\x1B"},
    };
    for (const std::vector<std::string>& arguments : mistakes) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, HasSubstr("\\n"));
        ExpectSafeLines(result.errors, 2);
    }
}

TEST(ErrorLinesTest, QueryEscapesDirectionalMarksInPaths)
{
    // XML 1.1 allows the Arabic letter mark in names.
    const ToolResult result = RunTool({"query", "-", "//*"}, "<?xml version='1.1'?><a\u061Cb/>");
    EXPECT_EQ(result.output, "1:28\t/a\\u061cb\n");
}

TEST(ErrorLinesTest, QueryPrintsTextsAndAttributeValuesUnescaped)
{
    const std::string document = "<?xml version='1.1'?><a n='\u061C&#x1b;'>&#x9b;</a>";
    EXPECT_EQ(RunTool({"query", "-", "a", "--attribute", "n"}, document).output, "\u061C\x1B\n");
    EXPECT_EQ(RunTool({"query", "-", "a", "--text"}, document).output, "\302\233\n");
}
