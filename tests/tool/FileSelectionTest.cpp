// Which files the commands select. "vanxml format --check" prints the names of all files that it selects here, because
// each of them would change.
#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testing::StartsWith;

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
    EXPECT_EQ(Select({"--recursive", "docs"}), Native("docs/b/c/d.kxb\ndocs/b.kxf\ndocs/z.kxa\n"));
    EXPECT_EQ(Select({"--recursive", "docs/"}), "docs/b/c/d.kxb\ndocs/b.kxf\ndocs/z.kxa\n");
    EXPECT_EQ(Select({"--recursive", "."}), Native("./docs/b/c/d.kxb\n./docs/b.kxf\n./docs/z.kxa\n"));
}

TEST_F(FileSelectionTest, IncludeReplacesTheDefaultPatternsAndCanBeRepeated)
{
    for (const char* name : {"docs/a.kxa", "docs/b.xml", "docs/c/d.svg", "docs/e.txt"})
        Write(name);
    EXPECT_EQ(Select({"--recursive", "--include", "*.xml", "docs"}), Native("docs/b.xml\n"));
    EXPECT_EQ(Select({"--include", "*.xml", "--include", "[a-d].s?g", "docs", "--recursive"}),
        Native("docs/b.xml\ndocs/c/d.svg\n"));
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
    EXPECT_EQ(result.errors, "vanxml: no file in the folder 'docs' matches *.x or *.y\n");
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
    EXPECT_EQ(Select({"--recursive", ".docs"}), Native(".docs/a.kxa\n"));
}

TEST_F(FileSelectionTest, ExpandsPatternsThatTheShellDidNotExpand)
{
    for (const char* name : {"b.kxa", "a.kxa", ".c.kxa", "x/1.kxa", "y/1.kxa", "y/2.kxa", ".z/1.kxa"})
        Write(name);
    EXPECT_EQ(Select({"*.kxa"}), "a.kxa\nb.kxa\n");
    EXPECT_EQ(Select({".*.kxa"}), ".c.kxa\n");
    EXPECT_EQ(Select({"*/1.kxa"}), "x/1.kxa\ny/1.kxa\n");
    EXPECT_EQ(Select({"./[xy]/?.kxa"}), "./x/1.kxa\n./y/1.kxa\n./y/2.kxa\n");
    EXPECT_EQ(Select({"--recursive", "[xy]"}), Native("x/1.kxa\ny/1.kxa\ny/2.kxa\n"));
    const std::string path = m_folder.Path("y").toStdString();
    EXPECT_EQ(Select({path + "/*"}), path + "/1.kxa\n" + path + "/2.kxa\n");
}

