#include "vancoreplatform/VPath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

VPath Folder(const char* text)
{
    VPath path(text);
    path.RemoveFilename();
    return path;
}

// Returns all texts of up to `length` code units from an alphabet that can form every kind of root.
std::vector<VPath> ManyPaths(int length)
{
    std::vector<std::u16string> texts{u""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::u16string text = texts[i];
        if (static_cast<int>(text.size()) == length)
            break;
        for (const char16_t unit : std::u16string_view(u"/\\C:a"))
            texts.push_back(text + unit);
    }
    std::vector<VPath> paths;
    for (const std::u16string& text : texts)
        paths.emplace_back(VString(text.data(), text.size()));
    return paths;
}

std::vector<VPath> NextFortyPaths(const std::vector<VPath>& sorted, std::size_t position)
{
    const std::size_t end = std::min(position + 40, sorted.size());
    return {sorted.begin() + static_cast<std::ptrdiff_t>(position), sorted.begin() + static_cast<std::ptrdiff_t>(end)};
}

// The tables hold on every system: the rules of VPath do not depend on it.
struct RootCase {
    const char* name;
    const char* path;
    bool absolute;
};

struct FolderCase {
    const char* name;
    const char* path;
    const char* folder;
};

struct JoinCase {
    const char* name;
    const char* left;
    const char* right;
    const char* joined;
};

struct EqualityCase {
    const char* name;
    const char* a;
    const char* b;
    bool equal;
};

const auto NameOf = [](const auto& test) { return std::string(test.param.name); };

}  // namespace

TEST(VPathTest, KeepsTheTextAsGiven)
{
    EXPECT_EQ(VPath("a\\b//c/").String(), VString("a\\b//c/"));
    EXPECT_TRUE(VPath().IsEmpty());
    EXPECT_FALSE(VPath("/").IsEmpty());
}

TEST(VPathTest, TheGenericTextHasForwardSlashes)
{
    EXPECT_EQ(VPath("\\\\server\\share\\a/b").GenericString(), VString("//server/share/a/b"));
    EXPECT_EQ(VPath("C:\\a").GenericString(), VString("C:/a"));
    EXPECT_EQ(VPath().GenericString(), VString());
}

class VPathRootTest : public testing::TestWithParam<RootCase> {};

TEST_P(VPathRootTest, IsAbsoluteWithARoot)
{
    EXPECT_EQ(VPath(GetParam().path).IsAbsolute(), GetParam().absolute);
}

INSTANTIATE_TEST_SUITE_P(Roots,
    VPathRootTest,
    testing::Values(RootCase{"Empty", "", false},
        RootCase{"Name", "a", false},
        RootCase{"Relative", "a/b", false},
        RootCase{"Dots", "../a", false},
        RootCase{"Slash", "/", true},
        RootCase{"SlashName", "/a", true},
        RootCase{"Backslash", "\\a", true},
        RootCase{"Drive", "C:", true},
        RootCase{"DriveSmallLetter", "z:", true},
        RootCase{"DriveName", "C:a", true},
        RootCase{"DriveSeparator", "C:\\a", true},
        RootCase{"DriveSlash", "C:/a", true},
        RootCase{"DriveOfDigit", "1:/a", false},
        RootCase{"DriveOfTwoLetters", "CD:/a", false},
        RootCase{"ColonFirst", ":a", false},
        RootCase{"DriveOfAGreekLetter", "α:/a", false},
        RootCase{"LongPrefix", "\\\\?\\C:\\a", true},
        RootCase{"Device", "\\\\.\\NUL", true},
        RootCase{"NameOfADevice", "NUL", false},
        RootCase{"Unc", "\\\\server\\share\\a", true},
        RootCase{"UncSlashes", "//server/share", true}),
    NameOf);

class VPathFolderTest : public testing::TestWithParam<FolderCase> {};

TEST_P(VPathFolderTest, DropsTheLastElement)
{
    EXPECT_EQ(Folder(GetParam().path).String(), VString(GetParam().folder));
}

