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

TEST_P(EscapeControlCharactersTest, ShowsWhatATerminalWouldActUpon)
{
    EXPECT_EQ(EscapeControlCharacters(GetParam().text), GetParam().escaped);
}

INSTANTIATE_TEST_SUITE_P(Texts,
    EscapeControlCharactersTest,
    testing::Values(EscapedText{"Empty", "", ""},
        EscapedText{"PlainText", "größe 漢 \xF0\x9F\x98\x80 'a'", "größe 漢 \xF0\x9F\x98\x80 'a'"},
        EscapedText{"Backslashes", "C:\\new\\table.xml", "C:\\new\\table.xml"},
        EscapedText{"LineEnds", "a\r\nb\nc", "a\\r\\nb\\nc"},
        EscapedText{"Tab", "a\tb", "a\\tb"},
        EscapedText{"EscapeSequence", "\x1B[31mred", "\\x1b[31mred"},
        EscapedText{"Bell", "\x07", "\\x07"},
        EscapedText{"Delete", "\x7F", "\\x7f"},
        EscapedText{"FirstAndLastOfC1", "\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA0", "\\u0080\\u009b\\u009f\xC2\xA0"},
        EscapedText{"LineAndParagraphSeparator", "\xE2\x80\xA8\xE2\x80\xA9", "\\u2028\\u2029"},
        EscapedText{"RightToLeftOverride",
            "a\xE2\x80\xAE"
            "b",
            "a\\u202eb"},
        EscapedText{"Isolate", "\xE2\x81\xA6\xE2\x81\xA9", "\\u2066\\u2069"},
        EscapedText{"DirectionMarks", "\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F", "\\u061c\\u200e\\u200f"},
        EscapedText{"ByteThatIsNotUtf8",
            "a\xFF"
            "b",
            "a\\xffb"},
        EscapedText{"CutCharacter", "\xE6\xBC", "\\xe6\\xbc"}),
    [](const auto& test) { return test.param.name; });

TEST(EscapeControlCharactersTest, ShowsANul)
{
    EXPECT_EQ(EscapeControlCharacters(std::string_view("a\0b", 3)), "a\\x00b");
}

namespace {

// True when the lines hold no control character but the line feeds at their ends.
bool IsSafe(const std::string& lines)
{
    return std::none_of(lines.begin(), lines.end(), [](char c) {
        return (static_cast<unsigned char>(c) < 0x20 && c != '\n') || c == 0x7F;
    });
}

std::ptrdiff_t CountLines(const std::string& lines)
{
    return std::count(lines.begin(), lines.end(), '\n');
}

const std::string schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>";
const std::string schema = schemaStart +
    "<xs:element name='a'><xs:complexType><xs:attribute name='n' type='xs:int'/></xs:complexType></xs:element>"
    "</xs:schema>";

}  // namespace

TEST(ErrorLinesTest, ControlCharactersOfTheDocumentAreShownEscaped)
{
    const TemporaryFolder folder;
    const std::string schemaFile = folder.Write("a.xsd", schema).toStdString();
    const std::string document = "<?xml version='1.1'?><a n='&#x1b;[31m&#x9b;x'/>";
    const ToolResult result = RunTool({"check", "--schema", schemaFile, "-"}, document);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("'\\x1b[31m\\u009bx'"));
    EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
    EXPECT_EQ(CountLines(result.errors), 1);
}

TEST(ErrorLinesTest, FileNameStaysInItsLineInEveryCommand)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a\n\x1B[31mb\\c.kxa", "<analysis>").toStdString();
    const std::string shown = folder.Path("a\\n\\x1b[31mb\\c.kxa").toStdString();
    const std::string missing = folder.Path("no\n\x1B").toStdString();
    const std::string shownMissing = folder.Path("no\\n\\x1b").toStdString();
    const std::vector<std::string> uses[] = {
        {"check", file},
        {"check", file, "--schema", "auto"},
        {"format", file},
        {"query", file, "a"},
        {"version", file},
    };
    for (const std::vector<std::string>& arguments : uses) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, StartsWith(shown + ": "));
        EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
        EXPECT_EQ(CountLines(result.errors), 1);
    }
    const std::vector<std::string> usesOfMissing[] = {{"check", missing},
        {"format", missing},
        {"format", SAMPLES_FOLDER "/sales.kxa", "-o", missing + "/a"},
        {"check", "--schema", missing, file},
        {"schema", "show", missing}};
    for (const std::vector<std::string>& arguments : usesOfMissing) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, StartsWith("vanxml: "));
        EXPECT_THAT(result.errors, HasSubstr(shownMissing));
        EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
        EXPECT_EQ(CountLines(result.errors), 1);
    }
}

