#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::Not;
using testsupport::TemporaryFolder;

TEST(FormatCommandTest, WritesTheHeaderAndTheDocument)
{
    const TemporaryFolder folder;
    const ToolResult result = RunTool({"format", folder.Write("a.xml", "<a z='1' b='2'><c>x</c></a>").toStdString()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, Header() + "<a b='2' z='1'>\n  <c>x</c>\n</a>\n");
}

TEST(FormatCommandTest, NoHeaderOptionOmitsTheHeader)
{
    EXPECT_EQ(RunTool({"format", "-", "--no-header"}, "<a/>").output, "<a />\n");
}

TEST(FormatCommandTest, ReadsStandardInput)
{
    const ToolResult result = RunTool({"format", "-"}, "\n <a>größe</a>");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, Header() + "<a>größe</a>\n");
}

TEST(FormatCommandTest, KeepsTheEncodingOfFilesAndOfStandardInput)
{
    const std::string latin1 = "<?xml version='1.0' encoding='latin1'?><a b='&#8364;\351'>gr\366\337e</a>";
    const std::string formatted = "<?xml version='1.0' encoding='latin1' ?>\n\n<a b='&#8364;\351'>gr\366\337e</a>\n";
    const TemporaryFolder folder;
    EXPECT_EQ(RunTool({"format", "-"}, latin1).output, formatted);
    EXPECT_EQ(RunTool({"format", folder.Write("a.xml", latin1).toStdString()}).output, formatted);
}

TEST(FormatCommandTest, EncodingOptionConvertsToUtf8)
{
    const std::string latin1 = "<?xml version='1.0' encoding='latin1'?><a b='&#8364;\351'>gr\366\337e</a>";
    EXPECT_EQ(RunTool({"format", "--encoding", "utf-8", "-"}, latin1).output, Header() + "<a b='€é'>größe</a>\n");
    EXPECT_EQ(RunTool({"format", "--encoding", "utf-8", "-"}, "\xEF\xBB\xBF<a/>").output, Header() + "<a />\n");
}

// Returns the text in big-endian UTF-16, with a byte order mark.
static std::string ToUtf16(const std::u16string& text)
{
    std::string bytes = "\xFE\xFF";
    for (const char16_t unit : text)
        (bytes += static_cast<char>(unit >> 8)) += static_cast<char>(unit & 0xFF);
    return bytes;
}

TEST(FormatCommandTest, KeepsByteOrderMarks)
{
    EXPECT_EQ(RunTool({"format", "-"}, "\xEF\xBB\xBF<a/>").output, "\xEF\xBB\xBF" + Header() + "<a />\n");
    EXPECT_EQ(RunTool({"format", "-"}, ToUtf16(u"<a>€</a>")).output,
        ToUtf16(u"<?xml version='1.0' encoding='UTF-16' ?>\n\n<a>€</a>\n"));
}

TEST(FormatCommandTest, DeclaresTheEncodingTruthfully)
{
    const auto declared = [](const std::u16string& encoding) {
        return ToUtf16(u"<?xml version='1.0' encoding='" + encoding + u"' ?>\n\n<a />\n");
    };
    for (const std::u16string name : {u"utf-16", u"UTF-16BE", u"utf-16be"})
        EXPECT_EQ(RunTool({"format", "-"}, declared(name)).output, declared(name));
    for (const std::u16string name : {u"UTF-16LE", u"UTF-16X", u"UTF-8", u"UTF-32", u"ISO-8859-1"})
        EXPECT_EQ(RunTool({"format", "-"}, declared(name)).output, declared(u"UTF-16"));
}

TEST(FormatCommandTest, DocumentsThatNeedTheirDeclarationKeepIt)
{
    const std::string latin1 = "<?xml version='1.0' encoding='latin1'?><a>\366</a>";
    const ToolResult result = RunTool({"format", "--no-header", "-"}, latin1);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("use --encoding utf-8 with --no-header"));
    EXPECT_EQ(RunTool({"format", "--no-header", "-"}, "<?xml version='1.1'?><a/>").status, 2);
}

