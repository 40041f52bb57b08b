#include <QJsonDocument>
#include <QJsonObject>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

namespace {

const std::string stock = "<shop>\n"
                          "  <item id='1' price='2'>tea</item>\n"
                          "  <item id='2' price='3'><size>big</size></item>\n"
                          "  <closed/>\n"
                          "</shop>\n";

const std::string newStock = "<shop>\n"
                             "  <item id='1' price='4'>tea</item>\n"
                             "  <shelf><item id='2' price='3'><size>big</size></item></shelf>\n"
                             "</shop>\n";

// Compares the two texts in the folder, under the names a.xml and b.xml.
ToolResult RunDiff(const TemporaryFolder& folder,
    const std::string& a,
    const std::string& b,
    const std::vector<std::string>& options = {})
{
    folder.Write("a.xml", a);
    folder.Write("b.xml", b);
    std::vector<std::string> arguments{"diff", "a.xml", "b.xml"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunProgram(VANXML_PATH, arguments, "", "", folder.Path("").toStdString());
}

// Returns nested elements of one name with a content.
std::string MakeDocument(const std::string& name, int depth, const std::string& content)
{
    std::string begin;
    std::string end;
    for (int i = 0; i < depth; ++i) {
        begin += "<" + name + ">";
        end += "</" + name + ">";
    }
    return begin + content + end;
}

}  // namespace

TEST(DiffCommandTest, EqualTreesPrintNothingAndEndWithStatus0)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, stock, "<?xml version='1.0'?>" + stock);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    const ToolResult json = RunDiff(folder, stock, stock, {"--json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(json.output, "");
    EXPECT_EQ(json.errors, "");
}

TEST(DiffCommandTest, PrintsPathsPlacesAndValues)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, stock, newStock);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
        "changed /shop/item[1]/@price\n"
        "    a.xml:2:26: \"2\"\n"
        "    b.xml:2:26: \"4\"\n"
        "moved /shop/item[2] to /shop/shelf/item with 1 element\n"
        "    a.xml:3:26: child 2\n"
        "    b.xml:3:33: child 1\n"
        "added /shop/shelf\n"
        "    b.xml:3:10\n"
        "removed /shop/closed\n"
        "    a.xml:4:12\n"
        "4 differences: 1 changed, 1 removed, 1 added, 1 moved\n");
}

TEST(DiffCommandTest, JsonHasOneObjectForEachDifference)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, "<a b='&quot;'>x</a>", "<a>y<c/></a>", {"--json"});
    EXPECT_EQ(result.status, 1);
    const std::string removed =
        R"json({"type":"removed","what":"attribute",)json"
        R"json("a":{"file":"a.xml","line":1,"column":15,"element":1,"name":"b","path":"/a/@b","value":"\""}})json";
    const std::string changed =
        R"json({"type":"changed","what":"text",)json"
        R"json("a":{"file":"a.xml","line":1,"column":15,"element":1,"path":"/a/text()","value":"x"},)json"
        R"json("b":{"file":"b.xml","line":1,"column":4,"element":1,"path":"/a/text()","value":"y"}})json";
    const std::string added =
        R"json({"type":"added","what":"element",)json"
        R"json("b":{"file":"b.xml","line":1,"column":9,"element":2,"child":2,"name":"c","path":"/a/c"}})json";
    EXPECT_EQ(result.output, removed + "\n" + changed + "\n" + added + "\n");
}

TEST(DiffCommandTest, MovesTellThePlaceAmongTheSiblings)
{
    const TemporaryFolder folder;
    const std::string before = "<r>\n<a/>\n<b/>\n<c/>\n</r>";
    const std::string after = "<r>\n<b/><!--x-->\n<c/>\n<a/></r>";
    EXPECT_THAT(RunDiff(folder, before, after).output,
        StartsWith("moved /r/a to /r/a\n    a.xml:2:5: child 1\n    b.xml:4:5: child 3\n"));
    const ToolResult json = RunDiff(folder, before, after, {"--json"});
    EXPECT_THAT(json.output, HasSubstr(R"("element":2,"child":1,"name":"a")"));
    EXPECT_THAT(json.output, HasSubstr(R"("element":4,"child":3,"name":"a")"));
    // Texts count, and the document element is the only child.
    EXPECT_THAT(RunDiff(folder, "<r>x<a/></r>", "<r>x</r>", {"--json"}).output, HasSubstr(R"("child":2,)"));
    EXPECT_THAT(RunDiff(folder, "<r/>", "<s/>", {"--json"}).output, HasSubstr(R"("child":1,"name":"s")"));
}

