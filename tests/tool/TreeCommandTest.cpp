#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string orders = "<orders version='1.2'>\n"
                           "  <order id='1' rush='yes'><item sku='a'>tea</item><item sku='b'/></order>\n"
                           "  <note>so far</note>\n"
                           "  <order id='2'><item>milk</item></order>\n"
                           "</orders>\n";

std::string PrintTree(std::vector<std::string> options, const std::string& document = orders)
{
    options.insert(options.begin(), {"tree", "-"});
    const ToolResult result = RunTool(options, document);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

}  // namespace

TEST(TreeCommandTest, PrintsOneLineForElementsWithTheSamePath)
{
    EXPECT_EQ(PrintTree({}),
        "count  size  element\n"
        "    1    23  orders @version\n"
        "    2    14  ├─ order @id @rush?\n"
        "    3     9  │  └─ item @sku?\n"
        "    1     6  └─ note\n");
}

TEST(TreeCommandTest, DepthHidesLinesButNotTheirSizes)
{
    EXPECT_EQ(PrintTree({"--depth", "2"}),
        "count  size  element\n"
        "    1    23  orders @version\n"
        "    2    14  ├─ order @id @rush? … 3 elements inside\n"
        "    1     6  └─ note\n");
    EXPECT_EQ(PrintTree({"--depth", "1"}),
        "count  size  element\n"
        "    1    23  orders @version … 6 elements inside\n");
}

TEST(TreeCommandTest, JsonHasOneObjectForEachLine)
{
    EXPECT_EQ(PrintTree({"--json", "--depth", "2"}),
        R"({"level":1,"name":"orders","count":1,"size":23,"text":0,"hidden":3,"attributes":{"version":1}})"
        "\n"
        R"({"level":2,"name":"order","count":2,"size":14,"text":0,"hidden":3,"attributes":{"id":2,"rush":1}})"
        "\n"
        R"({"level":2,"name":"note","count":1,"size":6,"text":6,"hidden":0,"attributes":{}})"
        "\n");
}

TEST(TreeCommandTest, SizesAreBytesOfUtf8WithoutEntitiesAndBlankTexts)
{
    EXPECT_THAT(PrintTree({}, "<a> <b>\xC3\xA4&#x20AC;&amp;\xF0\x9F\x98\x80</b> </a>"), HasSubstr("    1    10  a\n"));
}

TEST(TreeCommandTest, ColorsPaintGuidesAndNames)
{
    EXPECT_THAT(PrintTree({"--color", "always"}, "<a><b/></a>"), HasSubstr("\x1B[34m└─ \x1B[0m\x1B[1mb\x1B[0m\n"));
}

TEST(TreeCommandTest, ReadsUtf16)
{
    const std::string document("\xFF\xFE<\0a\0>\0x\0<\0/\0a\0>\0", 18);
    EXPECT_THAT(PrintTree({}, document), HasSubstr("    1     1  a\n"));
}

TEST(TreeCommandTest, DeepDocumentsNeedNeitherStackNorLongLines)
{
    std::string document;
    for (int i = 0; i < 50000; ++i)
        document += "<a>";
    for (int i = 0; i < 50000; ++i)
        document += "</a>";
    const std::string output = PrintTree({}, document);
    EXPECT_THAT(output, HasSubstr("[level 50000] a\n"));
    EXPECT_LT(output.size(), 50000u * 200);
}

TEST(TreeCommandTest, ManyAttributesAreCounted)
{
    std::string tag = "<a";
    for (int i = 0; i < 14; ++i)
        tag += " b" + std::to_string(i) + "=''";
    EXPECT_THAT(PrintTree({}, tag + "/>"), testing::EndsWith(" and 2 more attributes\n"));
}

TEST(TreeCommandTest, ADocumentWithErrorsIsFaulty)
{
    const ToolResult result = RunTool({"tree", "-"}, "<a><b></a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("-:1:"));
}

TEST(TreeCommandTest, AMissingFileAndAWrongDepthFail)
{
    EXPECT_EQ(RunTool({"tree", "missing.xml"}).status, 2);
    const ToolResult result = RunTool({"tree", "-", "--depth", "0"}, orders);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("'0' is not a whole number from 1"));
}