TEST(FormatCommandTest, KeepsEverything)
{
    const std::string text =
        "<?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ENTITY e 'x'>]><!--1--><?p q?>\r\n"
        "<a c='&e;' b=\"'\"><!-- 2\n 3 --><b>&e;</b><c>t <b  /> u</c><d> </d><e><![CDATA[x]]></e></a>"
        "<!--4-->\r\n";
    EXPECT_EQ(RunTool({"format", "-"}, text).output,
        "<?xml version='1.0' encoding='utf-8' standalone='yes' ?>\r\n\r\n<!DOCTYPE a [<!ENTITY e 'x'>]>\r\n<!--1-->\r\n"
        "<?p q?>\r\n<a b='&apos;' c='&e;'>\r\n  <!-- 2\n 3 -->\r\n  <b>&e;</b>\r\n  <c>t <b  /> u</c>\r\n"
        "  <d> </d>\r\n  <e><![CDATA[x]]></e>\r\n</a>\r\n<!--4-->\r\n");
}

TEST(FormatCommandTest, FormattingTheOutputAgainChangesNothing)
{
    const std::string text = "<a><b c='&#10;&lt;'/><d>some text of more than 32 units &lt; a &amp; b</d></a>";
    const std::string first = RunTool({"format", "-"}, text).output;
    EXPECT_THAT(first, HasSubstr("<![CDATA["));
    EXPECT_EQ(RunTool({"format", "-"}, first).output, first);
}

TEST(FormatCommandTest, StrictOptionEscapesLongTextInsteadOfUsingCData)
{
    const std::string text = "<a>some text of more than 32 units &lt; a &amp; b</a>";
    EXPECT_EQ(RunTool({"format", "-", "--strict", "--no-header"}, text).output, text + "\n");
}

TEST(FormatCommandTest, KeepsAttributesThatBeginWithAColon)
{
    EXPECT_EQ(RunTool({"format", "-", "--no-header"}, "<a :b='1'/>").output, "<a :b='1' />\n");
}

TEST(FormatCommandTest, WritesToANewFile)
{
    const TemporaryFolder folder;
    const VString output = folder.Path("out.xml");
    const ToolResult result = RunTool({"format", "-", "-o", output.toStdString()}, "<a/>");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(TemporaryFolder::Read(output), Header() + "<a />\n");
}

TEST(FormatCommandTest, DocumentWithErrorsIsNotWritten)
{
    const TemporaryFolder folder;
    const VString output = folder.Write("out.xml", "old");
    const ToolResult result = RunTool({"format", "-", "-o", output.toStdString()}, "<a>\n<b></a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::StartsWith("-:2:"));
    EXPECT_EQ(TemporaryFolder::Read(output), "old");
}

TEST(FormatCommandTest, OutputNameDashMeansStandardOutput)
{
    EXPECT_EQ(RunTool({"format", "-", "-o", "-"}, "<a/>").output, Header() + "<a />\n");
}

TEST(FormatCommandTest, EmptyOutputNameIsAnError)
{
    const ToolResult result = RunTool({"format", "-", "-o", ""}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"\""));
}

TEST(FormatCommandTest, OutputIntoAMissingFolderIsAnError)
{
    const TemporaryFolder folder;
    const ToolResult result = RunTool({"format", "-", "-o", folder.Path("no/out.xml").toStdString()}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write"));
}

#if defined(__linux__)
TEST(FormatCommandTest, FullDiskIsAnError)
{
    const ToolResult shortText = RunProgram(VANXML_PATH, {"format", "-"}, "<a/>", "/dev/full");
    EXPECT_EQ(shortText.status, 2);
    EXPECT_THAT(shortText.errors, HasSubstr("Cannot write standard output: No space left on device"));
    const std::string megabyte(1 << 20, 'x');
    const ToolResult longText = RunProgram(VANXML_PATH, {"format", "-"}, "<a>" + megabyte + "</a>", "/dev/full");
    EXPECT_EQ(longText.status, 2);
    EXPECT_THAT(longText.errors, HasSubstr("Cannot write standard output: No space left on device"));
}

TEST(FormatCommandTest, OutputToADeviceDoesNotReplaceIt)
{
    const ToolResult result = RunTool({"format", "-", "-o", "/dev/full"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"/dev/full\": No space left on device\n");
    EXPECT_FALSE(QFileInfo("/dev/full").isFile());
}

TEST(FormatCommandTest, ClosedPipeIsAnError)
{
    const std::string script = "(\"$1\" format - ; echo \"status $?\" >&2) | true";
    const std::string text = "<a>" + std::string(4 << 20, 'x') + "</a>";
    const ToolResult result = RunProgram("sh", {"-c", script, "sh", VANXML_PATH}, text);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write standard output: "));
    EXPECT_THAT(result.errors, HasSubstr("status 2"));
}

TEST(FormatCommandTest, ClosedStandardOutputIsAnError)
{
    const ToolResult result = RunProgram("sh", {"-c", "\"$1\" format - >&-", "sh", VANXML_PATH}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write standard output: "));
}
#endif

namespace {

struct BadInput {
    const char* name;
    std::string bytes;
    int status;
    const char* message;
};

std::ostream& operator<<(std::ostream& out, const BadInput& input)
{
    return out << input.name;
}

const char* const ExternalEntity = "<!DOCTYPE a [<!ENTITY e SYSTEM '/etc/passwd'>]><a>&e;</a>";

std::string EntityBomb()
{
    std::string text = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 12; ++i) {
        text += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            text += "&e" + std::to_string(i - 1) + ";";
        text += "'>";
    }
    return text + "]><a>&e11;</a>";
}

}  // namespace

class FormatBadInputTest : public testing::TestWithParam<BadInput> {};

TEST_P(FormatBadInputTest, EndsWithItsStatusAndMessageAndWritesNothing)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("bad.xml", GetParam().bytes).toStdString();
    for (const ToolResult& result : {RunTool({"format", file}), RunTool({"format", "-"}, GetParam().bytes)}) {
        EXPECT_EQ(result.status, GetParam().status);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr(GetParam().message));
        EXPECT_EQ(result.errors.back(), '\n');
    }
}