TEST(DiffCommandTest, PlacesInEntitiesAreBehindTheReference)
{
    const TemporaryFolder folder;
    const std::string type = "<!DOCTYPE a [<!ENTITY e '<b>1</b><c/>'>]>\n";
    const ToolResult result = RunDiff(folder, type + "<a>\n &e;\n</a>", "<a>\n <b>2</b>\n</a>");
    EXPECT_EQ(result.output,
        "changed /a/b/text()\n"
        "    a.xml:3:5: \"1\"\n"
        "    b.xml:2:5: \"2\"\n"
        "removed /a/c\n"
        "    a.xml:3:5\n"
        "2 differences: 1 changed, 1 removed\n");
}

TEST(DiffCommandTest, LongValuesAreClippedAndEscaped)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, "<a>" + std::string(200, 'x') + "</a>", "<a>&#xA;&#x9B;</a>");
    EXPECT_THAT(result.output, HasSubstr(": \"" + std::string(100, 'x') + "…\"\n"));
    EXPECT_THAT(result.output, HasSubstr(": \"\\n\\u009b\"\n"));
    const ToolResult json = RunDiff(folder, "<a>" + std::string(200, 'x') + "</a>", "<a/>", {"--json"});
    EXPECT_THAT(json.output, HasSubstr(std::string(200, 'x')));
}

TEST(DiffCommandTest, LongNamesAreClippedInPaths)
{
    const TemporaryFolder folder;
    const std::string name(5000, 'n');
    std::string before;
    std::string after;
    for (int i = 0; i < 500; ++i) {
        before += "<c v='1' " + name + "='1'/>";
        after += "<c v='2' " + name + "='1'/>";
    }
    before = MakeDocument(name, 1, before);
    after = MakeDocument(name, 1, after);
    const ToolResult text = RunDiff(folder, before, after);
    EXPECT_THAT(text.output, StartsWith("changed /" + name.substr(0, 100) + "…/c[1]/@v\n"));
    EXPECT_LT(text.output.size(), 100000u);
    const ToolResult json = RunDiff(folder, before, after, {"--json"});
    EXPECT_THAT(json.output, HasSubstr("\"name\":\"v\",\"path\":\"/" + name.substr(0, 100) + "…/c[1]/@v\""));
    EXPECT_LT(json.output.size(), 300000u);
    // The name of what differs is whole, because it is in the document at each difference.
    const ToolResult attribute = RunDiff(folder, "<a " + name + "='1'/>", "<a/>", {"--json"});
    EXPECT_THAT(attribute.output, HasSubstr("\"name\":\"" + name + "\",\"path\":\"/a/@" + name.substr(0, 100) + "…\""));
}

TEST(DiffCommandTest, TheOutputForDeepDocumentsGrowsWithTheirLength)
{
    const TemporaryFolder folder;
    const auto nest = [](const std::string& value) {
        std::string begin;
        std::string end;
        for (int i = 0; i < 20000; ++i) {
            begin += "<d x='" + value + "'>";
            end += "</d>";
        }
        return begin + end;
    };
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--json"}}) {
        const ToolResult result = RunDiff(folder, nest("1"), nest("2"), options);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), options.empty() ? 60001 : 20000);
        EXPECT_LT(result.output.size(), 20000u * 700);
    }
}

TEST(DiffCommandTest, TheNumberOfAnElementInJsonIsExact)
{
    const TemporaryFolder folder;
    const std::string begin = MakeDocument("d", 99, "").substr(0, 99 * 3);
    const std::string end = MakeDocument("d", 99, "").substr(99 * 3);
    const ToolResult result =
        RunDiff(folder, begin + "<e/>x<f v='1'/>" + end, begin + "<e/>y<f v='2'/>" + end, {"--json"});
    std::istringstream lines(result.output);
    std::vector<int> numbers;
    for (std::string line; std::getline(lines, line);) {
        const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        for (const char* side : {"a", "b"})
            numbers.push_back(object[QLatin1String(side)].toObject()[QLatin1String("element")].toInt());
    }
    // The text is in the 99th element.
    EXPECT_EQ(numbers, (std::vector<int>{99, 99, 101, 101}));
}