INSTANTIATE_TEST_SUITE_P(Paths,
    VPathFolderTest,
    testing::Values(FolderCase{"Empty", "", ""},
        FolderCase{"BareName", "a.txt", ""},
        FolderCase{"BareNameWithSeparator", "a/", ""},
        FolderCase{"Relative", "a/b.txt", "a"},
        FolderCase{"Backslash", "a\\b\\c.txt", "a\\b"},
        FolderCase{"Mixed", "a/b\\c", "a/b"},
        FolderCase{"ManySeparators", "a//\\b", "a"},
        FolderCase{"TrailingSeparators", "a/b//", "a"},
        FolderCase{"Root", "/", "/"},
        FolderCase{"UnderTheRoot", "/a", "/"},
        FolderCase{"UnderTheRootWithMoreSeparators", "///a", "/"},
        FolderCase{"Drive", "C:", "C:"},
        FolderCase{"DriveName", "C:a", "C:"},
        FolderCase{"DriveRoot", "C:\\", "C:\\"},
        FolderCase{"UnderTheDrive", "C:\\a", "C:\\"},
        FolderCase{"DeepUnderTheDrive", "C:\\a\\b", "C:\\a"},
        FolderCase{"DeepUnderTheDriveName", "C:a\\b", "C:a"},
        FolderCase{"NamesOutsideAscii", "C:\\größe\\文\\😀.xml", "C:\\größe\\文"},
        FolderCase{"LongPrefix", "\\\\?\\C:\\a\\b", "\\\\?\\C:\\a"},
        FolderCase{"LongPrefixOfAShare", "\\\\?\\UNC\\server\\share\\a\\b", "\\\\?\\UNC\\server\\share\\a"},
        FolderCase{"UncServer", "\\\\server", "\\\\server"},
        FolderCase{"UncShare", "\\\\server\\share", "\\\\server\\share"},
        FolderCase{"UncShareWithSeparator", "\\\\server\\share\\", "\\\\server\\share"},
        FolderCase{"UnderTheShare", "\\\\server\\share\\a", "\\\\server\\share"},
        FolderCase{"DeepUnderTheShare", "//server/share/a/b", "//server/share/a"}),
    NameOf);

class VPathJoinTest : public testing::TestWithParam<JoinCase> {};

TEST_P(VPathJoinTest, JoinsTwoPaths)
{
    EXPECT_EQ((VPath(GetParam().left) / VPath(GetParam().right)).String(), VString(GetParam().joined));
}

INSTANTIATE_TEST_SUITE_P(Paths,
    VPathJoinTest,
    testing::Values(JoinCase{"Names", "a", "b", "a/b"},
        JoinCase{"LeftWithSeparator", "a/", "b", "a/b"},
        JoinCase{"LeftWithSeparators", "a\\\\", "b", "a\\b"},
        JoinCase{"StyleOfTheLeft", "C:\\a", "b/c", "C:\\a\\b/c"},
        JoinCase{"StyleOfTheRight", "a", "b\\c", "a\\b\\c"},
        JoinCase{"EmptyRight", "a/b", "", "a/b"},
        JoinCase{"EmptyRightLeavesTheLeft", "a/", "", "a/"},
        JoinCase{"EmptyLeft", "", "a/b", "a/b"},
        JoinCase{"BothEmpty", "", "", ""},
        JoinCase{"Root", "/", "a", "/a"},
        JoinCase{"DriveRoot", "C:\\", "a", "C:\\a"},
        JoinCase{"Drive", "C:", "a", "C:/a"},
        JoinCase{"Share", "\\\\server\\share", "a", "\\\\server\\share\\a"},
        JoinCase{"AbsoluteRight", "a", "/b", "/b"},
        JoinCase{"RootRightOfADrive", "C:\\a", "\\b", "\\b"},
        JoinCase{"DriveNameRightOfTheSameDrive", "C:\\a", "C:b", "C:b"},
        JoinCase{"NamesOutsideAscii", "größe\\α", "文/😀", "größe\\α\\文/😀"},
        JoinCase{"DriveRight", "/a", "C:b", "C:b"},
        JoinCase{"UncRight", "C:\\a", "\\\\server\\share", "\\\\server\\share"}),
    NameOf);

class VPathEqualityTest : public testing::TestWithParam<EqualityCase> {};

TEST_P(VPathEqualityTest, ComparesElementByElement)
{
    const VPath a(GetParam().a);
    const VPath b(GetParam().b);
    EXPECT_EQ(a == b, GetParam().equal);
    EXPECT_EQ(b == a, GetParam().equal);
    EXPECT_EQ(a != b, !GetParam().equal);
    EXPECT_EQ(!(a < b) && !(b < a), GetParam().equal);
}

