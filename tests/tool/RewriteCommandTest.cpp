// The modes of the commands that rewrite documents, with "vanxml format" as the command.
#include <QDateTime>
#include <QStandardPaths>

#include <filesystem>

#include "tests/tool/ToolRun.h"

namespace {

const char* const FormattedText = "<a>\n  <b />\n</a>\n";

class RewriteCommandTest : public testing::Test {
protected:
    std::string Read(const char* name) const { return testsupport::TemporaryFolder::Read(m_folder.Path(name)); }

    ToolResult Run(const std::vector<std::string>& arguments, const std::string& input = std::string()) const
    {
        std::vector<std::string> all{"format", "--no-header"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProgram(VANXML_PATH, all, input, std::string(), m_folder.Path("").toStdString());
    }

    testsupport::TemporaryFolder m_folder;
};

}  // namespace

TEST_F(RewriteCommandTest, SeveralDocumentsNeedAModeThatKeepsThemApart)
{
    m_folder.Write("a.xml", "<a/>");
    m_folder.Write("b.xml", "<a/>");
    const std::vector<std::string> mistakes[] = {
        {"a.xml", "b.xml"}, {"a.xml", "b.xml", "-o", "c.xml"}, {"?.xml"}, {"a.xml", "b.xml", "-o", "-"}};
    for (const std::vector<std::string>& arguments : mistakes) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(
            result.errors, testing::StartsWith("vanxml: several documents need --in-place, --check or --diff\n"));
    }
    EXPECT_EQ(NamesInFolderOf(m_folder.Path("a.xml")).size(), 2u);
}

TEST_F(RewriteCommandTest, FolderWithOneDocumentNeedsAMode)
{
    m_folder.Write("a.kxa", "<a/>");
    for (const std::vector<std::string>& output : {std::vector<std::string>(), {"-o", "b.kxa"}}) {
        std::vector<std::string> arguments{"--recursive", "."};
        arguments.insert(arguments.end(), output.begin(), output.end());
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("vanxml: a folder needs --in-place, --check or --diff\n"));
    }
}

TEST_F(RewriteCommandTest, PatternForOneDocumentWritesItToStandardOutput)
{
    m_folder.Write("a.kxa", "<a><b/></a>");
    EXPECT_EQ(Run({"*.kxa"}).output, FormattedText);
}

TEST_F(RewriteCommandTest, InPlaceRewritesAllDocuments)
{
    std::vector<std::string> arguments{"--in-place", "--jobs", "4"};
    for (int i = 0; i < 50; ++i)
        arguments.push_back(m_folder.Write(VString::number(i), "<a><b/></a>").toStdString());
    const ToolResult result = Run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(testsupport::TemporaryFolder::Read(m_folder.Path(VString::number(i))), FormattedText);
}

