#include <filesystem>

#include "tests/tool/ToolRun.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testsupport::TemporaryFolder;

TEST(InPlaceTest, ReplacesTheFileAndLeavesNoTemporaryFile)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a><b/></a>");
    const ToolResult result = RunTool({"format", "--in-place", file.toStdString()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
}

TEST(InPlaceTest, ReplacesFilesWithTheLongestNames)
{
    // A name has at most 255 bytes. "ö" takes two of them, the emoji four.
    std::vector<VString> names{std::string(249, 'a').c_str(), std::string(255, 'a').c_str()};
    names.push_back(VString::fromStdString(std::string(253, 'a') + "ö"));
    names.push_back(VString::fromStdString(std::string(251, 'a') + "😀"));
    for (const VString& name : names) {
        const TemporaryFolder folder;
        const std::string file = folder.Write(name, "<a><b/></a>").toStdString();
        const ToolResult result = RunTool({"format", "--in-place", file});
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(TemporaryFolder::Read(folder.Path(name)), Header() + "<a>\n  <b />\n</a>\n");
        EXPECT_THAT(NamesInFolderOf(folder.Path(name)), ElementsAre(name.toStdString()));
    }
}

TEST(InPlaceTest, CreatesFilesWithTheLongestNames)
{
    const TemporaryFolder folder;
    std::string ideographs;
    while (ideographs.size() < 255)
        ideographs += "漢";
    for (const std::string& name : {std::string(255, 'a'), ideographs}) {
        const std::string file = folder.Path(VString::fromStdString(name)).toStdString();
        EXPECT_EQ(RunTool({"format", "-", "-o", file}, "<a/>").status, 0);
        EXPECT_EQ(TemporaryFolder::Read(VString::fromStdString(file)), Header() + "<a />\n");
    }
    EXPECT_EQ(NamesInFolderOf(folder.Path("a")).size(), 2u);
}

TEST(InPlaceTest, TooLongNameIsAnError)
{
    const TemporaryFolder folder;
    const std::string file = folder.Path(VString::fromStdString(std::string(256, 'a'))).toStdString();
    const ToolResult result = RunTool({"format", "-", "-o", file}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"" + file + "\": "));
    EXPECT_THAT(NamesInFolderOf(folder.Path("a")), ElementsAre());
}

TEST(InPlaceTest, FileWithErrorsStaysUnchanged)
{
    const TemporaryFolder folder;
    const std::string bytes = "<a>\r\n<b></a>\n";
    const VString file = folder.Write("a.xml", bytes);
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString()}).status, 1);
    EXPECT_EQ(TemporaryFolder::Read(file), bytes);
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
}

// On Windows, a file has an access list instead of these permissions, and QFile::link makes a shortcut.
#if !defined(_WIN32)
TEST(InPlaceTest, KeepsThePermissions)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a/>");
    const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    ASSERT_TRUE(QFile::setPermissions(file.ToQString(), permissions));
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString()}).status, 0);
    const QFile::Permissions user = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
    EXPECT_EQ(QFile::permissions(file.ToQString()) & ~user, permissions);
}

TEST(InPlaceTest, ReplacesTheTargetOfALinkAndKeepsTheLink)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a/>");
    const QString link = folder.Path("link.xml").ToQString();
    const QString linkToLink = folder.Path("link-to-link.xml").ToQString();
    ASSERT_TRUE(QFile::link("a.xml", link));
    ASSERT_TRUE(QFile::link("link.xml", linkToLink));
    EXPECT_EQ(RunTool({"format", "--in-place", linkToLink.toStdString()}).status, 0);
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a />\n");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_TRUE(QFileInfo(linkToLink).isSymLink());
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml", "link-to-link.xml", "link.xml"));
}

TEST(InPlaceTest, OutputToADanglingLinkCreatesItsTarget)
{
    const TemporaryFolder folder;
    const VString link = folder.Path("link.xml");
    ASSERT_TRUE(QFile::link("new.xml", link.ToQString()));
    EXPECT_EQ(RunTool({"format", "-", "-o", link.toStdString()}, "<a/>").status, 0);
    EXPECT_TRUE(QFileInfo(link.ToQString()).isSymLink());
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("new.xml")), Header() + "<a />\n");
}

