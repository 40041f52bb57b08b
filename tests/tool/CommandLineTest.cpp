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

// Runs the tool inside a temporary folder, so that tests can pass relative file names.
class ToolInFolder {
public:
    void Write(const char* name, const std::string& text) const { m_folder.Write(name, text); }
    std::string Read(const char* name) const { return testsupport::TemporaryFolder::Read(m_folder.Path(name)); }
    std::vector<std::string> Names() const { return NamesInFolderOf(m_folder.Path("a")); }
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

TEST_P(CommandLineUsageTest, MistakeEndsWithStatus2AndAMessage)
{
    const ToolResult result = RunTool(GetParam().arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
    const bool isHelp = GetParam().arguments.empty();
    EXPECT_TRUE(isHelp || result.errors.find("\nRun 'vanxml help") != std::string::npos) << result.errors;
}

const Usage Mistakes[] = {
    {"NoCommand", {}},
    {"UnknownCommand", {"shred", "a.xml"}},
    {"UnknownOption", {"format", "a.xml", "--shiny"}},
    {"FormatWithoutFile", {"format"}},
    {"FormatOfTwoFiles", {"format", "a.xml", "b.xml"}},
    {"FormatOutputWithoutName", {"format", "a.xml", "-o"}},
    {"FormatInPlaceOfStandardInput", {"format", "-", "--in-place"}},
    {"FormatInPlaceWithOutput", {"format", "a.xml", "--in-place", "-o", "b.xml"}},
    {"FormatInPlaceWithCheck", {"format", "a.xml", "--in-place", "--check"}},
    {"FormatInPlaceWithDiff", {"format", "a.xml", "--in-place", "--diff"}},
    {"FormatCheckWithOutput", {"format", "a.xml", "--check", "-o", "b.xml"}},
    {"FormatDiffWithOutput", {"format", "a.xml", "--diff", "-o", "-"}},
    {"FormatWithZeroJobs", {"format", "a.xml", "--jobs", "0"}},
    {"CheckWithoutFile", {"check"}},
    {"CheckWithAnEmptyNameOfAList", {"check", "--files-from", ""}},
    {"CheckOfStandardInputTwice", {"check", "-", "-"}},
    {"CheckWithZeroJobs", {"check", "a.xml", "--jobs", "0"}},
    {"CheckWithNonNumericJobs", {"check", "a.xml", "--jobs", "many"}},
    {"CheckAgainstUnknownSchema", {"check", "a.xml", "--schema", "no-such-schema"}},
    {"QueryWithoutPath", {"query", "a.xml"}},
    {"QueryCountWithText", {"query", "a.xml", "a", "--count", "--text"}},
    {"QueryXmlWithAttribute", {"query", "a.xml", "a", "--xml", "--attribute", "b"}},
    {"QueryWithinAndUnderneath", {"query", "a.xml", "a", "--within", "b", "--underneath", "c"}},
    {"VersionWithoutFile", {"version"}},
    {"SchemaWithoutCommand", {"schema"}},
    {"SchemaShowWithoutName", {"schema", "show"}},
};

INSTANTIATE_TEST_SUITE_P(Mistakes, CommandLineUsageTest, testing::ValuesIn(Mistakes), NameOf);

class CommandLineHelpTest : public testing::TestWithParam<Usage> {};

TEST_P(CommandLineHelpTest, HelpIsPrintedToStandardOutput)
{
    const ToolResult result = RunTool(GetParam().arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("--help"));
    EXPECT_THAT(result.output, ContainsExpression("\nExamples?:\n  vanxml "));
}

const Usage HelpOptions[] = {
    {"Tool", {"--help"}},
    {"Edit", {"edit", "--help"}},
    {"Format", {"format", "--help"}},
    {"Check", {"check", "--help"}},
    {"Query", {"query", "--help"}},
    {"Retarget", {"retarget", "--help"}},
    {"Version", {"version", "--help"}},
    {"Schema", {"schema", "--help"}},
    {"SchemaList", {"schema", "list", "--help"}},
    {"SchemaShow", {"schema", "show", "--help"}},
    {"Help", {"help", "--help"}},
    {"HelpOfCheck", {"help", "check"}},
};

INSTANTIATE_TEST_SUITE_P(Commands, CommandLineHelpTest, testing::ValuesIn(HelpOptions), NameOf);

TEST(CommandLineTest, VersionOptionPrintsOneLine)
{
    const ToolResult result = RunTool({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, ContainsExpression("\\Avanxml [0-9]+\\.[0-9]+\\.[0-9]+\n\\z"));
}

TEST(CommandLineTest, MisspeltNamesGetASuggestion)
{
    const std::pair<std::vector<std::string>, const char*> mistakes[] = {
        {{"chek", "a.xml"}, "vanxml: there is no command 'chek'; did you mean 'check'?\nRun 'vanxml help' for more"},
        {{"--", "frmat"}, "vanxml: there is no command 'frmat'; did you mean 'format'?\n"},
        {{"shred"}, "vanxml: there is no command 'shred'; there are format, edit, check, "},
        {{"schema", "lst"}, "vanxml: 'schema' has no command 'lst'; did you mean 'list'?\nRun 'vanxml help schema' "},
        {{"schema"}, "vanxml: 'schema' needs a command: list or show\n"},
        {{"check", "--recursiv", "a"}, "vanxml: 'check' has no option '--recursiv'; did you mean '--recursive'?\n"},
        {{"format", "--inplace=yes"}, "vanxml: 'format' has no option '--inplace'; did you mean '--in-place'?\n"},
        {{"check", "a.xml", "-j", "4"}, "vanxml: 'check' has no option '-j'; did you mean '--jobs'?\n"},
        {{"--recursive"}, "vanxml: vanxml has no option '--recursive'; options stand behind the command\n"},
        {{"--trace", "t.json", "check", "a.xml"}, "vanxml: the option '--trace' stands behind the command 'check'\n"},
        {{"--text=x", "edit", "a.xml"}, "vanxml: the option '--text' stands behind the command 'edit'\n"},
        {{"check", "-a.xml"},
            "vanxml: 'check' has no option '-a.xml'; a file whose name begins with a dash stands behind '--'\n"},
        {{"version", "--", "a.xml", "--strict"}, "vanxml: 'version' does not expect the argument '--strict'\n"},
        {{"schema", "show", "a", "b"},
            "vanxml: 'show' does not expect the argument 'b'\nRun 'vanxml help schema show' "},
        {{"edit", "a.xml", "--at"}, "vanxml: --at needs a value: PATH\n"},
        {{"help", "chek"}, "vanxml: there is no command 'chek'; did you mean 'check'?\nRun 'vanxml help' for more"},
        {{"help", "check", "format"}, "vanxml: 'check' has no command 'format'\n"},
        {{"--versio"}, "vanxml: vanxml has no option '--versio'; did you mean '--version'?\n"},
        {{"query", "a.xml", "--output", "b"},
            "vanxml: 'query' has no option '--output'; it is an option of 'format', 'edit', 'check', 'retarget'\n"},
        {{"check", "a.xml", "--format", "jsn"},
            "vanxml: --format: 'jsn' is not one of text, gcc, json, sarif, html; did you mean 'json'?\n"},
        {{"check", "a.xml", "--color", "alway"},
            "vanxml: --color: 'alway' is not one of auto, always, never; did you mean 'always'?\n"},
        {{"check", "a.xml", "--color"}, "vanxml: --color needs a value: auto|always|never\n"},
        {{"check", "a.xml", "--max-errors"}, "vanxml: --max-errors needs a value: N\n"},
        {{"check", "a.xml", "--jobs", "0"}, "vanxml: --jobs: '0' is not a whole number from 1 to 1024\n"},
        {{"check", "a.xml", "--schema", "none", "--schema", "none"},
            "vanxml: --schema is given 2 times; give it once\n"},
        {{"format", "a.xml", "--encoding", "latin1"}, "vanxml: --encoding: 'latin1' is not supported; write utf-8\n"},
    };
    for (const auto& [arguments, message] : mistakes) {
        const ToolResult result = RunTool(arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_THAT(result.errors, testing::StartsWith(message));
    }
    for (const char* number : {"x", "-1", "1.5", "", "99999999999999999999999"}) {
        const ToolResult result = RunTool({"check", "a.xml", "--max-errors", number});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors,
            testing::StartsWith("vanxml: --max-errors: '" + std::string(number) +
                "' is not a whole number from 0 to 1000000000\nRun 'vanxml help check' "));
    }
}

TEST(CommandLineTest, NoArgumentsPrintTheHelpText)
{
    const ToolResult result = RunTool({});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, RunTool({"--help"}).output);
}

TEST(CommandLineTest, HelpCommandPrintsTheSameAsTheOption)
{
    EXPECT_EQ(RunTool({"help"}).output, RunTool({"--help"}).output);
    EXPECT_EQ(RunTool({"help", "query"}).output, RunTool({"query", "--help"}).output);
    EXPECT_EQ(RunTool({"help", "schema", "show"}).output, RunTool({"schema", "show", "--help"}).output);
}

TEST(CommandLineTest, FilesMayHaveNamesOfCommandsAndOptions)
{
    const ToolInFolder folder;
    for (const char* name : {"-a", "--count", "check", "++", "a.xml"})
        folder.Write(name, "<a/>");
    EXPECT_EQ(folder.Run({"format", "--no-header", "--", "--count"}).output, "<a />\n");
    EXPECT_EQ(folder.Run({"format", "--no-header", "check"}).output, "<a />\n");
    EXPECT_EQ(folder.Run({"query", "--", "--count", "a"}).output, "1:5\t/a\n");
    EXPECT_EQ(folder.Run({"check", "a.xml", "--", "-a", "--count", "check", "++"}).output, "5 documents, 0 errors\n");
}

TEST(CommandLineTest, DashAfterADoubleDashMeansStandardInput)
{
    EXPECT_EQ(RunTool({"format", "--no-header", "--", "-"}, "<a/>").output, "<a />\n");
}

TEST(CommandLineTest, FileNamesKeepUnusualFirstCharacters)
{
    // If the tool dropped the first character of a name, or read brackets as a list, each of these names would become
    // a.xml.
    std::vector<std::string> names{"\uFEFFa.xml", "[a.xml]"};
#if !defined(_WIN32)
    names.push_back("\037a.xml");  // Windows allows no control characters in names
#endif
    for (const std::string& name : names) {
        const ToolInFolder folder;
        folder.Write(name.c_str(), "<good/>");
        folder.Write("a.xml", "<neighbour/>");
        const std::vector<std::string> commands[] = {
            {"format", "--in-place", name},
            {"format", "--in-place", "--", name},
            {"format", name, "-o", name},
        };
        for (const std::vector<std::string>& arguments : commands) {
            EXPECT_EQ(folder.Run(arguments).status, 0);
            EXPECT_EQ(folder.Read("a.xml"), "<neighbour/>");
            EXPECT_EQ(folder.Read(name.c_str()), Header() + "<good />\n");
        }
        EXPECT_EQ(folder.Run({"query", name, "good"}).output, "3:9\t/good\n");
        EXPECT_EQ(folder.Run({"check", name}).output, "1 document, 0 errors\n");
        EXPECT_EQ(folder.Run({"check", "--", name}).output, "1 document, 0 errors\n");
    }
}

// Windows has neither locales nor names of bytes. WindowsTest.cpp has the tests of its names.
#if !defined(_WIN32)
TEST(CommandLineTest, FileNamesAreUtf8InAnyLocale)
{
    const testsupport::TemporaryFolder folder;
    const std::string name = folder.Write("größe-漢.xml", "<a/>").toStdString();
    EXPECT_EQ(RunProgram("env", {"LC_ALL=C", VANXML_PATH, "format", "--no-header", name}).output, "<a />\n");
}

namespace {

// Runs a shell script in which "$1" is the tool. The script makes bytes that are not UTF-8 with the printf of the
// shell.
ToolResult RunInShell(const ToolInFolder& folder, const std::string& script)
{
    return RunProgram("sh", {"-c", script, "sh", VANXML_PATH}, std::string(), std::string(), folder.Path());
}

}  // namespace

// If the invalid byte were replaced by U+FFFD, the name would be that of the neighbour.
TEST(CommandLineTest, InvalidUtf8NameIsRejectedAndNoOtherFileChanges)
{
    const ToolInFolder folder;
    const char* neighbour = "a\uFFFD.xml";
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
        EXPECT_THAT(result.errors, testing::StartsWith("vanxml: the argument '"));
        EXPECT_THAT(result.errors, testing::HasSubstr("a\\xff.xml' is not UTF-8\nRun 'vanxml help' "));
        EXPECT_EQ(folder.Read(neighbour), "<a><b/></a>");
        EXPECT_THAT(folder.Names(), testing::ElementsAre(neighbour, "good.xml"));
    }
}

TEST(CommandLineTest, MalformedUtf8SequencesAreRejected)
{
    const ToolInFolder folder;
    // A truncated character, half a surrogate pair and an overlong encoding of a slash.
    const std::pair<std::string, std::string> names[] = {
        {"gr\\303", "gr\\xc3"},
        {"\\355\\240\\200", "\\xed\\xa0\\x80"},
        {"\\300\\257", "\\xc0\\xaf"},
    };
    for (const auto& [printed, shown] : names) {
        const ToolResult result = RunInShell(folder, "\"$1\" check \"$(printf '" + printed + "')\"");
        EXPECT_THAT(result.errors, testing::StartsWith("vanxml: the argument '" + shown + "' is not UTF-8\nRun "));
    }
}
#endif