TEST(DiffCommandTest, PlacesAreBehindTags)
{
    const TemporaryFolder folder;
    // An attribute has the place of its element. A comment in front of a text does not change its place.
    const ToolResult result =
        RunDiff(folder, "<a>\n<b\n x='1'\n>1</b><c/><!--c-->2<d/></a>", "<a>\n<b\n x='2'\n>2</b><!--c--><c/>3<d/></a>");
    EXPECT_EQ(result.output,
        "changed /a/b/@x\n"
        "    a.xml:4:2: \"1\"\n"
        "    b.xml:4:2: \"2\"\n"
        "changed /a/b/text()\n"
        "    a.xml:4:2: \"1\"\n"
        "    b.xml:4:2: \"2\"\n"
        "changed /a/text()[2]\n"
        "    a.xml:4:11: \"2\"\n"
        "    b.xml:4:19: \"3\"\n"
        "3 differences: 3 changed\n");
}

TEST(DiffCommandTest, ColorsPaintTheValues)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, "<a>x</a>", "<a>y</a>", {"--color", "always"});
    EXPECT_THAT(result.output, HasSubstr("\x1B[31m\"x\"\x1B[0m"));
    EXPECT_THAT(result.output, HasSubstr("\x1B[32m\"y\"\x1B[0m"));
}

TEST(DiffCommandTest, ComparesAcrossEncodings)
{
    const TemporaryFolder folder;
    const std::string utf16("\xFF\xFE<\0a\0>\0\xE4\0<\0/\0a\0>\0", 18);
    EXPECT_EQ(RunDiff(folder, utf16, "<a>\xC3\xA4</a>").status, 0);
    const ToolResult result = RunDiff(folder, utf16, "<?xml version='1.0' encoding='iso-8859-1'?><a>\xE5</a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("a.xml:1:4: \"\xC3\xA4\"\n"));
}

TEST(DiffCommandTest, ColonsKeepTheirPlaces)
{
    const TemporaryFolder folder;
    const ToolResult result = RunDiff(folder, "<a :b='1' :c='1'><d e='1'/></a>", "<a :b='1' :c='1'><d e='2'/></a>");
    EXPECT_THAT(result.output, StartsWith("changed /a/d/@e\n    a.xml:1:28: \"1\"\n"));
}

TEST(DiffCommandTest, OneDocumentMayBeStandardInput)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a/>").toStdString();
    EXPECT_EQ(RunTool({"diff", file, "-"}, "<a></a>").status, 0);
    EXPECT_EQ(RunTool({"diff", "-", file}, "<b/>").status, 1);
    const ToolResult result = RunTool({"diff", "-", "-"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("only one of the two documents"));
}

TEST(DiffCommandTest, AnyFaultEndsWithStatus2)
{
    const TemporaryFolder folder;
    const ToolResult faulty = RunDiff(folder, "<a>", "<a/>");
    EXPECT_EQ(faulty.status, 2);
    EXPECT_EQ(faulty.output, "");
    EXPECT_THAT(faulty.errors, StartsWith("a.xml:1:"));
    EXPECT_EQ(RunDiff(folder, "<a/>", "<a>\xFF</a>").status, 2);
    EXPECT_EQ(RunTool({"diff", folder.Path("a.xml").toStdString(), "missing.xml"}).status, 2);
    EXPECT_EQ(RunTool({"diff", "a.xml"}).status, 2);
}

TEST(DiffCommandTest, FormattingKeepsTheTree)
{
    const TemporaryFolder folder;
    for (const QFileInfo& sample : QDir(SAMPLES_FOLDER).entryInfoList(QDir::Files)) {
        const std::string file = sample.filePath().toStdString();
        const ToolResult formatted = RunTool({"format", file});
        const ToolResult result = RunTool({"diff", file, "-"}, formatted.output);
        EXPECT_EQ(result.status, 0) << file << "\n" << result.output << result.errors;
    }
}
