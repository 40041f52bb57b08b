#include "vancorexml/main/parser/PathRenames.h"

#include <string>
#include <type_traits>

#include "tests/common/TestSupport.h"
#include "vancorexml/main/parser/DOM.h"

static_assert(std::is_same_v<decltype(std::declval<const PathRenames&>().GetPathMap()), const std::map<VPath, VPath>&>);

namespace {

// Returns the entries as "old>new", separated by blanks.
std::string Entries(const PathRenames& renames)
{
    std::string entries;
    for (const auto& [from, to] : renames.GetPathMap())
        entries += (entries.empty() ? "" : " ") + from.String().toStdString() + ">" + to.String().toStdString();
    return entries;
}

std::string Text(const VPath& path)
{
    return path.String().toStdString();
}

struct ValidRow {
    const char* name;
    const char* to;
    const char* path;
    bool valid;
};

class PathRenamesValidRows : public testing::TestWithParam<ValidRow> {};

struct AbsoluteRow {
    const char* name;
    const char* path;
    const char* base;
    const char* result;
};

class PathRenamesAbsoluteRows : public testing::TestWithParam<AbsoluteRow> {};

}  // namespace

TEST(PathRenamesTest, IsEmptyAtFirst)
{
    const PathRenames renames;
    EXPECT_TRUE(renames.GetPathMap().empty());
    EXPECT_EQ(Text(renames.RenamePath("a")), "a");
    EXPECT_EQ(Text(renames.RenamePathAbsolute("a", "b")), "");
    EXPECT_EQ(Text(renames.ReverseRenamePath("a")), "");
    EXPECT_FALSE(renames.IsValidPath("a"));
    EXPECT_FALSE(renames.IsValidPath(""));
}

TEST(PathRenamesTest, SetRenameInsertsAndOverwrites)
{
    PathRenames renames;
    renames.SetRename("b", "1");
    renames.SetRename("a", "2");
    EXPECT_EQ(Entries(renames), "a>2 b>1");
    renames.SetRename("b", "3");
    EXPECT_EQ(Entries(renames), "a>2 b>3");
}

TEST(PathRenamesTest, RenamePathMatchesOnlyTheExactPath)
{
    PathRenames renames;
    renames.SetRename("C:\\in\\a.csv", "out/a.csv");
    EXPECT_EQ(Text(renames.RenamePath("C:\\in\\a.csv")), "out/a.csv");
    EXPECT_EQ(Text(renames.RenamePath("C:/in/a.csv")), "out/a.csv");
    EXPECT_EQ(Text(renames.RenamePath("C:\\in\\A.csv")), "C:\\in\\A.csv");
    EXPECT_EQ(Text(renames.RenamePath("C:\\in")), "C:\\in");
    EXPECT_EQ(Text(renames.RenamePath("C:\\in\\a.csv\\b")), "C:\\in\\a.csv\\b");
    EXPECT_EQ(Text(renames.RenamePath("")), "");
}

TEST(PathRenamesTest, ReverseRenamePathReturnsTheFirstOldPathInOrder)
{
    PathRenames renames;
    renames.SetRename("c", "x");
    renames.SetRename("b", "x");
    renames.SetRename("a", "y");
    EXPECT_EQ(Text(renames.ReverseRenamePath("x")), "b");
    EXPECT_EQ(Text(renames.ReverseRenamePath("y")), "a");
    EXPECT_EQ(Text(renames.ReverseRenamePath("b")), "");
    EXPECT_EQ(Text(renames.ReverseRenamePath("")), "");
}

TEST(PathRenamesTest, SetCRCAcceptsATargetFromItsOwnMap)
{
    PathRenames renames;
    renames.SetCRC("a/first.csv", "one/first.csv", 7);
    renames.SetRename("b/second.csv", "two/second.csv");
    renames.SetCRC("b/second.csv", renames.GetPathMap().at("b/second.csv"), 7);
    EXPECT_EQ(Entries(renames), "a>one b>two b/second.csv>one/first.csv");
}

TEST(PathRenamesTest, SetCRCAcceptsASourceFromItsOwnMap)
{
    PathRenames renames;
    renames.SetCRC("a/first.csv", "one/first.csv", 7);
    renames.SetRename("b/second.csv", "b/second.csv");
    renames.SetCRC(renames.GetPathMap().at("b/second.csv"), "two/second.csv", 7);
    EXPECT_EQ(Entries(renames), "a>one b>two b/second.csv>one/first.csv");
}

TEST_P(PathRenamesAbsoluteRows, ReturnsTheExpectedPath)
{
    PathRenames renames;
    renames.SetRename("in/a.csv", "out/a.csv");
    renames.SetRename("in/same.csv", "C:/base/in/same.csv");
    renames.SetRename("D:/abs.csv", "out/abs.csv");
    renames.SetRename("", "out/base");
    EXPECT_EQ(Text(renames.RenamePathAbsolute(GetParam().path, GetParam().base)), GetParam().result);
}

