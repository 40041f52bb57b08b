// Which files the commands select. "vanxml format --check" prints the names of all files that it selects here, because
// each of them would change.
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;

namespace {

class FileSelectionTest : public testing::Test {
protected:
    void Write(const std::string& name) const
    {
        const QString path = m_folder.Path(VString::fromStdString(name)).ToQString();
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        m_folder.Write(VString::fromStdString(name), "<a><b/></a>");
    }

    void Link(const char* target, const char* name) const
    {
        EXPECT_TRUE(QFile::link(target, m_folder.Path(name).ToQString()));
    }

    ToolResult Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"format", "--check"});
        return RunProgram(VANXML_PATH, arguments, std::string(), std::string(), m_folder.Path("").toStdString());
    }

    // Returns the selected names, each with a line feed.
    std::string Select(const std::vector<std::string>& arguments) const
    {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    testsupport::TemporaryFolder m_folder;
};

}  // namespace

TEST_F(FileSelectionTest, FolderWithoutRecursiveIsAnErrorAndTheOtherFilesAreSelected)
{
    Write("docs/a.kxa");
    Write("b.kxa");
    const ToolResult result = Run({"docs", "b.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "b.kxa\n");
    EXPECT_EQ(result.errors, "vanxml: Cannot read \"docs\": it is a folder, which needs --recursive\n");
}

TEST_F(FileSelectionTest, SelectsTheDocumentsOfAFolderInAllLevelsSorted)
{
    for (const char* name : {"docs/z.kxa", "docs/b/c/d.kxb", "docs/b.kxf", "docs/a.kxg", "docs/a.xml", "docs/kxa"})
        Write(name);
    EXPECT_EQ(Select({"--recursive", "docs"}), "docs/b/c/d.kxb\ndocs/b.kxf\ndocs/z.kxa\n");
    EXPECT_EQ(Select({"--recursive", "docs/"}), "docs/b/c/d.kxb\ndocs/b.kxf\ndocs/z.kxa\n");
    EXPECT_EQ(Select({"--recursive", "."}), "./docs/b/c/d.kxb\n./docs/b.kxf\n./docs/z.kxa\n");
}

TEST_F(FileSelectionTest, IncludeReplacesTheDefaultPatternsAndCanBeRepeated)
{
    for (const char* name : {"docs/a.kxa", "docs/b.xml", "docs/c/d.svg", "docs/e.txt"})
        Write(name);
    EXPECT_EQ(Select({"--recursive", "--include", "*.xml", "docs"}), "docs/b.xml\n");
    EXPECT_EQ(
        Select({"--include", "*.xml", "--include", "[a-d].s?g", "docs", "--recursive"}), "docs/b.xml\ndocs/c/d.svg\n");
}

TEST_F(FileSelectionTest, IncludeDoesNotRestrictFilesThatAreNamed)
{
    Write("a.txt");
    EXPECT_EQ(Select({"a.txt", "--include", "*.xml"}), "a.txt\n");
}

TEST_F(FileSelectionTest, FolderWithoutAMatchIsAnError)
{
    Write("docs/a.xml");
    const ToolResult result = Run({"--recursive", "docs", "--include", "*.x", "--include", "*.y"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: No file in the folder \"docs\" matches *.x or *.y\n");
}

TEST_F(FileSelectionTest, PatternThatIsNotForNamesIsAnError)
{
    Write("docs/a.kxa");
    for (const char* pattern : {"", "docs/*.kxa", "["}) {
        const ToolResult result = Run({"--recursive", "docs", "--include", pattern});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.errors, HasSubstr("is not a pattern for the name of a file"));
    }
}

TEST_F(FileSelectionTest, SkipsHiddenEntriesOfFolders)
{
    for (const char* name : {".docs/a.kxa", ".docs/.b.kxa", ".docs/.c/d.kxa"})
        Write(name);
    EXPECT_EQ(Select({"--recursive", ".docs"}), ".docs/a.kxa\n");
}

TEST_F(FileSelectionTest, ExpandsPatternsThatTheShellDidNotExpand)
{
    for (const char* name : {"b.kxa", "a.kxa", ".c.kxa", "x/1.kxa", "y/1.kxa", "y/2.kxa", ".z/1.kxa"})
        Write(name);
    EXPECT_EQ(Select({"*.kxa"}), "a.kxa\nb.kxa\n");
    EXPECT_EQ(Select({".*.kxa"}), ".c.kxa\n");
    EXPECT_EQ(Select({"*/1.kxa"}), "x/1.kxa\ny/1.kxa\n");
    EXPECT_EQ(Select({"./[xy]/?.kxa"}), "./x/1.kxa\n./y/1.kxa\n./y/2.kxa\n");
    EXPECT_EQ(Select({"--recursive", "[xy]"}), "x/1.kxa\ny/1.kxa\ny/2.kxa\n");
    const std::string path = m_folder.Path("y").toStdString();
    EXPECT_EQ(Select({path + "/*"}), path + "/1.kxa\n" + path + "/2.kxa\n");
}

TEST_F(FileSelectionTest, PatternWithoutAMatchIsAnErrorAndTheOtherFilesAreSelected)
{
    Write("a.kxa");
    const ToolResult result = Run({"*.kxb", "a.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "a.kxa\n");
    EXPECT_EQ(result.errors, "vanxml: No file matches \"*.kxb\"\n");
}

TEST_F(FileSelectionTest, FileTwiceIsSelectedOnce)
{
    Write("docs/a.kxa");
    Write("docs/b.kxa");
    EXPECT_EQ(
        Select({"docs/b.kxa", "docs/../docs/b.kxa", "docs/*", "--recursive", "docs"}), "docs/b.kxa\ndocs/a.kxa\n");
}

TEST_F(FileSelectionTest, StandardInputTwiceIsAnError)
{
    EXPECT_EQ(Run({"-", "-"}).errors, "vanxml: FILE: standard input can be read only once\n");
}

TEST_F(FileSelectionTest, MissingFileIsAnErrorAndTheOtherFilesAreSelected)
{
    Write("a.kxa");
    const ToolResult result = Run({"missing.kxa", "a.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "a.kxa\n");
    EXPECT_THAT(result.errors, HasSubstr("Cannot read \"missing.kxa\": "));
}

TEST_F(FileSelectionTest, CheckSelectsTheSameFiles)
{
    for (const char* name : {"docs/a.kxa", "docs/b/c.kxb", "docs/d.xml", "e.kxa"})
        Write(name);
    const std::string folder = m_folder.Path("").toStdString();
    const auto check = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "check");
        return RunProgram(VANXML_PATH, arguments, std::string(), std::string(), folder);
    };
    EXPECT_EQ(check({"--recursive", "docs", "*.kxa"}).output, "3 documents, 0 errors\n");
    EXPECT_EQ(check({"--recursive", "docs", "--include", "*.xml"}).output, "1 document, 0 errors\n");
    const ToolResult result = check({"docs", "e.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "1 document, 0 errors, 1 not checked\n");
    EXPECT_THAT(result.errors, HasSubstr("needs --recursive"));
}

#if !defined(_WIN32)
TEST_F(FileSelectionTest, SkipsSymbolicLinksToFoldersButFollowsLinksToFiles)
{
    Write("docs/a/b.kxa");
    Write("other/c.kxa");
    Link("..", "docs/a/loop");
    Link("../other", "docs/other");
    Link("../other/c.kxa", "docs/link.kxa");
    EXPECT_EQ(Select({"--recursive", "docs"}), "docs/a/b.kxa\ndocs/link.kxa\n");
    EXPECT_EQ(Select({"--recursive", "docs/other"}), "docs/other/c.kxa\n");
}

TEST_F(FileSelectionTest, LinkAndItsTargetAreSelectedOnce)
{
    Write("a.kxa");
    Link("a.kxa", "b.kxa");
    EXPECT_EQ(Select({"b.kxa", "a.kxa"}), "b.kxa\n");
}

TEST_F(FileSelectionTest, DanglingLinkInAFolderIsAnError)
{
    Write("docs/a.kxa");
    Link("gone", "docs/b.kxa");
    const ToolResult result = Run({"--recursive", "docs"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "docs/a.kxa\n");
    EXPECT_EQ(result.errors, "vanxml: Cannot read \"docs/b.kxa\": No such file or directory\n");
}

TEST_F(FileSelectionTest, SkipsPipesInFoldersAndPatterns)
{
    Write("docs/a.kxa");
    EXPECT_EQ(RunProgram("mkfifo", {m_folder.Path("docs/b.kxa").toStdString()}).status, 0);
    EXPECT_EQ(Select({"--recursive", "docs"}), "docs/a.kxa\n");
    EXPECT_EQ(Select({"docs/*.kxa"}), "docs/a.kxa\n");
}

// A name that is not UTF-8 must neither be skipped nor stand for its neighbour.
TEST_F(FileSelectionTest, NamesThatAreNotUtf8AreErrorsInFoldersAndPatterns)
{
    Write("docs/a.kxa");
    Write("docs/b\uFFFD.kxa");
    const std::string script = "cd \"$1\" && touch \"$(printf 'docs/b\\377.kxa')\" \"$(printf 'docs/b\\377.txt')\"";
    EXPECT_EQ(RunProgram("sh", {"-c", script, "sh", m_folder.Path("").toStdString()}).status, 0);
    for (const std::vector<std::string>& arguments :
        {std::vector<std::string>{"--recursive", "docs"}, {"docs/*.kxa"}}) {
        const ToolResult result = Run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "docs/a.kxa\ndocs/b\uFFFD.kxa\n");
        EXPECT_EQ(result.errors, "vanxml: The name of the file \"docs/b\\xff.kxa\" is not UTF-8\n");
    }
    // QTemporaryDir cannot remove these names.
    EXPECT_EQ(RunProgram("rm", {"-r", m_folder.Path("docs").toStdString()}).status, 0);
}

TEST_F(FileSelectionTest, NamesAreUtf8InAnyLocale)
{
    Write("größe/漢.kxa");
    const std::vector<std::string> arguments{
        "LC_ALL=C", VANXML_PATH, "format", "--check", "--recursive", "größe", "gr*/*"};
    const std::string folder = m_folder.Path("").toStdString();
    EXPECT_EQ(RunProgram("env", arguments, std::string(), std::string(), folder).output, "größe/漢.kxa\n");
}

TEST_F(FileSelectionTest, LockedFolderIsAnErrorAndTheOtherFilesAreSelected)
{
#  if defined(__linux__)
    if (RunToolAsOrdinaryUser({"--version"}).status != 0)
        GTEST_SKIP() << "an ordinary user cannot run the tool";
    Write("docs/a.kxa");
    Write("docs/locked/b.kxa");
    for (const char* name : {"", "docs"}) {
        const QString path = m_folder.Path(name).ToQString();
        ASSERT_TRUE(QFile::setPermissions(path, QFile::permissions(path) | QFile::ReadOther | QFile::ExeOther));
    }
    const QString locked = m_folder.Path("docs/locked").ToQString();
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::Permissions()));
    const std::string docs = m_folder.Path("docs").toStdString();
    const ToolResult result = RunToolAsOrdinaryUser({"format", "--check", "--recursive", docs});
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, docs + "/a.kxa\n");
    EXPECT_EQ(result.errors, "vanxml: Cannot read \"" + docs + "/locked\": Permission denied\n");
#  endif
}

TEST_F(FileSelectionTest, DeeplyNestedFolders)
{
    std::string name = "docs";
    for (int level = 0; level < 200; ++level)
        name += "/d";
    Write(name + "/a.kxa");
    EXPECT_EQ(Select({"--recursive", "docs"}), name + "/a.kxa\n");
}
#endif
