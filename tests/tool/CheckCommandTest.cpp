#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::TemporaryFolder;

TEST(CheckCommandTest, CountsDocumentsWithoutErrors)
{
    const TemporaryFolder folder;
    const ToolResult result =
        RunTool({"check", folder.Write("a.xml", "<a/>").toStdString(), folder.Write("b.xml", "<b/>").toStdString()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "2 documents, 0 errors\n");
}

TEST(CheckCommandTest, PrintsTheFileAndThePlaceOfAnError)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a>\n  <b></c>\n</a>").toStdString();
    const ToolResult result = RunTool({"check", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith(file + ":2:"));
    EXPECT_THAT(result.errors, HasSubstr("\n  2 |   <b></c>\n"));
    EXPECT_EQ(result.output, "1 document, 1 error\n");
}

TEST(CheckCommandTest, ReadsStandardInput)
{
    const ToolResult result = RunTool({"check", "-"}, "<a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith("-:1:"));
}

TEST(CheckCommandTest, MissingFileEndsWithStatus2AndTheOtherFilesAreChecked)
{
    const TemporaryFolder folder;
    const std::string bad = folder.Write("bad.xml", "<a>").toStdString();
    const std::string good = folder.Write("good.xml", "<a/>").toStdString();
    const ToolResult result = RunTool({"check", bad, folder.Path("missing.xml").toStdString(), good});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("missing.xml"));
    EXPECT_EQ(result.output, "2 documents, 1 error, 1 not checked\n");
}

TEST(CheckCommandTest, ErrorsArePrintedInTheOrderOfTheArguments)
{
    const TemporaryFolder folder;
    std::vector<std::string> arguments{"check", "--jobs", "4"};
    std::vector<std::string> expected;
    for (int i = 0; i < 40; ++i) {
        // Earlier documents take longer to check.
        const std::string text = "<a>" + std::string(static_cast<std::size_t>(40 - i) * 20000, 'x');
        arguments.push_back(folder.Write(VString::number(i), text).toStdString());
        expected.push_back(arguments.back());
    }
    const ToolResult result = RunTool(arguments);
    std::vector<std::string> files;
    std::istringstream lines(FirstLines(result.errors));
    for (std::string line; std::getline(lines, line);)
        files.push_back(line.substr(0, line.find(":1:")));
    EXPECT_EQ(files, expected);
}

TEST(CheckCommandTest, PositionOfARejectedEntityCountsLeadingBlankLines)
{
    const ToolResult result = RunTool({"check", "-"}, "\n\n  <!DOCTYPE a [\n<!ENTITY e SYSTEM 'x'>]><a/>");
    EXPECT_THAT(result.errors, StartsWith("-:4:"));
}

TEST(CheckCommandTest, PositionsReferToTheFileDespiteLeadingSpaceAndColonAttributes)
{
    // The plain tag is as long as the tag with colons, so both errors have the same column.
    const std::string plain = RunTool({"check", "-"}, "<a  b='1'  c='2'></x>").errors;
    EXPECT_THAT(plain, StartsWith("-:1:"));
    const std::string shifted = RunTool({"check", "-"}, "\n\n\n<a :b='1' :c='2'></x>").errors;
    EXPECT_EQ(FirstLines(shifted), "-:4:" + FirstLines(plain).substr(std::string("-:1:").size()));
}

TEST(CheckCommandTest, WarnsOfWhiteSpaceInFrontOfEveryXmlDeclaration)
{
    for (const char blank : {' ', '\t', '\r', '\n'}) {
        const ToolResult result = RunTool({"check", "-"}, std::string("\n <?xml") + blank + "version='1.0'?><a/>");
        EXPECT_THAT(result.errors, StartsWith("-:2:2: warning: white space stands in front of the XML declaration"));
    }
    EXPECT_EQ(RunTool({"check", "-"}, "\n <?xml-stylesheet x?><a/>").errors, "");
}

TEST(CheckCommandTest, XmlVersionOfADocumentDoesNotAffectTheNext)
{
    const TemporaryFolder folder;
    const std::string newer = folder.Write("1.xml", "<?xml version='1.1'?><a>\x01</a>").toStdString();
    const std::string older = folder.Write("2.xml", "<a>&#1;</a>").toStdString();
    const ToolResult alone = RunTool({"check", older});
    const ToolResult after = RunTool({"check", "--jobs", "1", newer, older});
    EXPECT_EQ(alone.status, 1);
    EXPECT_THAT(after.errors, HasSubstr(alone.errors));
}

#if defined(__linux__)
TEST(CheckCommandTest, FullDiskIsAnError)
{
    const ToolResult result = RunProgram(VANXML_PATH, {"check", "-"}, "<a/>", "/dev/full");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write standard output: "));
}
#endif
