#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string library = "<library>\n"
                            "  <book id='1'><title>One</title></book>\n"
                            "  <shelf/>\n"
                            "  <book><title lang='de'>Zwei</title><title/></book>\n"
                            "</library>\n";

ToolResult RunQuery(std::vector<std::string> arguments, const std::string& text = library)
{
    arguments.insert(arguments.begin(), {"query", "-"});
    return RunTool(arguments, text);
}

// Runs a query that finds something.
std::string Query(const std::vector<std::string>& arguments, const std::string& text = library)
{
    const ToolResult result = RunQuery(arguments, text);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

// Runs a query that finds nothing.
std::string QueryNothing(const std::vector<std::string>& arguments, const std::string& text = library)
{
    const ToolResult result = RunQuery(arguments, text);
    EXPECT_EQ(result.status, 1);
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

TEST(QueryCommandTest, NoMatchPrintsNothingAndEndsWithStatus1)
{
    EXPECT_EQ(QueryNothing({"shelf"}), "");
    EXPECT_EQ(QueryNothing({"library/book[3]"}), "");
    EXPECT_EQ(QueryNothing({"library/cd", "--count"}), "0\n");
    EXPECT_EQ(QueryNothing({"library/shelf/@id"}), "");
}

TEST(QueryCommandTest, PathThatCannotMatchEndsWithStatus2AndAHint)
{
    for (const char* path : {"", "library/", "//title/text()", "child::library", "library[1"}) {
        const ToolResult result = RunQuery({path});
        EXPECT_EQ(result.status, 2) << path;
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, StartsWith("vanxml: the path "));
    }
}

TEST(QueryCommandTest, PredicatesSelectByPositionAndAttribute)
{
    EXPECT_EQ(Query({"//title[2]"}), "4:46\t/library/book[2]/title[2]\n");
    EXPECT_EQ(Query({"//*[@lang]"}), "4:26\t/library/book[2]/title[1]\n");
    EXPECT_EQ(Query({"library/book[ @id = \"1\" ]/title"}), "2:23\t/library/book[1]/title\n");
}

TEST(QueryCommandTest, LastStepSelectsAnAttribute)
{
    EXPECT_EQ(Query({"//title/@lang"}), "de\n");
    EXPECT_EQ(Query({"//@id"}), "1\n");
    EXPECT_EQ(Query({"//@lang", "--count"}), "1\n");
}

TEST(QueryCommandTest, CountOptionPrintsTheNumberOfMatches)
{
    EXPECT_EQ(Query({"library/*", "--count"}), "3\n");
    EXPECT_EQ(Query({"library/*", "--count", "--first"}), "1\n");
}

TEST(QueryCommandTest, FirstOptionPrintsTheFirstMatchWithAllPositions)
{
    EXPECT_EQ(Query({"//title", "--first"}), "2:23\t/library/book[1]/title[1]\n");
    EXPECT_EQ(Query({"//title[2]", "--first"}), "4:46\t/library/book[2]/title[2]\n");
    EXPECT_EQ(Query({"//title", "--first", "--text"}), "One\n");
    EXPECT_EQ(Query({"//book", "--first", "--xml"}), "<book id='1'>\n  <title>One</title>\n</book>\n");
    EXPECT_EQ(Query({"//@lang", "--first"}), "de\n");
    EXPECT_EQ(Query({"//title", "--attribute", "lang", "--first"}), "de\n");
    EXPECT_EQ(QueryNothing({"//cd", "--first"}), "");
}

TEST(QueryCommandTest, FirstOptionReadsNoFurtherThanTheMatch)
{
    EXPECT_EQ(Query({"//b", "--first"}, "<a>\n <b/><c>"), "2:6\t/a/b[1]\n");
    EXPECT_EQ(Query({"//b", "--first", "--text"}, "<a><b>x<!---->y</b></c>"), "xy\n");
    EXPECT_EQ(RunQuery({"//c", "--first"}, "<a><b></a>").status, 2);
}

TEST(QueryCommandTest, FirstOptionFindsMatchesFarFromTheStart)
{
    std::string text = "<a>";
    for (int i = 0; i < 30000; ++i)
        text += "<b c='größe'/>\n";
    text += "<d :e='1'>" + std::string(100000, 'x') + "</d></a>";
    EXPECT_EQ(Query({"a/d", "--first"}, text), "30001:11\t/a/d[1]\n");
    EXPECT_EQ(Query({"a/d", "--first", "--text"}, text), std::string(100000, 'x') + "\n");
    EXPECT_EQ(Query({"a/b[30000]", "--first"}, text), "30000:15\t/a/b[30000]\n");
    EXPECT_EQ(QueryNothing({"a/e", "--first"}, text), "");
}

TEST(QueryCommandTest, FirstOptionReadsOnlyTheStartOfALongFile)
{
    const testsupport::TemporaryFolder folder;
    std::string text = "<a><b/>";
    for (int i = 0; i < 100000; ++i)
        text += "<c d='" + std::to_string(i) + "'/>";
    // A read of the whole file would refuse the byte 0xFF.
    const std::string file = folder.Write("a.xml", text + "\xFF</a>").toStdString();
    EXPECT_EQ(RunTool({"query", file, "//b", "--first"}).output, "1:8\t/a/b[1]\n");
    EXPECT_EQ(RunTool({"query", file, "//c[@d='5000']", "--first"}).output, "1:63911\t/a/c[5001]\n");
    EXPECT_EQ(RunTool({"query", file, "//e", "--first"}).status, 2);
    const std::string whole = folder.Write("b.xml", text + "</a>").toStdString();
    EXPECT_EQ(RunTool({"query", whole, "//c[@d='99999']/@d", "--first"}).output, "99999\n");
    EXPECT_EQ(RunTool({"query", whole, "//e", "--first"}).status, 1);
}

TEST(QueryCommandTest, FirstOptionDetectsTheEncodingLikeAWholeRead)
{
    // All bytes of the first piece are valid UTF-8, but a later one is not.
    const std::string start = "<?xml version='1.0' encoding='ISO-8859-1'?><a><b c='\xC3\xA4'/>";
    EXPECT_EQ(Query({"//b/@c", "--first"}, start + std::string(100000, ' ') + "\xE4</a>"), "\u00C3\u00A4\n");
    EXPECT_EQ(Query({"//b/@c", "--first"}, start + std::string(100000, ' ') + "</a>"), "\u00E4\n");
}

TEST(QueryCommandTest, AttributeOptionSkipsElementsWithoutTheAttribute)
{
    EXPECT_EQ(Query({"library/book", "--attribute", "id"}), "1\n");
    EXPECT_EQ(Query({"//b", "--attribute", ":c"}, "<a><b :c=''/><b/><b :c='größe'/></a>"), "\ngröße\n");
    EXPECT_EQ(QueryNothing({"library/shelf", "--attribute", "id"}), "");
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
    EXPECT_EQ(RunQuery({"r/g", "--within", "*"}, text).status, 2);
    EXPECT_EQ(Query({"r/g", "--within", "f", "--first"}, text), "1:10\t/r/g/f\n");
}

TEST(QueryCommandTest, UnderneathOptionFindsPathsBelowNestedCanopies)
{
    const std::string text = "<r><g><x><y/></x><g><x><y/></x></g></g></r>";
    EXPECT_EQ(Query({"r/g", "--underneath", "x/y"}, text), "1:14\t/r/g/x/y\n1:28\t/r/g/g/x/y\n");
    EXPECT_EQ(Query({"r/g[1]", "--underneath", "x"}, text), "1:10\t/r/g/x\n1:24\t/r/g/g/x\n");
    EXPECT_EQ(RunQuery({"r/g", "--underneath", "/x"}, text).status, 2);
    EXPECT_EQ(RunQuery({"r/g", "--underneath", "x[1]"}, text).status, 2);
}

TEST(QueryCommandTest, PositionsReferToTheFile)
{
    EXPECT_EQ(Query({"//b"}, "\n <a :x='1'><b :y='2'/><b/></a>"), "2:23\t/a/b[1]\n2:27\t/a/b[2]\n");
}

TEST(QueryCommandTest, ErrorsAreShownWithTheirSourceLine)
{
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--first"}}) {
        std::vector<std::string> arguments{"query", "-", "c"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_THAT(RunTool(arguments, "<a>\n<b></a>").errors, HasSubstr("\n  2 | <b></a>\n    | "));
    }
}

TEST(QueryCommandTest, DocumentWithErrorsIsNotSearched)
{
    const ToolResult result = RunTool({"query", "-", "a"}, "<a>");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("-:1:"));
}

