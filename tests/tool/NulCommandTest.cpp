#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

const std::string TextWithNul("<a/>\n\0<b/>more", 14);

}  // namespace

TEST(NulCommandTest, CheckReportsThePositionOfANul)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", TextWithNul).toStdString();
    const ToolResult result = RunTool({"check", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::StartsWith(file + ":2:1: error: "));
    EXPECT_THAT(result.errors, testing::EndsWith("\n  1 | <a/>\n  2 | \\x00<b/>more\n    | ^\n"));
}

TEST(NulCommandTest, CheckRejectsANulInStandardInput)
{
    EXPECT_EQ(RunTool({"check", "-"}, TextWithNul).status, 1);
}

TEST(NulCommandTest, FormatInPlaceKeepsAFileWithANulUnchanged)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", TextWithNul);
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString()}).status, 1);
    EXPECT_EQ(TemporaryFolder::Read(file), TextWithNul);
}

TEST(NulCommandTest, FormatWritesNoOutputFileForTextWithANul)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", TextWithNul);
    const VString output = folder.Path("b.xml");
    EXPECT_EQ(RunTool({"format", "-o", output.toStdString(), file.toStdString()}).status, 1);
    EXPECT_FALSE(QFile::exists(output.ToQString()));
}

TEST(NulCommandTest, QueryRejectsANul)
{
    const TemporaryFolder folder;
    const ToolResult result = RunTool({"query", folder.Write("a.xml", TextWithNul).toStdString(), "a"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
}
