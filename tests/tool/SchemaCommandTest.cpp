#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::Not;

TEST(SchemaCommandTest, ListPrintsTwoColumnsOfNames)
{
    const ToolResult result = RunTool({"schema", "list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, testing::StartsWith("kxa-10.2                    VQRC_FILEFORMAT_KXA_XSD_10_2\n"));
    EXPECT_THAT(result.output, HasSubstr("\nkxf-18.1                    VQRC_FILEFORMAT_KXF_XSD\n"));
    EXPECT_THAT(
        result.output, HasSubstr("\nconnector-plugin-resources  VQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("DTD")));
}

TEST(SchemaCommandTest, ShowPrintsAWellFormedSchema)
{
    const ToolResult schema = RunTool({"schema", "show", "VQRC_FILEFORMAT_KXE_XSD"});
    EXPECT_EQ(schema.status, 0);
    EXPECT_THAT(schema.output, HasSubstr("captions"));
    EXPECT_EQ(RunTool({"check", "-"}, schema.output).status, 0);
}

TEST(SchemaCommandTest, EachListedNameCanBeShown)
{
    std::istringstream names(RunTool({"schema", "list"}).output);
    for (std::string shortName, resource; names >> shortName >> resource;) {
        const ToolResult schema = RunTool({"schema", "show", shortName});
        EXPECT_EQ(schema.status, 0) << shortName;
        EXPECT_EQ(RunTool({"schema", "show", resource}).output, schema.output) << resource;
    }
}

TEST(SchemaCommandTest, ShowOfAnUnknownSchemaSuggestsAName)
{
    const ToolResult result = RunTool({"schema", "show", "oauth-confg"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(
        result.errors, testing::StartsWith("vanxml: there is no schema 'oauth-confg'; did you mean 'oauth-config'?\n"));
}