TEST(QueryCommandTest, LinesOfSeveralFilesBeginWithTheFile)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.xml", "<a><b c='1'>x\ny</b></a>").toStdString();
    const std::string b = folder.Write("b.xml", "<a/>").toStdString();
    const std::string c = folder.Write("c.xml", "<a><b/></a>").toStdString();
    EXPECT_EQ(RunTool({"query", a, b, c, "//b"}).output, a + ":1:13\t/a/b\n" + c + ":1:8\t/a/b\n");
    EXPECT_EQ(RunTool({"query", a, b, "//b", "--count"}).output, a + ":1\n" + b + ":0\n");
    EXPECT_EQ(RunTool({"query", a, b, "//b", "--text"}).output, a + ":x\n" + a + ":y\n");
    EXPECT_EQ(RunTool({"query", b, c, "//b", "--first"}).output, c + ":1:8\t/a/b[1]\n");
    EXPECT_EQ(RunTool({"query", a, "//@c"}).output, "1\n");
}

TEST(QueryCommandTest, FilesInFoldersAreNamed)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.kxf", "<a/>").toStdString();
    const std::string path = QFileInfo(QString::fromStdString(a)).path().toStdString();
    EXPECT_EQ(RunTool({"query", "--recursive", path, "a"}).output, a + ":1:5\t/a\n");
}

