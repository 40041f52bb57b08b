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

INSTANTIATE_TEST_SUITE_P(Mistakes, CommandLineUsageTest, testing::Values(
    Usage{"NoCommand", {}},
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
    Usage{"SchemaShowWithoutName", {"schema", "show"}}), NameOf);

class CommandLineHelpTest : public testing::TestWithParam<Usage> {};

TEST_P(CommandLineHelpTest, GoesToStandardOutput)
{
    const ToolResult result = RunTool(GetParam().arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("--help"));
}

INSTANTIATE_TEST_SUITE_P(Helps, CommandLineHelpTest, testing::Values(
    Usage{"Tool", {"--help"}},
    Usage{"Format", {"format", "--help"}},
    Usage{"Check", {"check", "--help"}},
    Usage{"Query", {"query", "--help"}},
    Usage{"Version", {"version", "--help"}},
    Usage{"Schema", {"schema", "--help"}}), NameOf);

TEST(CommandLineTest, VersionIsOneLine)
{
    const ToolResult result = RunTool({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::MatchesRegex("vanxml [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(CommandLineTest, FilesMayBeCalledLikeCommandsAndOptions)
{
    const testsupport::TemporaryFolder folder;
    const std::string name = folder.Write("-check", "<a/>").toStdString();
    EXPECT_EQ(RunTool({"format", "--no-header", "--", name}).output, "<a />\n");
    EXPECT_THAT(RunTool({"format", "check"}).errors, HasSubstr("Cannot read \"check\""));
}

TEST(CommandLineTest, FileNamesAreUtf8InAnyLocale)
{
    const testsupport::TemporaryFolder folder;
    const std::string name = folder.Write("größe-漢.xml", "<a/>").toStdString();
    EXPECT_EQ(RunProgram("env", {"LC_ALL=C", VANXML_PATH, "format", "--no-header", name}).output, "<a />\n");
}