TEST(InPlaceTest, LinkToItselfIsAnError)
{
    const TemporaryFolder folder;
    const VString link = folder.Path("link.xml");
    ASSERT_TRUE(QFile::link("link.xml", link.ToQString()));
    const ToolResult result = RunTool({"format", "-", "-o", link.toStdString()}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write"));
    EXPECT_THAT(NamesInFolderOf(link), ElementsAre("link.xml"));
}
#endif

TEST(InPlaceTest, WarnsThatOtherHardLinksKeepTheOldContent)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.xml", "<a/>").toStdString();
    const std::string begin = "vanxml: ";
    const std::string end = " of the file '" + file + "'";
    std::filesystem::create_hard_link(file, folder.Path("b.xml").toStdString());
    const ToolResult two = RunTool({"format", "--in-place", file});
    EXPECT_EQ(two.errors, begin + "another name" + end + " keeps the old content (hard links)\n");
    EXPECT_EQ(two.status, 0);
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("a.xml")), Header() + "<a />\n");
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("b.xml")), "<a/>");

    std::filesystem::create_hard_link(file, folder.Path("c.xml").toStdString());
    std::filesystem::create_hard_link(file, folder.Path("d.xml").toStdString());
    const ToolResult three = RunTool({"format", "-", "-o", file}, "<b/>");
    EXPECT_EQ(three.errors, begin + "2 other names" + end + " keep the old content (hard links)\n");
    EXPECT_EQ(three.status, 0);
    EXPECT_EQ(RunTool({"format", "--in-place", file}).errors, "");
}

TEST(InPlaceTest, ReadOnlyFileIsRefusedAlsoToRoot)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a/>");
    ASSERT_TRUE(QFile::setPermissions(file.ToQString(), QFile::ReadOwner | QFile::ReadGroup));
    const ToolResult result = RunTool({"format", "--in-place", file.toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "vanxml: Cannot write \"" + file.toStdString() + "\": Permission denied\n");
    EXPECT_EQ(TemporaryFolder::Read(file), "<a/>");
    EXPECT_THAT(NamesInFolderOf(file), ElementsAre("a.xml"));
    // Windows removes no file with the attribute "read-only".
    EXPECT_TRUE(QFile::setPermissions(file.ToQString(), QFile::ReadOwner | QFile::WriteOwner));
}

#if defined(__linux__)
// Not even root can create a file in /proc.
TEST(InPlaceTest, UnwritableFolderIsAnError)
{
    const ToolResult result = RunTool({"format", "-", "-o", "/proc/vanxml-test.xml"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"/proc/vanxml-test.xml\""));
}

TEST(InPlaceTest, PipeIsNotReplaced)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.Path("pipe.xml").toStdString();
    const std::string script = "mkfifo \"$2\" && { echo '<a/>' > \"$2\" & \"$1\" format --in-place \"$2\"; }";
    const ToolResult result = RunProgram("sh", {"-c", script, "sh", VANXML_PATH, pipe});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("it is not a regular file"));
    EXPECT_FALSE(QFileInfo(QString::fromStdString(pipe)).isFile());
}
#endif

TEST(InPlaceTest, OutputOntoAFolderIsAnErrorAndKeepsTheFolder)
{
    const TemporaryFolder folder;
    const QString target = folder.Path("target").ToQString();
    ASSERT_TRUE(QDir().mkdir(target));
    const ToolResult result = RunTool({"format", "-", "-o", target.toStdString()}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"" + target.toStdString() + "\""));
    EXPECT_TRUE(QFileInfo(target).isDir());
    EXPECT_THAT(NamesInFolderOf(VString(target)), ElementsAre("target"));
}

TEST(InPlaceTest, OutputIntoAMissingFolderIsAnError)
{
    const TemporaryFolder folder;
    const std::string target = folder.Path("gone/a.xml").toStdString();
    const ToolResult result = RunTool({"format", "-", "-o", target}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"" + target + "\""));
    EXPECT_FALSE(QFileInfo(folder.Path("gone").ToQString()).exists());
}