TEST(ErrorLinesTest, NamesOfSchemasAndSchemasThatTheyIncludeStayInTheirLine)
{
    const TemporaryFolder folder;
    const std::string includes =
        "<xs:include schemaLocation='gone%0A%1B.xsd'/><xs:include schemaLocation='gone&#10;&#9;.xsd'/>";
    const std::string file = folder.Write("s\n\x1B.xsd", schemaStart + includes + "</xs:schema>").toStdString();
    const ToolResult result = RunTool({"check", "--schema", file, "-"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, StartsWith(folder.Path("s\\n\\x1b.xsd").toStdString() + ": "));
    EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
    EXPECT_EQ(CountLines(result.errors), 2);
}

TEST(ErrorLinesTest, MistakesInTheCommandLineStayInTheirLine)
{
    const std::vector<std::string> mistakes[] = {{"sh\nred\x1B"},
        {"format", "a.xml", "--sh\ny\x1B"},
        {"format", "a.xml", "x\n\x1B"},
        {"check", "a.xml", "--jobs", "1\n\x1B"}};
    for (const std::vector<std::string>& arguments : mistakes) {
        const ToolResult result = RunTool(arguments);
        EXPECT_THAT(result.errors, HasSubstr("\\n"));
        EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
        EXPECT_EQ(CountLines(result.errors), 2) << result.errors;
    }
}

#if defined(__linux__)
// The library logs that a file cannot be opened only for files of 1 GiB and more.
TEST(ErrorLinesTest, LogMessagesStayInTheirLine)
{
    if (RunToolAsOrdinaryUser({"--version"}).status != 0)
        GTEST_SKIP() << "an ordinary user cannot run the tool";
    const TemporaryFolder folder;
    const QString folderName = folder.Path("").ToQString();
    ASSERT_TRUE(QFile::setPermissions(folderName, QFile::permissions(folderName) | QFile::ReadOther | QFile::ExeOther));
    QFile file(folder.Write("a\n\x1B.xml", "").ToQString());
    ASSERT_TRUE(file.resize(qint64{1} << 30));
    ASSERT_TRUE(file.setPermissions(QFile::Permissions()));
    const ToolResult result = RunToolAsOrdinaryUser({"check", file.fileName().toStdString()});
    EXPECT_THAT(result.errors, StartsWith("vanxml: FileInputSource::"));
    EXPECT_TRUE(IsSafe(result.errors)) << result.errors;
    EXPECT_EQ(CountLines(result.errors), 2);
}
#endif

TEST(ErrorLinesTest, PathsOfAQueryShowMarksOfDirection)
{
    // XML 1.1 allows the Arabic letter mark in names.
    const ToolResult result = RunTool({"query", "-", "//*"},
        "<?xml version='1.1'?><a\xD8\x9C"
        "b/>");
    EXPECT_EQ(result.output, "1:28\t/a\\u061cb\n");
}

TEST(ErrorLinesTest, TextsAndValuesArePrintedAsTheyAre)
{
    const std::string document = "<?xml version='1.1'?><a n='\xD8\x9C&#x1b;'>&#x9b;</a>";
    EXPECT_EQ(RunTool({"query", "-", "a", "--attribute", "n"}, document).output, "\xD8\x9C\x1B\n");
    EXPECT_EQ(RunTool({"query", "-", "a", "--text"}, document).output, "\xC2\x9B\n");
}
