#include "vancorexml/main/parser/DOMPathCanopy.h"

#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"

using namespace querytest;

static_assert(std::is_same_v<decltype(DOMPathCanopy::WithinCanopy(std::declval<DOMElement&>(), "", "")),
    std::vector<DOMElement*>>);
static_assert(std::is_same_v<decltype(DOMPathCanopy::WithinCanopy(std::declval<const DOMElement&>(), "", "")),
    std::vector<const DOMElement*>>);
static_assert(std::is_same_v<decltype(DOMPathCanopy::UnderneathCanopy(std::declval<DOMElement&>(), "", "")),
    std::vector<DOMElement*>>);
static_assert(std::is_same_v<decltype(DOMPathCanopy::UnderneathCanopy(std::declval<const DOMElement&>(), "", "")),
    std::vector<const DOMElement*>>);

namespace {

struct CanopyRow {
    const char* name;
    const char* tree;
    const char* canopyPath;
    const char* target;
    const char* found;
};

class WithinCanopyRows : public testing::TestWithParam<CanopyRow> {};
class UnderneathCanopyRows : public testing::TestWithParam<CanopyRow> {};

}  // namespace

TEST_P(WithinCanopyRows, ReturnsTheExpectedElements)
{
    const auto& [name, text, canopyPath, target, found] = GetParam();
    const Tree tree(text);
    EXPECT_EQ(Describe(DOMPathCanopy::WithinCanopy(tree[1], canopyPath, target)), found);
    EXPECT_EQ(Describe(DOMPathCanopy::WithinCanopy(std::as_const(tree[1]), canopyPath, target)), found);
}

const CanopyRow WithinRows[] = {
    {"Children", "a(c(nxn))", "a/c", "n", "n3 n5"},
    {"NestedMatchesParentsFirst", "a(c(n(n(n)xn)n))", "a/c", "n", "n3 n4 n5 n7 n8"},
    {"OtherChildrenAreNotSearched", "a(c(x(n)n))", "a/c", "n", "n5"},
    {"EveryCanopyInDocumentOrder", "a(c(n)xc(n))", "a/c", "n", "n3 n6"},
    {"NameOfTheCanopyItself", "a(c(c(c)))", "a/c", "c", "c3 c4"},
    {"NestedCanopiesAreSearchedAgain", "a(c(c(c)))", "//c", "c", "c3 c4 c4"},
    {"StarMatchesNothing", "a(c(n))", "a/c", "*", ""},
    {"AbsoluteCanopyPath", "a(c(n))", "/a/c", "n", "n3"},
    {"NoCanopy", "a(c(n))", "a/x", "n", ""},
    {"EmptyCanopyPath", "a(c(n))", "", "n", ""},
    {"EmptyName", "a(c(n))", "a/c", "", ""},
    {"PathIsNotAName", "a(c(n(m)))", "a/c", "n/m", ""},
    {"Leaf", "a(c)", "a/c", "n", ""},
};

INSTANTIATE_TEST_SUITE_P(
    DOMPathCanopyTest, WithinCanopyRows, testing::ValuesIn(WithinRows), [](const auto& row) { return row.param.name; });

TEST_P(UnderneathCanopyRows, ReturnsTheExpectedElements)
{
    const auto& [name, text, canopyPath, target, found] = GetParam();
    const Tree tree(text);
    EXPECT_EQ(Describe(DOMPathCanopy::UnderneathCanopy(tree[1], canopyPath, target)), found);
    EXPECT_EQ(Describe(DOMPathCanopy::UnderneathCanopy(std::as_const(tree[1]), canopyPath, target)), found);
}