TEST(QueryCommandTest, StatusIs2IfAnyFileFailsAnd0IfAnyFileMatches)
{
    const testsupport::TemporaryFolder folder;
    const std::string good = folder.Write("good.xml", "<a/>").toStdString();
    const std::string bad = folder.Write("bad.xml", "<a>").toStdString();
    EXPECT_EQ(RunTool({"query", good, good + ".gone", "a"}).status, 2);
    EXPECT_EQ(RunTool({"query", bad, good, "a"}).status, 2);
    EXPECT_EQ(RunTool({"query", bad, good, "a"}).output, good + ":1:5\t/a\n");
    const std::string other = folder.Write("other.xml", "<b/>").toStdString();
    EXPECT_EQ(RunTool({"query", other, good, "a"}).status, 0);
    EXPECT_EQ(RunTool({"query", other, good, "c"}).status, 1);
}

TEST(QueryCommandTest, PathStandsInFrontOfTheFilesIfNoFileHasItsName)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.xml", "<a/>").toStdString();
    EXPECT_EQ(RunTool({"query", "/a", a}).output, "1:5\t/a\n");
    EXPECT_EQ(RunTool({"query", "--at", "/a", a, a + ".gone"}).output, a + ":1:5\t/a\n");
    const ToolResult noPath = RunTool({"query", a});
    EXPECT_EQ(noPath.status, 2);
    EXPECT_THAT(noPath.errors, HasSubstr("PATH"));
}

TEST(QueryCommandTest, PathStandsInFrontOfAQuotedPattern)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.xml", "<a/>").toStdString();
    const std::string pattern = folder.Path("*.xml").toStdString();
    EXPECT_EQ(RunTool({"query", "//a", pattern}).output, "1:5\t/a\n");
    EXPECT_EQ(RunTool({"query", pattern, "//a"}).output, "1:5\t/a\n");
}

TEST(QueryCommandTest, ForgottenOrMisplacedPathGetsAHint)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.xml", "<a/>").toStdString();
    const std::string b = folder.Write("b.xml", "<a/>").toStdString();
    const ToolResult forgotten = RunTool({"query", a, b});
    EXPECT_EQ(forgotten.status, 2);
    EXPECT_THAT(forgotten.errors,
        StartsWith("vanxml: query needs a PATH behind the files, but '" + b +
            "' is a file; if it is also the path, write --at '" + b + "'\nRun 'vanxml help query'"));
    EXPECT_EQ(RunTool({"query", "--files-from", "-", b}, a + "\n").status, 2);
    for (const char* last : {"none.xml", "none/*.xml"}) {
        const ToolResult misplaced = RunTool({"query", "//a", a, last});
        EXPECT_EQ(misplaced.status, 2);
        EXPECT_THAT(
            misplaced.errors, StartsWith("vanxml: there is no file '//a'; if it is the path, write --at '//a'\nRun "));
    }
}

TEST(QueryCommandTest, ImpossibleNamesInOptionsGetAHint)
{
    const std::pair<std::vector<std::string>, const char*> mistakes[] = {
        {{"--attribute", ""}, "vanxml: --attribute: '' is not the name of an attribute\n"},
        {{"--attribute", "@id"}, "vanxml: --attribute: '@id' is not the name of an attribute; write 'id'\n"},
        {{"--within", "a b"}, "vanxml: --within: 'a b' is not the name of an element\n"},
        {{"--within", ""}, "vanxml: --within: '' is not the name of an element\n"},
        {{"--within", "*"}, "vanxml: --within: '*' is not a wildcard here; write the name of an element\n"},
    };
    for (const auto& [options, message] : mistakes) {
        std::vector<std::string> arguments{"library"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ToolResult result = RunQuery(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, StartsWith(message));
    }
}

TEST(QueryCommandTest, PathStandsAloneBesideAListOfFiles)
{
    const testsupport::TemporaryFolder folder;
    const std::string a = folder.Write("a.xml", "<a/>").toStdString();
    EXPECT_EQ(RunTool({"query", "--files-from", "-", "a"}, a + "\n").output, a + ":1:5\t/a\n");
    EXPECT_EQ(RunTool({"query", "--files-from", "-", "--at", "a"}, a + "\n").output, a + ":1:5\t/a\n");
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
