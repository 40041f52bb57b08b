#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

namespace {

const std::string Cut("<a/>\n\0<b/>more", 14);

}  // namespace

TEST(NulCommandTest, CheckReportsTheNulWithItsPlace)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", Cut).toStdString();
    const ToolResult result = RunTool({"check", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, file + ": Fatal Error(2,1): invalid character 0x0 (id: " + file + ")\n");
}

TEST(NulCommandTest, CheckReportsTheNulOfStandardInput)
{
    EXPECT_EQ(RunTool({"check", "-"}, Cut).status, 1);
}

TEST(NulCommandTest, FormatInPlaceLeavesTheFileByteForByte)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", Cut);
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString()}).status, 1);
    EXPECT_EQ(TemporaryFolder::Read(file), Cut);
}

TEST(NulCommandTest, FormatWritesNoOutputFile)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", Cut);
    const VString output = folder.Path("b.xml");
    EXPECT_EQ(RunTool({"format", "-o", output.toStdString(), file.toStdString()}).status, 1);
    EXPECT_FALSE(QFile::exists(output.ToQString()));
}

TEST(NulCommandTest, QueryReportsTheNul)
{
    const TemporaryFolder folder;
    const ToolResult result = RunTool({"query", folder.Write("a.xml", Cut).toStdString(), "a"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
}