const BadInput BadInputs[] = {
    {"Empty", "", 1, ": error: "},
    {"OnlyWhiteSpace", " \n ", 1, ": error: "},
    {"TruncatedDocument", "<a><b>", 1, ": error: "},
    {"NotXml", "hello", 1, ": error: "},
    {"NulByte", std::string("<a>\0</a>", 8), 1, ": error: "},
    {"ExternalEntity", ExternalEntity, 1, ": error: "},
    {"EntityBomb", EntityBomb(), 1, ": error: "},
    {"TruncatedCharacter", "<a>gr\xC3", 1, ":1:6: error: the byte C3 is only the start of a character"},
    {"NotUtf8", "<a>gr\xF6\xDF</a>", 1, ":1:6: error: the byte F6 is not UTF-8"},
};

INSTANTIATE_TEST_SUITE_P(Inputs, FormatBadInputTest, testing::ValuesIn(BadInputs), [](const auto& input) {
    return std::string(input.param.name);
});

TEST(FormatCommandTest, MissingFileCannotBeRead)
{
    const ToolResult result = RunTool({"format", "no-such-file.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::StartsWith("vanxml: Cannot read \"no-such-file.xml\": "));
}

#if defined(__linux__)
TEST(FormatCommandTest, FileInALockedFolderIsReportedAsPermissionDenied)
{
    if (RunToolAsOrdinaryUser({"--version"}).status != 0)
        GTEST_SKIP() << "an ordinary user cannot run the tool";
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("locked").ToQString()));
    const std::string file = folder.Write("locked/a.xml", "<a/>").toStdString();
    const QString locked = folder.Path("locked").ToQString();
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::Permissions()));
    const ToolResult read = RunToolAsOrdinaryUser({"format", file});
    const ToolResult written = RunToolAsOrdinaryUser({"format", SAMPLES_FOLDER "/sales.kxa", "-o", file});
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    EXPECT_EQ(read.status, 2);
    EXPECT_EQ(read.errors, "vanxml: Cannot read \"" + file + "\": Permission denied\n");
    EXPECT_EQ(written.status, 2);
    EXPECT_EQ(written.errors, "vanxml: Cannot write \"" + file + "\": Permission denied\n");
}
#endif

TEST(FormatCommandTest, FolderInsteadOfAFileCannotBeRead)
{
    const TemporaryFolder folder;
    const ToolResult result = RunTool({"format", folder.Path("").toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot read"));
}

TEST(FormatCommandTest, OutputLongerThanAStringIsAnError)
{
    // Each level indents by two more blanks, so the output grows with the square of the depth.
    const int depth = 40000;
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    const ToolResult result = RunTool({"format", "-"}, text);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("too large"));
}

#if defined(__linux__)
TEST(FormatCommandTest, OutputToDevStdoutAppendsToTheRedirectedFile)
{
    const testsupport::TemporaryFolder folder;
    const std::string log = folder.Write("log", "old\n").toStdString();
    const std::string file = folder.Write("a.xml", "<a/>").toStdString();
    const std::string command = "'" VANXML_PATH "' format --no-header '" + file + "' -o /dev/stdout >> '" + log + "'";
    EXPECT_EQ(RunProgram("/bin/sh", {"-c", command}).status, 0);
    EXPECT_EQ(testsupport::TemporaryFolder::Read(VString::fromStdString(log)), "old\n<a />\n");
}
#endif