const CanopyRow UnderneathRows[] = {
    {"Children", "a(c(xyx))", "a/c", "x", "x3 x5"},
    {"BelowTheChildren", "a(c(x(y)x(zy)))", "a/c", "x/y", "y4 y7"},
    {"InNestedCanopies", "a(c(xc(xc(x))x))", "a/c", "x", "x3 x5 x7 x8"},
    {"NestedCanopyIsNotMatchedByItsName", "a(c(c(x)))", "a/c", "c", ""},
    {"NestedCanopyIsNotMatchedByAPath", "a(c(c(x)))", "a/c", "c/x", ""},
    {"NestedCanopyIsNotMatchedByAStar", "a(c(c(x)y))", "a/c", "*", "x4 y5"},
    {"StarWithAPath", "a(c(x(n)c(y(nm))))", "a/c", "*/n", "n4 n7"},
    {"OtherChildrenAreSkipped", "a(c(y(x)x))", "a/c", "x", "x5"},
    {"MatchesAreNotSearchedForMoreMatches", "a(c(x(x)))", "a/c", "x", "x3"},
    {"AnyDepthBelowTheHead", "a(c(x(y(z(y)))))", "a/c", "x//y", "y4 y6"},
    {"ThreeSlashesBelowTheHead", "a(c(x(y(z(y)))))", "a/c", "x///y", "y6"},
    {"EveryCanopyInDocumentOrder", "a(c(x)bc(x))", "a/c", "x", "x3 x6"},
    {"CanopiesOfDifferentNames", "a(c(b(x)x)b(c(x)x))", "a/*", "x", "x5 x9"},
    {"NestedCanopiesAreSearchedAgain", "a(c(c(x)))", "//c", "x", "x4 x4"},
    {"LeadingSlash", "a(c(x))", "a/c", "/x", ""},
    {"LeadingSlashes", "a(c(x))", "a/c", "//x", ""},
    {"EmptySubPath", "a(c(x))", "a/c", "", ""},
    {"SubPathEndsWithASlash", "a(c(x(y)))", "a/c", "x/", ""},
    {"NoCanopy", "a(c(x))", "a/b", "x", ""},
    {"EmptyCanopyPath", "a(c(x))", "", "x", ""},
};

INSTANTIATE_TEST_SUITE_P(
    DOMPathCanopyTest, UnderneathCanopyRows, testing::ValuesIn(UnderneathRows), [](const auto& row) {
        return row.param.name;
    });

TEST(DOMPathCanopyTest, WithinStopsAfter1024Levels)
{
    DOM document;
    DOMElement& canopy = document.GetRoot().AddNewChild("c", nullptr);
    DOMElement& level1024 = AddChain(canopy, "n", 1024);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(canopy, "c", "n").size(), 1024u);
    AddChain(level1024, "n", 10);
    const std::vector<DOMElement*> found = DOMPathCanopy::WithinCanopy(canopy, "c", "n");
    ASSERT_EQ(found.size(), 1024u);
    EXPECT_EQ(found.back(), &level1024);
}

TEST(DOMPathCanopyTest, WithinContinuesAfterABranchThatIsTooDeep)
{
    DOM document;
    DOMElement& canopy = document.GetRoot().AddNewChild("c", nullptr);
    AddChain(canopy, "n", 2000);
    DOMElement& behind = canopy.AddNewChild("n", nullptr);
    const std::vector<DOMElement*> found = DOMPathCanopy::WithinCanopy(canopy, "c", "n");
    ASSERT_EQ(found.size(), 1025u);
    EXPECT_EQ(found.back(), &behind);
}

TEST(DOMPathCanopyTest, UnderneathStopsAfter1024Levels)
{
    DOM document;
    DOMElement& canopy = document.GetRoot().AddNewChild("c", nullptr);
    DOMElement& level1023 = AddChain(canopy, "c", 1023);
    DOMElement& found = level1023.AddNewChild("x", nullptr);
    DOMElement& level1024 = level1023.AddNewChild("c", nullptr);
    level1024.AddNewChild("x", nullptr);
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(canopy, "c", "x"), std::vector<DOMElement*>{&found});
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(canopy, "c", "*"), std::vector<DOMElement*>{&found});
}

// The limit counts only nested canopies. The sub-path is a separate query without a limit.
TEST(DOMPathCanopyTest, SubPathsReachAnyDepth)
{
    DOM document;
    DOMElement& canopy = document.GetRoot().AddNewChild("c", nullptr);
    DOMElement& low = AddChain(canopy, "x", 3000).AddNewChild("y", nullptr);
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(canopy, "c", "x//y"), std::vector<DOMElement*>{&low});
}

// If the sub-path were parsed for every child, the test would parse 40,000 million characters.
TEST(DOMPathCanopyTest, SubPathIsParsedOnce)
{
    const Tree tree("c(x)");
    for (int i = 0; i < 200000; ++i)
        tree[1].AddNewChild("x", nullptr);
    EXPECT_TRUE(DOMPathCanopy::UnderneathCanopy(tree[1], "c", Repeated("x/", 100000) + "x").empty());
}

TEST(DOMPathCanopyTest, MutableOverloadReturnsMutableElements)
{
    const Tree tree("a(c(x))");
    DOMPathCanopy::WithinCanopy(tree[1], "a/c", "x").front()->SetText("t");
    EXPECT_EQ(tree[3].GetText(), VString("t"));
}
