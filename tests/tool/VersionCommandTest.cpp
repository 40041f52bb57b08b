#include "tests/tool/ToolRun.h"

using testing::HasSubstr;

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
    const ToolResult without = RunTool({"version", "-"}, "<a><b version='1'/></a>");
    EXPECT_EQ(without.status, 1);
    EXPECT_EQ(without.output, "");
    EXPECT_EQ(without.errors, "-: error: the first element has no attribute 'version'\n");
    for (const char* text : {"", "no element"}) {
        const ToolResult result = RunTool({"version", "-"}, text);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "-: error: the document has no element that could declare a version\n");
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

TEST(VersionCommandTest, ReadsNoFurtherThanTheFirstTag)
{
    // A whole read would refuse the byte 0xFF, and the half character at the end of UTF-16.
    const std::string text = "<a version='18.1'>" + std::string(100000, 'x');
    EXPECT_EQ(RunTool({"version", "-"}, text + "\xFF").output, "18.1\n");
    const QString units = QString::fromStdString(text);
    const std::string bytes(reinterpret_cast<const char*>(units.utf16()), 2 * static_cast<std::size_t>(units.size()));
    EXPECT_EQ(RunTool({"version", "-"}, "\xFF\xFE" + bytes + "x").output, "18.1\n");
}

TEST(VersionCommandTest, PieceMayEndInsideACharacter)
{
    const std::string comment = "<!--" + std::string(0x10000 - 6, 'x') + "\U0001F600";
    for (int shift = 0; shift < 4; ++shift)
        EXPECT_EQ(RunTool({"version", "-"},
                      comment.substr(0, 4) + std::string(static_cast<std::size_t>(shift), 'x') + comment.substr(4) +
                          "--><a version='2'/>")
                      .output,
            "2\n");
}

TEST(VersionCommandTest, AVersionCannotControlTheTerminal)
{
    const ToolResult result = RunTool({"version", "-"}, "<a version='1.\x1B[31m\n2'/>");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "1.\\x1b[31m\\n2\n");
}
