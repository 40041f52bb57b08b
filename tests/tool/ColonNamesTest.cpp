#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

// Messages contain the names and positions of the file, not those of the sanitized text that the scanner reads.
TEST(ColonNamesTest, CheckPrintsAttributeNamesAsWrittenInTheFile)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a>\n<b :x='1' :x='2'/></a>").toStdString();
    const ToolResult result = RunTool({"check", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(file + ":2:"));
    EXPECT_THAT(FirstLines(result.errors), HasSubstr("attribute ':x'"));
    EXPECT_THAT(result.errors, HasSubstr("<b :x='1' :x='2'/>"));
}

TEST(ColonNamesTest, CheckAgainstASchemaPrintsAttributeNamesAsWritten)
{
    const TemporaryFolder folder;
    const char* const text = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                             "<xs:element name='a'><xs:complexType/></xs:element></xs:schema>";
    const std::string schema = folder.Write("a.xsd", text).toStdString();
    const std::string file = folder.Write("a.xml", "<a :x='1'/>").toStdString();
    const ToolResult result = RunTool({"check", "--schema", schema, file});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(file + ":1:"));
    EXPECT_THAT(FirstLines(result.errors), HasSubstr("':x'"));
}