INSTANTIATE_TEST_SUITE_P(Paths,
    VPathEqualityTest,
    testing::Values(EqualityCase{"Same", "a/b", "a/b", true},
        EqualityCase{"KindOfSeparator", "a/b", "a\\b", true},
        EqualityCase{"NumberOfSeparators", "a//b", "a/b", true},
        EqualityCase{"SeparatorsBehindTheRoot", "C:\\\\a", "C:/a", true},
        EqualityCase{"SeparatorsInAUncRoot", "//server//share/a", "\\\\server\\share\\a", true},
        EqualityCase{"TrailingSeparator", "a/b/", "a/b", true},
        EqualityCase{"LetterCase", "a/B", "a/b", false},
        EqualityCase{"DriveLetterCase", "C:/a", "c:/a", false},
        EqualityCase{"RootAndNone", "/a", "a", false},
        EqualityCase{"DriveWithAndWithoutSeparator", "C:a", "C:/a", false},
        EqualityCase{"UncAndRoot", "//server/share", "/server/share", false},
        EqualityCase{"LetterCaseOutsideAscii", "C:/Ω", "C:/ω", false},
        EqualityCase{"LongPrefixAndNone", "\\\\?\\C:\\a", "C:\\a", false},
        EqualityCase{"DotAtTheEndOfAName", "a.", "a", false},
        EqualityCase{"DotsAreElements", "a/./b", "a/b", false},
        EqualityCase{"ElementAndPrefix", "a/b", "a/bc", false}),
    NameOf);

TEST(VPathTest, OrdersElementByElement)
{
    EXPECT_LT(VPath("a/b"), VPath("a/c"));
    EXPECT_LT(VPath("a"), VPath("a/b"));
    // A comparison of the whole texts would give the opposite order.
    EXPECT_LT(VPath("a/b"), VPath("a.b"));
    EXPECT_LT(VPath("a\\b"), VPath("aB/b"));
}

TEST(VPathTest, OrderIsStrictAndWeakOverManyPaths)
{
    const std::vector<VPath> paths = ManyPaths(3);
    for (const VPath& a : paths) {
        ASSERT_FALSE(a < a) << a.String();
        for (const VPath& b : paths) {
            ASSERT_EQ(a == b, !(a < b) && !(b < a)) << a.String() << " " << b.String();
            ASSERT_FALSE(a < b && b < a) << a.String() << " " << b.String();
        }
    }
}

TEST(VPathTest, OrderIsTransitiveOverManyPaths)
{
    std::vector<VPath> paths = ManyPaths(5);
    std::sort(paths.begin(), paths.end());
    for (std::size_t i = 0; i < paths.size(); ++i) {
        for (const VPath& later : NextFortyPaths(paths, i))
            ASSERT_FALSE(later < paths[i]) << later.String() << " " << paths[i].String();
        ASSERT_FALSE(paths.back() < paths[i]);
        ASSERT_FALSE(paths[i] < paths.front());
    }
}

TEST(VPathTest, EqualPathsHaveEqualFolders)
{
    std::vector<VPath> paths = ManyPaths(4);
    for (VPath& path : paths) {
        VPath other(path.GenericString() + "/");
        if (!(other == path))
            continue;
        path.RemoveFilename();
        other.RemoveFilename();
        ASSERT_EQ(path, other) << path.String() << " " << other.String();
    }
}

TEST(VPathTest, AFolderIsNeverGreaterThanItsPath)
{
    for (const VPath& path : ManyPaths(5)) {
        VPath folder = path;
        folder.RemoveFilename();
        ASSERT_FALSE(path < folder) << path.String();
        ASSERT_EQ(folder.IsAbsolute(), path.IsAbsolute()) << path.String();
        VPath again = folder;
        again.RemoveFilename();
        ASSERT_FALSE(folder < again) << path.String();
    }
}

TEST(VPathTest, RemoveFilenameReversesAJoin)
{
    for (const VPath& path : ManyPaths(4)) {
        VPath joined = path / VPath("x/y");
        ASSERT_EQ(joined.IsAbsolute(), path.IsAbsolute()) << path.String();
        joined.RemoveFilename();
        ASSERT_EQ(joined, path / VPath("x")) << path.String();
    }
}
