#include <QJsonDocument>
#include <QJsonObject>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

const std::string shop = "<shop version='10.2'>\n"
                         "  <item id='1'>tea</item>\n"
                         "  <item id='2'>m\xC3\xBCsli</item>\n"
                         "</shop>\n";

std::vector<QJsonObject> ParseJsonLines(const std::string& output)
{
    std::vector<QJsonObject> objects;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        objects.push_back(QJsonDocument::fromJson(QByteArray::fromStdString(line)).object());
    return objects;
}

}  // namespace

TEST(StatsCommandTest, PrintsTheNumbersAndNamesOfADocument)
{
    const ToolResult result = RunTool({"stats", "-"}, shop);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
        "  elements  attributes    depth        text   version  file\n"
        "         3           3        2           9      10.2  -\n"
        "\n"
        "elements, by frequency:\n"
        "         2  item\n"
        "         1  shop\n"
        "\n"
        "attributes, by frequency:\n"
        "         2  id\n"
        "         1  version\n");
}

TEST(StatsCommandTest, SeveralDocumentsHaveATotalAndTheirVersions)
{
    const TemporaryFolder folder;
    const std::string a = folder.Write("a.kxa", shop).toStdString();
    const std::string b = folder.Write("b.kxa", "<b><c><d/></c></b>").toStdString();
    const ToolResult result = RunTool({"stats", "--names", "0", a, b});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
        "  elements  attributes    depth        text   version  file\n"
        "         3           3        2           9      10.2  " +
            a +
            "\n"
            "         3           0        3           0         -  " +
            b +
            "\n"
            "         6           3        3           9            2 documents\n"
            "\n"
            "versions:\n"
            "         1  none\n"
            "         1  10.2\n");
}

TEST(StatsCommandTest, NamesLimitsTheLists)
{
    const ToolResult result = RunTool({"stats", "--names", "1", "-"}, "<a><b/><b/><c/></a>");
    EXPECT_THAT(result.output, HasSubstr("\nelements, by frequency:\n         2  b\n       ...  2 more\n"));
}

TEST(StatsCommandTest, JsonHasAnObjectForEachDocumentAndOneForTheTotal)
{
    const TemporaryFolder folder;
    const std::string a = folder.Write("a.kxa", shop).toStdString();
    const std::string b = folder.Write("b.kxa", "<shop/>").toStdString();
    const ToolResult result = RunTool({"stats", "--json", a, b});
    const std::vector<QJsonObject> objects = ParseJsonLines(result.output);
    ASSERT_EQ(objects.size(), 3u);
    EXPECT_EQ(objects[0]["type"].toString(), "document");
    EXPECT_EQ(objects[0]["file"].toString().toStdString(), a);
    EXPECT_EQ(objects[0]["version"].toString(), "10.2");
    EXPECT_EQ(objects[0]["bytes"].toInt(), static_cast<int>(shop.size()));
    EXPECT_EQ(objects[0]["elementNames"].toObject()["item"].toInt(), 2);
    EXPECT_FALSE(objects[1].contains("version"));
    EXPECT_EQ(objects[2]["type"].toString(), "total");
    EXPECT_EQ(objects[2]["documents"].toInt(), 2);
    EXPECT_EQ(objects[2]["elements"].toInt(), 4);
    EXPECT_EQ(objects[2]["versions"].toObject()["10.2"].toInt(), 1);
    EXPECT_EQ(objects[2]["attributeNames"].toObject()["id"].toInt(), 2);
}

TEST(StatsCommandTest, AnyNumberOfThreadsPrintsTheSame)
{
    const TemporaryFolder folder;
    for (int i = 0; i < 40; ++i)
        folder.Write(VString(("d" + std::to_string(i) + ".kxa").c_str()), "<a><b" + std::to_string(i) + "/></a>");
    const std::string path = folder.Path("").toStdString();
    const ToolResult one = RunTool({"stats", "--recursive", "--jobs", "1", path});
    const ToolResult four = RunTool({"stats", "--recursive", "--jobs", "4", path});
    EXPECT_EQ(one.status, 0);
    EXPECT_THAT(one.output, HasSubstr("40 documents"));
    EXPECT_EQ(one.output, four.output);
}

TEST(StatsCommandTest, DocumentsWithErrorsAreNotCounted)
{
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.kxa", "<a><b></a>").toStdString();
    const std::string good = folder.Write("good.kxa", "<a/>").toStdString();
    const ToolResult faulty = RunTool({"stats", bad, good});
    EXPECT_EQ(faulty.status, 1);
    EXPECT_THAT(faulty.errors, HasSubstr("bad.kxa:1:"));
    EXPECT_THAT(faulty.output, HasSubstr("good.kxa"));
    EXPECT_THAT(faulty.output, testing::Not(HasSubstr("documents")));
    const ToolResult missing = RunTool({"stats", good + ".missing", good});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.output, HasSubstr("good.kxa"));
}

TEST(StatsCommandTest, EntityBombsAreRefused)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 12; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        document += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            document += inner;
        document += "'>";
    }
    const ToolResult result = RunTool({"stats", "-"}, document + "]><a>&e11;</a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
}

TEST(StatsCommandTest, AVersionCannotControlTheTerminal)
{
    const ToolResult result = RunTool({"stats", "-", "--names", "0"},
        "<a version='1.\xC2\x9B\xE2\x80\xAE"
        "2'/>");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr(R"(1.\u009b\u202e2  -)"));
}