const AbsoluteRow AbsoluteRows[] = {
    {"PathBelowTheBase", "C:/base/in/a.csv", "C:/base", "out/a.csv"},
    {"BaseWithASeparator", "C:\\base\\in\\a.csv", "C:\\base\\", "out/a.csv"},
    {"RenamedToItself", "C:/base/in/same.csv", "C:/base", ""},
    {"AbsoluteOldPath", "D:/abs.csv", "C:/base", "out/abs.csv"},
    {"EmptyOldPath", "C:/base", "C:/base", "out/base"},
    {"AnotherBase", "C:/base/in/a.csv", "C:/other", ""},
    {"PathWithoutTheBase", "in/a.csv", "C:/base", ""},
    {"EmptyBase", "in/a.csv", "", "out/a.csv"},
    {"Unknown", "C:/base/in/b.csv", "C:/base", ""},
};

INSTANTIATE_TEST_SUITE_P(
    PathRenamesTest, PathRenamesAbsoluteRows, testing::ValuesIn(AbsoluteRows), [](const auto& row) {
        return row.param.name;
    });

TEST(PathRenamesTest, RenamePathAbsoluteUsesTheFirstEntryInOrder)
{
    PathRenames renames;
    renames.SetRename("a", "relative");
    renames.SetRename("/base/a", "absolute");
    const std::string first = Text(renames.GetPathMap().begin()->second);
    EXPECT_EQ(Text(renames.RenamePathAbsolute("/base/a", "/base")), first);
}

TEST(PathRenamesTest, RenamePathAbsoluteReturnsNothingIfTheFirstMatchKeepsThePath)
{
    PathRenames renames;
    renames.SetRename("a", "/base/a");
    renames.SetRename("/base/a", "/base/a");
    EXPECT_EQ(Text(renames.RenamePathAbsolute("/base/a", "/base")), "");
    const VPath first = renames.GetPathMap().begin()->first;
    const VPath second = renames.GetPathMap().rbegin()->first;
    renames.SetRename(second, "x");
    EXPECT_EQ(Text(renames.RenamePathAbsolute("/base/a", "/base")), "");
    renames.SetRename(first, "y");
    EXPECT_EQ(Text(renames.RenamePathAbsolute("/base/a", "/base")), "y");
}

TEST_P(PathRenamesValidRows, ReturnsTheExpectedValidity)
{
    PathRenames renames;
    renames.SetRename("z", "elsewhere");
    renames.SetRename("in", GetParam().to);
    EXPECT_EQ(renames.IsValidPath(GetParam().path), GetParam().valid);
}

const ValidRow ValidRows[] = {
    {"TheNewPath", "C:/out", "C:/out", true},
    {"BelowTheNewPath", "C:/out", "C:/out/a.csv", true},
    {"OtherSeparators", "C:\\out\\x", "C:/out/x/a.csv", true},
    {"OtherSeparatorsInThePath", "C:/out/x", "C:\\out\\x\\a.csv", true},
    {"OtherLetterCase", "C:/out", "C:/Out/a.csv", false},
    {"LongerNameWithTheSameStart", "C:/out", "C:/output", true},
    {"AboveTheNewPath", "C:/out", "C:/", false},
    {"TheOldPath", "C:/out", "in", false},
    {"AnEmptyNewPath", "", "anything", true},
    {"TheEmptyPath", "C:/out", "", false},
    {"TheOtherEntry", "C:/out", "elsewhere/a", true},
};

INSTANTIATE_TEST_SUITE_P(PathRenamesTest, PathRenamesValidRows, testing::ValuesIn(ValidRows), [](const auto& row) {
    return row.param.name;
});

TEST(PathRenamesTest, ResetClearsTheRenames)
{
    PathRenames renames;
    renames.SetRename("a", "b");
    renames.ResetRenames();
    EXPECT_EQ(Entries(renames), "");
}

TEST(PathRenamesCRCTest, AnEmptySourceDoesNothing)
{
    PathRenames renames;
    renames.SetCRC("", "out/a", 1);
    EXPECT_EQ(Entries(renames), "");
    renames.SetCRC("b", "out/b", 1);
    EXPECT_EQ(Entries(renames), "");
}

TEST(PathRenamesCRCTest, FirstFileWithAChecksumRenamesOnlyItsFolder)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    EXPECT_EQ(Entries(renames), "in>out");
}

TEST(PathRenamesCRCTest, FirstFileWithoutAFolderRenamesNothing)
{
    PathRenames renames;
    renames.SetCRC("a", "out/a", 1);
    EXPECT_EQ(Entries(renames), "");
    renames.SetCRC("b", "out/b", 1);
    EXPECT_EQ(Entries(renames), "b>out/a");
}

TEST(PathRenamesCRCTest, TargetWithoutAFolderRenamesTheFolderToEmpty)
{
    PathRenames renames;
    renames.SetCRC("in/a", "a", 1);
    EXPECT_EQ(Entries(renames), "in>");
}

