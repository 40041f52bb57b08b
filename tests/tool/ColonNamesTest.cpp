#include "tests/tool/ToolRun.h"

using testsupport::TemporaryFolder;

// Names and places are those of the file, not of what the scanner reads.
TEST(ColonNamesTest, CheckNamesAnAttributeAsTheFileWritesIt)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a>\n<b :x='1' :x='2'/></a>").toStdString();
    const ToolResult result = RunTool({"check", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
        file + ": Fatal Error(2,14): attribute ':x' is already specified for element 'b' (id: " + file + ")\n");
}

TEST(ColonNamesTest, CheckAgainstASchemaNamesItTheSame)
{
    const TemporaryFolder folder;
    const std::string schema =
        folder
            .Write("a.xsd",
                "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType/></xs:element></xs:schema>")
            .toStdString();
    const std::string file = folder.Write("a.xml", "<a :x='1'/>").toStdString();
    const ToolResult result = RunTool({"check", "--schema", schema, file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.errors, file + ": Error(1,12): attribute ':x' is not declared for element 'a' (id: " + file + ")\n");
}
