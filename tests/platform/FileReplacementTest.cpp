#include "vancoreplatform/FileReplacement.h"

#include "tests/common/TestSupport.h"
#include "vancoreplatform/VIOException.h"

namespace {

using testing::ElementsAre;
using testsupport::TemporaryFolder;

// Owns a folder with the file a.xml.
class FileReplacementTest : public testing::Test {
protected:
    std::vector<std::string> Names() const
    {
        const QDir::Filters all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        std::vector<std::string> names;
        for (const QString& name : QDir(folder.Path(".").ToQString()).entryList(all, QDir::Name))
            names.push_back(name.toStdString());
        return names;
    }

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
    EXPECT_THAT(Names(), ElementsAre("a.xml"));
    EXPECT_EQ(replacement.OtherNames(), 0u);
}

TEST_F(FileReplacementTest, CommitCreatesANewFile)
{
    Replace(folder.Path("b.xml"), "new");
    EXPECT_EQ(TemporaryFolder::Read(folder.Path("b.xml")), "new");
    EXPECT_THAT(Names(), ElementsAre("a.xml", "b.xml"));
}

TEST_F(FileReplacementTest, DestructionWithoutCommitKeepsTheOldFile)
{
    {
        FileReplacement replacement{VPath(file)};
        replacement.Write("new");
        EXPECT_EQ(Names().size(), 2u);
    }
    EXPECT_EQ(TemporaryFolder::Read(file), "old");
    EXPECT_THAT(Names(), ElementsAre("a.xml"));
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
    EXPECT_THAT(Names(), ElementsAre("a.xml"));
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
    EXPECT_EQ(Names().size(), 101u);
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

TEST_F(FileReplacementTest, NamesThatBeginWithAColonAreFiles)
{
    const QString old = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.Path(".").ToQString()));
    Replace(":a.xml", "new");
    QDir::setCurrent(old);
    EXPECT_THAT(Names(), ElementsAre(":a.xml", "a.xml"));
}

TEST_F(FileReplacementTest, ReplacesTheTargetOfALinkAndKeepsTheLink)
{
    const QString link = folder.Path("link.xml").ToQString();
    ASSERT_TRUE(QFile::link("a.xml", link));
    Replace(VString(link), "new");
    EXPECT_EQ(TemporaryFolder::Read(file), "new");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_THAT(Names(), ElementsAre("a.xml", "link.xml"));
}

}  // namespace
