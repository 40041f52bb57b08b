#include "tests/tool/ToolRun.h"

using testing::HasSubstr;

namespace {

struct Usage {
    const char* name;
    std::vector<std::string> arguments;
};

std::ostream& operator<<(std::ostream& out, const Usage& usage)
{
    return out << usage.name;
}

// Runs the tool in a folder of its own, so that files can be given by any name.
class InFolder {
public:
    void Write(const char* name, const std::string& text) const { m_folder.Write(name, text); }
    std::string Read(const char* name) const { return testsupport::TemporaryFolder::Read(m_folder.Path(name)); }
    std::vector<std::string> Names() const { return NamesBeside(m_folder.Path("a")); }
    std::string Path() const { return m_folder.Path("").toStdString(); }
    ToolResult Run(const std::vector<std::string>& arguments) const
    {
        return RunProgram(VANXML_PATH, arguments, std::string(), std::string(), Path());
    }

private:
    testsupport::TemporaryFolder m_folder;
};

std::string NameOf(const testing::TestParamInfo<Usage>& info)
{
    return info.param.name;
}

}  // namespace

class CommandLineUsageTest : public testing::TestWithParam<Usage> {};

TEST_P(CommandLineUsageTest, MistakeEndsWithStatus2AndSaysSo)
{
    const ToolResult result = RunTool(GetParam().arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
}

INSTANTIATE_TEST_SUITE_P(Mistakes,
    CommandLineUsageTest,
    testing::Values(Usage{"NoCommand", {}},
        Usage{"UnknownCommand", {"shred", "a.xml"}},
        Usage{"UnknownOption", {"format", "a.xml", "--shiny"}},
        Usage{"FormatWithoutFile", {"format"}},
        Usage{"FormatOfTwoFiles", {"format", "a.xml", "b.xml"}},
        Usage{"FormatOutputWithoutName", {"format", "a.xml", "-o"}},
        Usage{"FormatInPlaceOfStandardInput", {"format", "-", "--in-place"}},
        Usage{"FormatInPlaceWithOutput", {"format", "a.xml", "--in-place", "-o", "b.xml"}},
        Usage{"CheckWithoutFile", {"check"}},
        Usage{"CheckOfStandardInputTwice", {"check", "-", "-"}},
        Usage{"CheckWithNoJobs", {"check", "a.xml", "--jobs", "0"}},
        Usage{"CheckWithJobsThatAreNoNumber", {"check", "a.xml", "--jobs", "many"}},
        Usage{"CheckAgainstUnknownSchema", {"check", "a.xml", "--schema", "no-such-schema"}},
        Usage{"QueryWithoutPath", {"query", "a.xml"}},
        Usage{"QueryCountWithText", {"query", "a.xml", "a", "--count", "--text"}},
        Usage{"QueryXmlWithAttribute", {"query", "a.xml", "a", "--xml", "--attribute", "b"}},
        Usage{"QueryWithinAndUnderneath", {"query", "a.xml", "a", "--within", "b", "--underneath", "c"}},
        Usage{"VersionWithoutFile", {"version"}},
        Usage{"SchemaWithoutCommand", {"schema"}},
        Usage{"SchemaShowWithoutName", {"schema", "show"}}),
    NameOf);

class CommandLineHelpTest : public testing::TestWithParam<Usage> {};

TEST_P(CommandLineHelpTest, GoesToStandardOutput)
{
    const ToolResult result = RunTool(GetParam().arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("--help"));
}

INSTANTIATE_TEST_SUITE_P(Helps,
    CommandLineHelpTest,
    testing::Values(Usage{"Tool", {"--help"}},
        Usage{"Format", {"format", "--help"}},
        Usage{"Check", {"check", "--help"}},
        Usage{"Query", {"query", "--help"}},
        Usage{"Version", {"version", "--help"}},
        Usage{"Schema", {"schema", "--help"}}),
    NameOf);

TEST(CommandLineTest, VersionIsOneLine)
{
    const ToolResult result = RunTool({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::MatchesRegex("vanxml [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(CommandLineTest, UnknownCommandIsNamed)
{
    EXPECT_THAT(RunTool({"frmat", "a.xml"}).errors, testing::StartsWith("vanxml: There is no command \"frmat\"\n"));
    EXPECT_THAT(RunTool({"--", "frmat"}).errors, testing::StartsWith("vanxml: There is no command \"frmat\"\n"));
}

TEST(CommandLineTest, MistakeIsNamedAsItWasTyped)
{
    EXPECT_THAT(
        RunTool({"format", "--", "a.xml", "--strict"}).errors, testing::MatchesRegex("vanxml: [^\n]* --strict\n.*"));
}

TEST(CommandLineTest, FilesMayBeCalledLikeCommandsAndOptions)
{
    const InFolder folder;
    for (const char* name : {"-a", "--count", "check", "++", "a.xml"})
        folder.Write(name, "<a/>");
    EXPECT_EQ(folder.Run({"format", "--no-header", "--", "--count"}).output, "<a />\n");
    EXPECT_EQ(folder.Run({"format", "--no-header", "check"}).output, "<a />\n");
    EXPECT_EQ(folder.Run({"query", "--", "--count", "a"}).output, "1:5\t/a\n");
    EXPECT_EQ(folder.Run({"check", "a.xml", "--", "-a", "--count", "check", "++"}).output, "5 documents, 0 errors\n");
}

TEST(CommandLineTest, StandardInputIsADashAlsoBehindTwo)
{
    EXPECT_EQ(RunTool({"format", "--no-header", "--", "-"}, "<a/>").output, "<a />\n");
}

TEST(CommandLineTest, FileNamesAreUtf8InAnyLocale)
{
    const testsupport::TemporaryFolder folder;
    const std::string name = folder.Write("größe-漢.xml", "<a/>").toStdString();
    EXPECT_EQ(RunProgram("env", {"LC_ALL=C", VANXML_PATH, "format", "--no-header", name}).output, "<a />\n");
}

TEST(CommandLineTest, NamesKeepTheirFirstCharacter)
{
    // U+001F, U+FEFF and a name that looks like a list, each beside the file of the other name.
    for (const std::string name : {"\x1F"
                                   "a.xml",
             "\xEF\xBB\xBF"
             "a.xml",
             "[a.xml]"}) {
        const InFolder folder;
        folder.Write(name.c_str(), "<good/>");
        folder.Write("a.xml", "<neighbour/>");
        const std::vector<std::string> uses[] = {
            {"format", "--in-place", name}, {"format", "--in-place", "--", name}, {"format", name, "-o", name}};
        for (const std::vector<std::string>& arguments : uses) {
            EXPECT_EQ(folder.Run(arguments).status, 0);
            EXPECT_EQ(folder.Read("a.xml"), "<neighbour/>");
            EXPECT_EQ(folder.Read(name.c_str()), Header() + "<good />\n");
        }
        EXPECT_EQ(folder.Run({"query", name, "good"}).output, "3:9\t/good\n");
        EXPECT_EQ(folder.Run({"check", name}).output, "1 document, 0 errors\n");
        EXPECT_EQ(folder.Run({"check", "--", name}).output, "1 document, 0 errors\n");
    }
}

#if !defined(_WIN32)
namespace {

// Runs the tool through a shell, which turns "\377" and the like into bytes. The tool is "$1".
ToolResult RunInShell(const InFolder& folder, const std::string& script)
{
    return RunProgram("sh", {"-c", script, "sh", VANXML_PATH}, std::string(), std::string(), folder.Path());
}

}  // namespace

// Each bad byte would become U+FFFD, which is the name of the neighbour.
TEST(CommandLineTest, NameThatIsNotUtf8IsRefusedAndNoOtherFileIsTouched)
{
    const InFolder folder;
    const char* neighbour = "a\xEF\xBF\xBD.xml";
    folder.Write(neighbour, "<a><b/></a>");
    folder.Write("good.xml", "<a><b/></a>");
    const char* const scripts[] = {
        "\"$1\" format --in-place \"$(printf 'a\\377.xml')\"",
        "\"$1\" format --in-place -- \"$(printf 'a\\377.xml')\"",
        "\"$1\" format good.xml -o \"$(printf 'a\\377.xml')\"",
        "\"$1\" format good.xml --output=\"$(printf 'a\\377.xml')\"",
        "\"$1\" check good.xml \"$(printf 'a\\377.xml')\"",
        "\"$1\" check good.xml --schema \"$(printf 'a\\377.xml')\"",
        "\"$1\" query good.xml \"$(printf 'a\\377.xml')\"",
    };
    for (const char* script : scripts) {
        const ToolResult result = RunInShell(folder, script);
        EXPECT_EQ(result.status, 2) << script;
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("vanxml: The argument \""));
        EXPECT_THAT(result.errors, testing::EndsWith("a\\xff.xml\" is not UTF-8\n"));
        EXPECT_EQ(folder.Read(neighbour), "<a><b/></a>");
        EXPECT_THAT(folder.Names(), testing::ElementsAre(neighbour, "good.xml"));
    }
}

TEST(CommandLineTest, MalformedUtf8SequencesAreRefused)
{
    const InFolder folder;
    // A truncated character, half a surrogate pair, and an overlong slash.
    const std::pair<std::string, std::string> names[] = {
        {"gr\\303", "gr\\xc3"}, {"\\355\\240\\200", "\\xed\\xa0\\x80"}, {"\\300\\257", "\\xc0\\xaf"}};
    for (const auto& [printed, shown] : names) {
        const ToolResult result = RunInShell(folder, "\"$1\" check \"$(printf '" + printed + "')\"");
        EXPECT_EQ(result.errors, "vanxml: The argument \"" + shown + "\" is not UTF-8\n");
    }
}
#endif