TEST_F(RewriteCommandTest, BadDocumentsDoNotStopTheOthers)
{
    m_folder.Write("1.xml", "<a><b/></a>");
    m_folder.Write("2.xml", "<a>");
    m_folder.Write("4.xml", "<a>\xFF</a>");
    m_folder.Write("5.xml", "<a><b/></a>");
    const ToolResult result = Run({"--in-place", "1.xml", "2.xml", "3.xml", "4.xml", "5.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(FirstLines(result.errors),
        ContainsExpression("\\A2\\.xml:1:[^\n]*\nvanxml: Cannot read \"3\\.xml\": [^\n]*\n"
                           "[^\n]*4\\.xml[^\n]*\n\\z"));
    EXPECT_EQ(Read("1.xml"), FormattedText);
    EXPECT_EQ(Read("2.xml"), "<a>");
    EXPECT_EQ(Read("5.xml"), FormattedText);
}

TEST_F(RewriteCommandTest, WorstStatusCounts)
{
    m_folder.Write("faulty.xml", "<a>");
    m_folder.Write("good.xml", FormattedText);
    EXPECT_EQ(Run({"--check", "good.xml"}).status, 0);
    EXPECT_EQ(Run({"--check", "faulty.xml", "good.xml"}).status, 1);
    EXPECT_EQ(Run({"--check", "missing.xml", "faulty.xml", "good.xml"}).status, 2);
}

TEST_F(RewriteCommandTest, CheckPrintsTheNamesThatWouldChange)
{
    m_folder.Write("1.xml", "<a><b/></a>");
    m_folder.Write("2.xml", FormattedText);
    // A name on Windows cannot contain a line feed.
    m_folder.Write("3\u202E.xml", "<a><b/></a>");
    const ToolResult result = Run({"--check", "1.xml", "2.xml", "3\u202E.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "1.xml\n3\\u202e.xml\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(Read("1.xml"), "<a><b/></a>");
}

TEST_F(RewriteCommandTest, CheckOfStandardInputNamesADash)
{
    const ToolResult result = Run({"--check", "-"}, "<a><b/></a>");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "-\n");
    EXPECT_EQ(Run({"--check", "-"}, FormattedText).status, 0);
}

TEST_F(RewriteCommandTest, DiffPrintsTheChangesOfAllDocumentsInOrder)
{
    m_folder.Write("1.xml", "<a>\n  <b/>\n</a>\n");
    m_folder.Write("2.xml", FormattedText);
    m_folder.Write("3.xml", "<c/>\n");
    const ToolResult result = Run({"--diff", "3.xml", "2.xml", "1.xml"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
        "--- 3.xml\n+++ 3.xml\n@@ -1,1 +1,1 @@\n-<c/>\n+<c />\n"
        "--- 1.xml\n+++ 1.xml\n@@ -1,3 +1,3 @@\n <a>\n-  <b/>\n+  <b />\n </a>\n");
    EXPECT_EQ(Read("3.xml"), "<c/>\n");
}

TEST_F(RewriteCommandTest, CheckWithDiffPrintsTheDiffAndEndsWithStatus1)
{
    m_folder.Write("1.xml", "<a/>\n");
    const ToolResult result = Run({"--check", "--diff", "1.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "--- 1.xml\n+++ 1.xml\n@@ -1,1 +1,1 @@\n-<a/>\n+<a />\n");
    m_folder.Write("1.xml", "<a />\n");
    EXPECT_EQ(Run({"--check", "--diff", "1.xml"}).status, 0);
}

TEST_F(RewriteCommandTest, InPlaceDoesNotTouchFilesThatStayTheSame)
{
    const QString file = m_folder.Write("a.xml", FormattedText).ToQString();
    // A second name of the same file shows whether the file was replaced.
    std::filesystem::create_hard_link(file.toStdU16String(), m_folder.Path("b.xml").View());
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    {
        QFile open(file);
        ASSERT_TRUE(open.open(QIODevice::ReadWrite));
        ASSERT_TRUE(open.setFileTime(old, QFileDevice::FileModificationTime));
    }
    EXPECT_EQ(Run({"--in-place", "a.xml"}).status, 0);
    EXPECT_EQ(QFileInfo(file).lastModified(), old);
    m_folder.Write("b.xml", "through the other name");
    EXPECT_EQ(Read("a.xml"), "through the other name");
}

TEST_F(RewriteCommandTest, DiffAppliesWithTheProgramPatch)
{
    if (QStandardPaths::findExecutable("patch").isEmpty())
        GTEST_SKIP() << "no program patch (with Wine: patch.exe) is in PATH";
    m_folder.Write("a b.xml", "<a><b/></a>");
    m_folder.Write("c.xml", "<a>\r\n<b/>\r\n<c/></a>\r\n");
    const ToolResult diff = Run({"--diff", "a b.xml", "c.xml"});
    const std::string folder = m_folder.Path("").toStdString();
    EXPECT_EQ(RunProgram("patch", {"--binary", "-p0"}, diff.output, std::string(), folder).status, 0);
    EXPECT_EQ(Read("a b.xml"), FormattedText);
    EXPECT_EQ(Read("c.xml"), "<a>\r\n  <b />\r\n  <c />\r\n</a>\r\n");
}

// WindowsTest.cpp tests the named pipes of Windows.
#if !defined(_WIN32)
TEST_F(RewriteCommandTest, ReadsNamedPipes)
{
    const std::string script = "mkfifo pipe && { printf '<a><b/></a>' > pipe & \"$1\" format --no-header pipe; }";
    const std::string folder = m_folder.Path("").toStdString();
    const std::vector<std::string> arguments{"-c", script, "sh", VANXML_PATH};
    EXPECT_EQ(RunProgram("sh", arguments, std::string(), std::string(), folder).output, FormattedText);
}
#endif
