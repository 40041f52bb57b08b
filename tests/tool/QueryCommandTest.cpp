#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string library = "<library>\n"
                            "  <book id='1'><title>One</title></book>\n"
                            "  <shelf/>\n"
                            "  <book><title lang='de'>Zwei</title><title/></book>\n"
                            "</library>\n";

std::string Query(std::vector<std::string> arguments, const std::string& text = library)
{
    arguments.insert(arguments.begin(), {"query", "-"});
    const ToolResult result = RunTool(arguments, text);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

}  // namespace

TEST(QueryCommandTest, PrintsPositionAndPathOfEachMatch)
{
    EXPECT_EQ(Query({"library/book"}), "2:16\t/library/book[1]\n4:9\t/library/book[2]\n");
    EXPECT_EQ(Query({"//title"}),
        "2:23\t/library/book[1]/title\n"
        "4:26\t/library/book[2]/title[1]\n"
        "4:46\t/library/book[2]/title[2]\n");
}

TEST(QueryCommandTest, AbsoluteAndRelativePathsStartAtTheDocumentElement)
{
    EXPECT_EQ(Query({"/library/shelf"}), "3:11\t/library/shelf\n");
    EXPECT_EQ(Query({"library/shelf"}), "3:11\t/library/shelf\n");
    EXPECT_EQ(Query({"/library"}), "1:10\t/library\n");
}

TEST(QueryCommandTest, NoMatchPrintsNothing)
{
    EXPECT_EQ(Query({"shelf"}), "");
    EXPECT_EQ(Query({""}), "");
    EXPECT_EQ(Query({"library/"}), "");
    EXPECT_EQ(Query({"library/cd", "--count"}), "0\n");
}

TEST(QueryCommandTest, CountOptionPrintsTheNumberOfMatches)
{
    EXPECT_EQ(Query({"library/*", "--count"}), "3\n");
    EXPECT_EQ(Query({"library/*", "--count", "--first"}), "1\n");
}

TEST(QueryCommandTest, FirstOptionStopsAtTheFirstMatch)
{
    EXPECT_EQ(Query({"//title", "--first"}), "2:23\t/library/book[1]/title\n");
    EXPECT_EQ(Query({"//cd", "--first"}), "");
}

TEST(QueryCommandTest, AttributeOptionSkipsElementsWithoutTheAttribute)
{
    EXPECT_EQ(Query({"library/book", "--attribute", "id"}), "1\n");
    EXPECT_EQ(Query({"//b", "--attribute", ":c"}, "<a><b :c=''/><b/><b :c='größe'/></a>"), "\ngröße\n");
}

TEST(QueryCommandTest, TextOptionPrintsTexts)
{
    EXPECT_EQ(Query({"//title", "--text"}), "One\nZwei\n\n");
}

TEST(QueryCommandTest, XmlOptionPrintsElements)
{
    EXPECT_EQ(Query({"library/book", "--xml"}),
        "<book id='1'>\n  <title>One</title>\n</book>\n"
        "<book>\n  <title lang='de'>Zwei</title>\n  <title />\n</book>\n");
}

TEST(QueryCommandTest, WithinOptionFindsNestedElementsOfOneName)
{
    const std::string text = "<r><g><f><f/></f><x><f/></x></g></r>";
    EXPECT_EQ(Query({"r/g", "--within", "f", "--count"}, text), "2\n");
    EXPECT_EQ(Query({"r/g", "--within", "*", "--count"}, text), "0\n");
    EXPECT_EQ(Query({"r/g", "--within", "f", "--first"}, text), "1:10\t/r/g/f\n");
}

TEST(QueryCommandTest, UnderneathOptionFindsPathsBelowNestedCanopies)
{
    const std::string text = "<r><g><x><y/></x><g><x><y/></x></g></g></r>";
    EXPECT_EQ(Query({"r/g", "--underneath", "x/y"}, text), "1:14\t/r/g/x/y\n1:28\t/r/g/g/x/y\n");
    EXPECT_EQ(Query({"r/g", "--underneath", "/x"}, text), "");
}

TEST(QueryCommandTest, PositionsReferToTheFile)
{
    EXPECT_EQ(Query({"//b"}, "\n <a :x='1'><b :y='2'/><b/></a>"), "2:23\t/a/b[1]\n2:27\t/a/b[2]\n");
}

TEST(QueryCommandTest, DocumentWithErrorsIsNotSearched)
{
    const ToolResult result = RunTool({"query", "-", "a"}, "<a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("-: Fatal Error("));
}

TEST(QueryCommandTest, MissingFileEndsWithStatus2)
{
    const ToolResult result = RunTool({"query", "no-such-file.xml", "a"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot read"));
}

TEST(QueryCommandTest, SearchesAHundredThousandLevels)
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "<x>";
    for (int i = 0; i < 100000; ++i)
        text += "</x>";
    EXPECT_EQ(Query({"//x", "--count"}, text), "100000\n");
}
