#include "vancoreplatform/FileReplacement.h"

#include <QFileInfo>

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"

namespace {

using testing::ElementsAre;
using testsupport::CurrentFolder;
using testsupport::TemporaryFolder;

// Owns a folder with the file a.xml.
class FileReplacementTest : public testing::Test {
protected:
    TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
};

// Returns the message of the VIO::Exception that `run` throws.
std::string MessageOf(const std::function<void()>& run)
{
    try {
        run();
    } catch (const VIO::Exception& exception) {
        return exception.GetMessage().toStdString();
    }
    return "no exception";
}

void Replace(const VString& target, const char* text)
{
    FileReplacement replacement{VPath(target)};
    replacement.Write(text);
    replacement.Commit();
}

TEST_F(FileReplacementTest, CommitReplacesTheFile)
{
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    replacement.Write("");
    replacement.Write(" text");
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
    replacement.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "new text");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
    EXPECT_EQ(replacement.OtherNames(), 0u);
}

TEST_F(FileReplacementTest, CommitCreatesANewFile)
{
    Replace(folder.Path("b.xml"), "new");
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("b.xml")), "new");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml", "b.xml"));
}

TEST_F(FileReplacementTest, DestructionWithoutCommitKeepsTheOldFile)
{
    {
        FileReplacement replacement{VPath(file)};
        replacement.Write("new");
    }
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementTest, TwoObjectsCanReplaceTheSameFile)
{
    FileReplacement one{VPath(file)};
    FileReplacement two{VPath(file)};
    one.Write("one");
    two.Write("two");
    two.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "two");
    one.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "one");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementTest, AHundredObjectsCanExistAtOnce)
{
    std::vector<std::unique_ptr<FileReplacement>> all;
    for (int i = 0; i < 100; ++i) {
        all.push_back(std::make_unique<FileReplacement>(VPath(folder.Path(VString::number(i)))));
        all.back()->Write("x");
    }
    for (const std::unique_ptr<FileReplacement>& each : all)
        each->Commit();
    EXPECT_EQ(folder.Names().size(), 101u);
}

TEST_F(FileReplacementTest, CallsAfterCommitThrow)
{
    FileReplacement replacement{VPath(file)};
    replacement.Commit();
    const std::string message = "Cannot write \"" + file.toStdString() + "\": it is already replaced";
    EXPECT_EQ(MessageOf([&] { replacement.Write("x"); }), message);
    EXPECT_EQ(MessageOf([&] { replacement.Commit(); }), message);
    EXPECT_EQ(TemporaryFolder::Read(file), "");
}

struct BadTarget {
    const char* name;
    VString target;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const BadTarget& bad)
{
    return out << bad.name;
}

class BadTargetTest : public testing::TestWithParam<BadTarget> {};

TEST_P(BadTargetTest, ConstructorThrowsTheReason)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(QDir().mkdir(folder.Path("folder").ToQString()));
    const VString target = GetParam().target.IsEmpty() ? VString() : folder.Path(GetParam().target);
    EXPECT_EQ(MessageOf([&] { FileReplacement{VPath(target)}; }),
        "Cannot write \"" + target.toStdString() + "\": " + GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(BadTargets,
    BadTargetTest,
    testing::Values(BadTarget{"Empty", "", "No such file or directory"},
        BadTarget{"InAMissingFolder", "gone/a.xml", "No such file or directory"},
        BadTarget{"Folder", "folder", "Is a directory"},
        BadTarget{"FolderWithSeparator", "folder/", "Is a directory"},
        BadTarget{"Nul", VString(u"a\0b", 3), "the file name contains a NUL"}),
    [](const auto& test) { return test.param.name; });

TEST_F(FileReplacementTest, RelativeNameKeepsItsMeaningWhenTheProcessChangesItsFolder)
{
    const CurrentFolder outer(folder.Path("."));
    for (const char* name : {"a.xml", "new.xml"}) {
        FileReplacement replacement{VPath(name)};
        replacement.Write("new");
        const CurrentFolder inner("/");
        replacement.Commit();
        EXPECT_EQ(TemporaryFolder::Read(folder.Path(name)), "new");
    }
}

TEST_F(FileReplacementTest, TargetThatBecomesAFolderIsAnErrorAndTheFolderStays)
{
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    ASSERT_TRUE(QFile::remove(file.ToQString()));
    ASSERT_TRUE(QDir().mkdir(file.ToQString()));
    EXPECT_THAT(
        MessageOf([&] { replacement.Commit(); }), testing::StartsWith("Cannot write \"" + file.toStdString() + "\": "));
    EXPECT_TRUE(QFileInfo(file.ToQString()).isDir());
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

TEST_F(FileReplacementTest, FileThatIsRemovedMeanwhileIsCreatedAgain)
{
    FileReplacement replacement{VPath(file)};
    replacement.Write("new");
    ASSERT_TRUE(QFile::remove(file.ToQString()));
    replacement.Commit();
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_THAT(folder.Names(), ElementsAre("a.xml"));
}

}  // namespace
