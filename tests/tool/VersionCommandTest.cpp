#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

TEST(VersionCommandTest, PrintsTheVersionOfTheFirstElement)
{
    const ToolResult result = RunTool({"version", "-"},
        "<?xml version='1.0'?><!-- <x version='3'> --><a build_version='2' version='18.1.3'><b version='4'/></a>");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "18.1.3\n");
    EXPECT_EQ(result.errors, "");
}

TEST(VersionCommandTest, AttributeOptionSelectsTheAttribute)
{
    EXPECT_EQ(RunTool({"version", "-", "--attribute", "build"}, "<a version='1' build='2.5'/>").output, "2.5\n");
}

TEST(VersionCommandTest, ReadsTheVersionOfAMalformedDocument)
{
    EXPECT_EQ(RunTool({"version", "-"}, "<a version='10.4'><b></c>").output, "10.4\n");
}

TEST(VersionCommandTest, DocumentWithoutAVersionEndsWithStatus1AndAMessage)
{
    for (const char* text : {"<a><b version='1'/></a>", "", "no element"}) {
        const ToolResult result = RunTool({"version", "-"}, text);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, StartsWith("-: "));
        EXPECT_THAT(result.errors, HasSubstr("\"version\""));
    }
}

TEST(VersionCommandTest, MissingFileEndsWithStatus2)
{
    const ToolResult result = RunTool({"version", "no-such-file.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot read"));
}

TEST(VersionCommandTest, FindsTheVersionAfterALongComment)
{
    const std::string comment = "<!--" + std::string(10 << 20, 'x') + "-->";
    EXPECT_EQ(RunTool({"version", "-"}, comment + "<a version='18.1'/>").output, "18.1\n");
}
