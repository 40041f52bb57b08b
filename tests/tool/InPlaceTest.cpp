#include <QFileInfo>

#include "tests/tool/ToolRun.h"

using testing::HasSubstr;
using testsupport::TemporaryFolder;

namespace {

QStringList Entries(const QString& file)
{
    return QFileInfo(file).dir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
}

}  // namespace

TEST(InPlaceTest, ReplacesTheFileAndLeavesNothingElse)
{
    const TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "<a><b/></a>");
    const ToolResult result = RunTool({"format", "--in-place", file.toStdString()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(TemporaryFolder::Read(file), Header() + "<a>\n  <b />\n</a>\n");
    EXPECT_EQ(Entries(file.ToQString()), QStringList{"a.xml"});
}

TEST(InPlaceTest, FileWithErrorsStaysByteForByte)
{
    const TemporaryFolder folder;
    const std::string bytes = "<a>\r\n<b></a>\n";
    const VString file = folder.Write("a.xml", bytes);
    EXPECT_EQ(RunTool({"format", "--in-place", file.toStdString()}).status, 1);
    EXPECT_EQ(TemporaryFolder::Read(file), bytes);
    EXPECT_EQ(Entries(file.ToQString()), QStringList{"a.xml"});
}

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

TEST(InPlaceTest, ReplacesWhatALinkLeadsToAndKeepsTheLink)
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
    EXPECT_EQ(Entries(file.ToQString()), (QStringList{"a.xml", "link-to-link.xml", "link.xml"}));
}

#if defined(__linux__)
// Even the administrator cannot make a file in a folder of the kernel's.
TEST(InPlaceTest, FolderThatCannotBeWrittenIsAnErrorAndTheFileStays)
{
    const ToolResult result = RunTool({"format", "-", "-o", "/proc/vanxml-test.xml"}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"/proc/vanxml-test.xml\""));
}

// There is no room in the name for that of a temporary file beside it, whoever asks.
TEST(InPlaceTest, FileThatCannotBeReplacedStays)
{
    const TemporaryFolder folder;
    const VString file = folder.Write(VString::fromStdString(std::string(255, 'a')), "<a/>");
    const ToolResult result = RunTool({"format", "--in-place", file.toStdString()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write"));
    EXPECT_EQ(TemporaryFolder::Read(file), "<a/>");
    EXPECT_EQ(Entries(file.ToQString()).size(), 1);
}

TEST(InPlaceTest, PipeIsNotReplaced)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.Path("pipe.xml").toStdString();
    const ToolResult result = RunProgram("sh", {"-c", "mkfifo \"$2\" && { echo '<a/>' > \"$2\" & \"$1\" format --in-place \"$2\"; }", "sh", VANXML_PATH, pipe});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("it is not a regular file"));
    EXPECT_FALSE(QFileInfo(QString::fromStdString(pipe)).isFile());
}
#endif

TEST(InPlaceTest, OutputThatIsAFolderIsAnErrorAndTheFolderStays)
{
    const TemporaryFolder folder;
    const QString target = folder.Path("target").ToQString();
    ASSERT_TRUE(QDir().mkdir(target));
    const ToolResult result = RunTool({"format", "-", "-o", target.toStdString()}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"" + target.toStdString() + "\""));
    EXPECT_TRUE(QFileInfo(target).isDir());
    EXPECT_EQ(Entries(target), QStringList{"target"});
}

TEST(InPlaceTest, OutputInAFolderThatIsNotThereIsAnError)
{
    const TemporaryFolder folder;
    const std::string target = folder.Path("gone/a.xml").toStdString();
    const ToolResult result = RunTool({"format", "-", "-o", target}, "<a/>");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("Cannot write \"" + target + "\""));
    EXPECT_FALSE(QFileInfo(folder.Path("gone").ToQString()).exists());
}