TEST_F(FileSelectionTest, PatternWithoutAMatchIsAnErrorAndTheOtherFilesAreSelected)
{
    Write("a.kxa");
    const ToolResult result = Run({"*.kxb", "a.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "a.kxa\n");
    EXPECT_EQ(result.errors, "vanxml: no file matches '*.kxb'\n");
}

TEST_F(FileSelectionTest, FileTwiceIsSelectedOnce)
{
    Write("docs/a.kxa");
    Write("docs/b.kxa");
    EXPECT_EQ(
        Select({"docs/b.kxa", "docs/../docs/b.kxa", "docs/*", "--recursive", "docs"}), "docs/b.kxa\ndocs/a.kxa\n");
}

TEST_F(FileSelectionTest, ListNamesFilesAndFoldersBehindTheArguments)
{
    for (const char* name : {"a.kxa", "b c.xml", "docs/d.kxa", "z.kxa"})
        Write(name);
    m_folder.Write("list", "b c.xml\r\n\na.kxa\ndocs\nz.kxa");
    EXPECT_EQ(Select({"--recursive", "--files-from", "list", "z.kxa"}), Native("z.kxa\nb c.xml\na.kxa\ndocs/d.kxa\n"));
}

TEST_F(FileSelectionTest, ListMayBeStandardInputAndSeparatedByNuls)
{
    Write("a.kxa");
    Write("b.kxa");
    const std::string folder = m_folder.Path("").toStdString();
    const std::vector<std::string> arguments{"format", "--check", "--files-from", "-"};
    EXPECT_EQ(RunProgram(VANXML_PATH, arguments, "a.kxa\nb.kxa\n", "", folder).output, "a.kxa\nb.kxa\n");
    EXPECT_EQ(
        RunProgram(VANXML_PATH, arguments, std::string("b.kxa\0a.kxa\0", 12), "", folder).output, "b.kxa\na.kxa\n");
}

TEST_F(FileSelectionTest, PatternsAndDashesInAListAreOrdinaryNames)
{
    Write("a.kxa");
    m_folder.Write("list", "*.kxa\n-\n");
    const ToolResult result = Run({"--files-from", "list"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot read \"*.kxa\": "));
    EXPECT_THAT(result.errors, HasSubstr("Cannot read \"./-\": "));
}

TEST_F(FileSelectionTest, ListMayBeginWithAByteOrderMarkOfUtf8ButNotOfUtf16)
{
    Write("a.kxa");
    m_folder.Write("list",
        "\xEF\xBB\xBF"
        "a.kxa\n");
    EXPECT_EQ(Select({"--files-from", "list"}), "a.kxa\n");
    for (const std::string& list : {std::string("\xFF\xFE"
                                                "a\0",
                                        4),
             std::string("\xFE\xFF\0a", 4)}) {
        m_folder.Write("list", list);
        const ToolResult result = Run({"--files-from", "list"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.errors, "vanxml: the list 'list' is UTF-16; save it as UTF-8\n");
    }
}

TEST_F(FileSelectionTest, EmptyListSelectsNothing)
{
    m_folder.Write("list", "");
    EXPECT_EQ(Select({"--files-from", "list"}), "");
}

TEST_F(FileSelectionTest, MistakesInTheUseOfAListAreErrors)
{
    EXPECT_THAT(Run({"--files-from", "-", "-"}).errors, StartsWith("vanxml: standard input can be read only once\n"));
    EXPECT_THAT(Run({"--files-from", "missing"}).errors, StartsWith("vanxml: Cannot read \"missing\": "));
    EXPECT_THAT(Run({}).errors, StartsWith("vanxml: FILE is required\n"));
    m_folder.Write("list", "a\xFF.kxa\n");
    EXPECT_EQ(Run({"--files-from", "list"}).errors, "vanxml: the name of the file 'a\\xff.kxa' is not UTF-8\n");
    const std::string folder = m_folder.Path("").toStdString();
    EXPECT_THAT(RunProgram(VANXML_PATH, {"format", "--files-from", "list"}, "", "", folder).errors,
        StartsWith("vanxml: --files-from needs --in-place, --check or --diff\n"));
    const ToolResult noName = Run({"--files-from", ""});
    EXPECT_EQ(noName.status, 2);
    EXPECT_THAT(noName.errors, StartsWith("vanxml: --files-from: the name of the list is empty\nRun "));
}

TEST_F(FileSelectionTest, StandardInputTwiceIsAnError)
{
    EXPECT_THAT(Run({"-", "-"}).errors, StartsWith("vanxml: standard input can be read only once\n"));
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
        arguments.insert(arguments.begin(), {"check", "--schema", "none"});
        return RunProgram(VANXML_PATH, arguments, std::string(), std::string(), folder);
    };
    EXPECT_EQ(check({"--recursive", "docs", "*.kxa"}).output, "3 documents, 0 errors\n");
    EXPECT_EQ(check({"--recursive", "docs", "--include", "*.xml"}).output, "1 document, 0 errors\n");
    const ToolResult result = check({"docs", "e.kxa"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "1 document, 0 errors, 1 not checked\n");
    EXPECT_THAT(result.errors, HasSubstr("needs --recursive"));
}

TEST_F(FileSelectionTest, NamesThatDifferInAByteOrderMarkAreTwoFiles)
{
    for (const char* name : {"a.kxa", "\uFEFFa.kxa"})
        Write(name);
    EXPECT_EQ(Select({"\uFEFFa.kxa", "a.kxa"}), "\uFEFFa.kxa\na.kxa\n");
}

TEST_F(FileSelectionTest, DeeplyNestedFolders)
{
    std::string name = "docs";
    for (int level = 0; level < 200; ++level)
        name += "/d";
    Write(name + "/a.kxa");
    EXPECT_EQ(Select({"--recursive", "docs"}), Native(name + "/a.kxa\n"));
}

// These tests need names of bytes, named pipes in folders, permissions without an owner, or symbolic links, which
// Windows lets only some users create. WindowsTest.cpp tests junctions.
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

TEST_F(FileSelectionTest, FilesOfALinkedFolderAreSelectedOnce)
{
    Write("docs/a.kxa");
    Write("docs/b.kxa");
    Write("c.kxa");
    Link("docs", "link");
    EXPECT_EQ(Select({"link/a.kxa", "c.kxa", "docs/a.kxa", "docs/b.kxa", "./c.kxa", "link/b.kxa", "link/../c.kxa"}),
        "link/a.kxa\nc.kxa\ndocs/b.kxa\n");
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
        EXPECT_EQ(result.errors, "vanxml: the name of the file 'docs/b\\xff.kxa' is not UTF-8\n");
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
#endif