TEST(PathRenamesCRCTest, FilesWithEqualChecksumsUseTheFirstTarget)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", -7);
    renames.SetCRC("in/b", "out/b", -7);
    renames.SetCRC("in/c", "out/c", -7);
    renames.SetCRC("in/d", "out/d", 7);
    EXPECT_EQ(Entries(renames), "in>out in/b>out/a in/c>out/a");
}

TEST(PathRenamesCRCTest, RepeatedFileUsesItsFirstTarget)
{
    PathRenames renames;
    renames.SetRename("in/a", "set");
    renames.SetCRC("in/a", "out/a", 1);
    EXPECT_EQ(Entries(renames), "in>out in/a>set");
    renames.SetCRC("in/a", "out/b", 1);
    EXPECT_EQ(Entries(renames), "in>out in/a>out/a");
}

TEST(PathRenamesCRCTest, FolderIsRenamedWhenItsFilesAgree)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    renames.SetCRC("in\\b", "out\\b", 2);
    renames.SetCRC("other/c", "out/c", 3);
    EXPECT_EQ(Entries(renames), "in>out other>out");
}

TEST(PathRenamesCRCTest, DisagreeingFileEndsTheFolderRenameForGood)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    renames.SetCRC("in/b", "out/b", 2);
    renames.SetCRC("in/c", "away/c", 3);
    EXPECT_EQ(Entries(renames), "");
    renames.SetCRC("in/d", "out/d", 4);
    renames.SetCRC("in/e", "away/e", 5);
    EXPECT_EQ(Entries(renames), "");
}

TEST(PathRenamesCRCTest, FirstFileOfAFolderReplacesASetRename)
{
    PathRenames renames;
    renames.SetRename("in", "set");
    renames.SetCRC("in/a", "out/a", 1);
    EXPECT_EQ(Entries(renames), "in>out");
}

TEST(PathRenamesCRCTest, DisagreeingLaterFileRemovesASetRename)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    renames.SetRename("in", "set");
    renames.SetCRC("in/b", "set/b", 2);
    EXPECT_EQ(Entries(renames), "in>set");
    renames.SetCRC("in/c", "out/c", 3);
    EXPECT_EQ(Entries(renames), "");
}

TEST(PathRenamesCRCTest, FolderOfADuplicateFileUsesTheGivenTarget)
{
    PathRenames renames;
    renames.SetCRC("one/a", "out/a", 1);
    renames.SetCRC("two/a", "away/a", 1);
    EXPECT_EQ(Entries(renames), "one>out two>away two/a>out/a");
}

TEST(PathRenamesCRCTest, ResetKeepsChecksumsAndClearsFolders)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    renames.SetCRC("in/b", "away/b", 2);
    renames.ResetRenames();
    renames.SetCRC("in/c", "new/c", 1);
    EXPECT_EQ(Entries(renames), "in>new in/c>out/a");
}

TEST(PathRenamesCopyTest, AssignmentReplacesRenamesChecksumsAndFolders)
{
    PathRenames from;
    from.SetCRC("in/a", "out/a", 1);
    from.SetCRC("in/b", "away/b", 2);
    from.SetRename("x", "y");
    PathRenames to;
    to.SetRename("gone", "gone");
    to.SetCRC("gone/a", "gone/b", 3);
    to = from;
    EXPECT_EQ(Entries(to), "x>y");
    to.SetCRC("in/c", "out/c", 1);
    to.SetCRC("gone/d", "new/d", 3);
    EXPECT_EQ(Entries(to), "gone>new in/c>out/a x>y");
    EXPECT_EQ(Entries(from), "x>y");
}

TEST(PathRenamesCopyTest, SelfAssignmentChangesNothing)
{
    PathRenames renames;
    renames.SetCRC("in/a", "out/a", 1);
    const PathRenames& same = renames;
    renames = same;
    EXPECT_EQ(Entries(renames), "in>out");
    renames.SetCRC("in/b", "away/b", 1);
    EXPECT_EQ(Entries(renames), "in/b>out/a");
}

TEST(PathRenamesOfDocumentTest, SetPathRenamesStoresACopy)
{
    DOM document;
    EXPECT_TRUE(document.GetPathRenames().GetPathMap().empty());
    PathRenames renames;
    renames.SetRename("a", "b");
    document.SetPathRenames(renames);
    renames.SetRename("a", "c");
    EXPECT_EQ(Entries(document.GetPathRenames()), "a>b");
    document.SetPathRenames(document.GetPathRenames());
    EXPECT_EQ(Entries(document.GetPathRenames()), "a>b");
}

TEST(PathRenamesOfDocumentTest, DeepCopyCopiesThePathRenames)
{
    DOM from;
    PathRenames renames;
    renames.SetRename("a", "b");
    from.SetPathRenames(renames);
    DOM to;
    to.DeepCopy(from);
    from.SetPathRenames(PathRenames());
    EXPECT_EQ(Entries(to.GetPathRenames()), "a>b");
    EXPECT_EQ(Entries(from.GetPathRenames()), "");
}
