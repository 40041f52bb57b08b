#include "tests/tool/ToolRun.h"

using testing::HasSubstr;

TEST(SchemaCommandTest, ListPrintsSortedNames)
{
    const ToolResult result = RunTool({"schema", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::vector<std::string> names;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);)
        names.push_back(line);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    for (const char* type : {"KXA_XSD", "KXA_XSD_10_2", "KXD_XSD_10_5", "KXF_XSD", "XML_XSD", "USER_XSD"})
        EXPECT_THAT(names, testing::Contains(std::string("VQRC_FILEFORMAT_") + type));
}

TEST(SchemaCommandTest, ShowPrintsAWellFormedSchema)
{
    const ToolResult schema = RunTool({"schema", "show", "VQRC_FILEFORMAT_KXE_XSD"});
    EXPECT_EQ(schema.status, 0);
    EXPECT_THAT(schema.output, HasSubstr("captions"));
    EXPECT_EQ(RunTool({"check", "-"}, schema.output).status, 0);
}

TEST(SchemaCommandTest, EachListedSchemaCanBeShown)
{
    std::istringstream lines(RunTool({"schema", "list"}).output);
    for (std::string name; std::getline(lines, name);)
        EXPECT_EQ(RunTool({"schema", "show", name}).status, 0) << name;
}

TEST(SchemaCommandTest, ShowOfAnUnknownSchemaFails)
{
    const ToolResult result = RunTool({"schema", "show", "NO_SUCH_XSD"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("NO_SUCH_XSD"));
}
