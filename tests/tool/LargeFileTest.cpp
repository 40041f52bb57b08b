// Files of 1 GiB and more. They have holes, so they take little space on the disk.
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

TEST(LargeFileTest, FileOfOneGibibyteThatIsNotUtf8IsAnErrorThatNamesTheByte)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a>\n <\xFF\n");
    ASSERT_TRUE(QFile(file.ToQString()).resize(0x40000000));
    const ToolResult result = RunTool({"check", "--schema", "none", file.toStdString()});
    EXPECT_THAT(result.errors, HasSubstr("a.xml:2:3: error: the byte FF is not UTF-8"));
    EXPECT_EQ(result.status, 1);
}
