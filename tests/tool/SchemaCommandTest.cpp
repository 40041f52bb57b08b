#include "tests/tool/ToolRun.h"

using testing::HasSubstr;

TEST(SchemaCommandTest, ListsTheSchemasSorted)
{
    const ToolResult result = RunTool({"schema", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::vector<std::string> names;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);)
        names.push_back(line);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    for (const char* name : {"VQRC_FILEFORMAT_KXA_XSD",
             "VQRC_FILEFORMAT_KXA_XSD_10_2",
             "VQRC_FILEFORMAT_KXD_XSD_10_5",
             "VQRC_FILEFORMAT_KXF_XSD",
             "VQRC_FILEFORMAT_XML_XSD",
             "VQRC_FILEFORMAT_USER_XSD"}) {
        EXPECT_THAT(names, testing::Contains(name));
    }
}

TEST(SchemaCommandTest, ShowsASchemaThatIsADocument)
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

TEST(SchemaCommandTest, UnknownSchemaFails)
{
    const ToolResult result = RunTool({"schema", "show", "NO_SUCH_XSD"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("NO_SUCH_XSD"));
}
