#include "vancorexml/main/parser/DOMPath.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"
#include "vancorexml/main/parser/DOMPathWalker.h"

using namespace querytest;

namespace {

using Iterator = DOMPath::IteratorTemplate<DOMElement>;
using ConstIterator = DOMPath::IteratorTemplate<const DOMElement>;
using Iterable = DOMPath::IterableTemplate<DOMElement>;

static_assert(std::input_iterator<Iterator>);
static_assert(std::input_iterator<ConstIterator>);
static_assert(std::sentinel_for<Iterator, Iterator>);
static_assert(std::is_same_v<std::iter_difference_t<Iterator>, std::ptrdiff_t>);
// A copy cannot be moved on, which the classic algorithms need.
template <typename T>
constexpr bool IsClassicIterator =
    std::is_convertible_v<typename std::iterator_traits<T>::iterator_category, std::input_iterator_tag>;
static_assert(IsClassicIterator<VString*>);
static_assert(!IsClassicIterator<Iterator>);
static_assert(!IsClassicIterator<ConstIterator>);
static_assert(!std::is_constructible_v<std::vector<DOMElement>, ConstIterator, ConstIterator>);
static_assert(std::is_same_v<std::iter_reference_t<Iterator>, DOMElement&>);
static_assert(std::is_same_v<std::iter_reference_t<ConstIterator>, const DOMElement&>);
static_assert(std::is_same_v<decltype(std::declval<Iterable&>().begin()), Iterator>);
static_assert(std::is_same_v<decltype(std::declval<Iterable&>().end()), Iterator>);
static_assert(std::is_same_v<decltype(std::declval<const Iterable&>().begin()), ConstIterator>);
static_assert(std::is_same_v<decltype(std::declval<const Iterable&>().end()), ConstIterator>);
static_assert(std::is_same_v<decltype(std::declval<Iterable&>().cbegin()), ConstIterator>);
static_assert(std::is_same_v<decltype(std::declval<Iterable&>().cend()), ConstIterator>);
static_assert(
    std::is_same_v<decltype(DOMPath::GetAll(std::declval<const DOMElement&>(), "")), std::vector<const DOMElement*>>);
static_assert(std::is_same_v<decltype(DOMPath::GetAll(std::declval<DOMElement&>(), "")), std::vector<DOMElement*>>);
static_assert(std::is_same_v<decltype(DOMPath::GetFirst(std::declval<const DOMElement&>(), "")), const DOMElement*>);
static_assert(std::is_same_v<decltype(DOMPath::GetFirst(std::declval<DOMElement&>(), "")), DOMElement*>);

struct PathRow {
    const char* name;
    const char* tree;
    std::size_t start;
    const char* path;
    const char* matches;
};

class DOMPathRows : public testing::TestWithParam<PathRow> {};

// Every way to ask gives the same matches in the same order.
template <typename E>
void ExpectMatches(E& element, const VString& path, const std::string& matches)
{
    const std::vector<E*> all = DOMPath::GetAll(element, path);
    EXPECT_EQ(Describe(all), matches);
    EXPECT_EQ(DOMPath::GetFirst(element, path), all.empty() ? nullptr : all.front());
    std::vector<E*> walked;
    for (E& match : DOMPath::Walk(element, path))
        walked.push_back(&match);
    EXPECT_EQ(walked, all);
    std::vector<E*> each;
    DOMPath::Foreach(element, path, [&each](E& match) { each.push_back(&match); });
    EXPECT_EQ(each, all);
}

// Takes a copy, which cannot go on.
template <typename E>
void ExpectNoAdvance(DOMPath::IteratorTemplate<E> iterator)
{
    try {
        ++iterator;
    } catch (const std::out_of_range& exception) {
        EXPECT_STREQ(exception.what(), "invalid vector subscript");
        return;
    }
    ADD_FAILURE() << "a copy advanced";
}

}  // namespace

TEST_P(DOMPathRows, Matches)
{
    const Tree tree(GetParam().tree);
    ExpectMatches(tree[GetParam().start], GetParam().path, GetParam().matches);
    ExpectMatches(std::as_const(tree[GetParam().start]), GetParam().path, GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(DOMPathTest,
    DOMPathRows,
    testing::Values(PathRow{"EmptyPath", "a(a)", 1, "", ""},
        PathRow{"Slash", "a(a)", 1, "/", ""},
        PathRow{"TwoSlashes", "a(a)", 1, "//", ""},
        PathRow{"EndsWithASlash", "a(a)", 1, "a/", ""},
        PathRow{"EndsWithTwoSlashes", "a(a)", 1, "a//", ""},
        PathRow{"AbsoluteEndsWithASlash", "a(a)", 1, "/a/", ""},
        PathRow{"TheStartByItsName", "a(a)", 1, "a", "a1"},
        PathRow{"TheStartOfAnotherName", "b(a)", 1, "a", ""},
        PathRow{"AnInnerStart", "b(a(c))", 2, "a/c", "c3"},
        PathRow{"CaseCounts", "a", 1, "A", ""},
        PathRow{"BlanksAreNotTrimmed", "a", 1, " a", ""},
        PathRow{"NoPredicates", "a(b)", 1, "a/b[1]", ""},
        PathRow{"DotIsAName", "a", 1, ".", ""},
        PathRow{"DotsAreAName", "a(b)", 2, "..", ""},
        PathRow{"Children", "a(bcb)", 1, "a/b", "b2 b4"},
        PathRow{"ChildrenOfTheStartOnly", "a(b(b)c(b))", 1, "a/b", "b2"},
        PathRow{"FromEveryParent", "a(b(x)c(x)b(xx))", 1, "a/b/x", "x3 x7 x8"},
        PathRow{"AbsoluteFromTheRoot", "a(b(c))", 1, "/a", "a1"},
        PathRow{"AbsoluteFromBelow", "a(b(c))", 3, "/a", "a1"},
        PathRow{"AbsoluteOfAnotherName", "a(b(c))", 3, "/b", ""},
        PathRow{"AbsoluteChildren", "a(b(c))", 3, "/a/b", "b2"},
        PathRow{"AbsoluteStar", "a(b(c))", 3, "/*", "a1"},
        PathRow{"DocumentElementsSecondSiblingIsNotReached", "ab", 1, "/b", ""},
        PathRow{"DescendantsAndTheStart", "b(a(b)b)", 1, "//b", "b1 b3 b4"},
        PathRow{"DescendantsFromAnInnerElement", "b(a(b(b))b)", 2, "//b", "b3 b4"},
        PathRow{"DescendantsFromAnInnerMatch", "b(a(b(b))b)", 3, "//b", "b3 b4"},
        PathRow{"DescendantsOfAnAbsoluteStart", "a(b(c)c)", 3, "/a//c", "c3 c4"},
        PathRow{"AllElements", "a(b(c)d)", 1, "//*", "a1 b2 c3 d4"},
        PathRow{"AllFromAnInnerElement", "a(b(c)d)", 2, "//*", "b2 c3"},
        PathRow{"Star", "a", 1, "*", "a1"},
        PathRow{"AllChildren", "a(b(c)d)", 1, "a/*", "b2 d4"},
        PathRow{"StarInTheMiddle", "a(b(x)c(xy)x(d(x)))", 1, "a/*/x", "x3 x5"},
        PathRow{"StarIsExactlyOneLevel", "a(x(x(x)))", 1, "*/*", "x2"},
        PathRow{"NeverTheStartOfItsDescendants", "a(a(a))", 1, "a//a", "a2 a3"},
        PathRow{"AnyDepthFromOneOn", "a(bc(bd(b)))", 1, "a//b", "b2 b4 b6"},
        PathRow{"ThreeSlashesSkipTheChildren", "a(bc(bd(b)))", 1, "a///b", "b4 b6"},
        PathRow{"ThreeSlashesForEverySibling", "a(bbc(bb)b)", 1, "a///b", "b5 b6"},
        PathRow{"FourSlashesSkipTwoLevels", "a(b(b(bb)b)b(b(b)))", 1, "a////b", "b4 b5 b9"},
        PathRow{"LeadingThreeSlashesSkipTheStart", "b(b(b)b)", 1, "///b", "b2 b3 b4"},
        PathRow{"LeadingFourSlashes", "b(bb(b)b)", 1, "////b", "b4"},
        PathRow{"TwoRunsOfEmptySegments", "a(b(c)x(b(y(c))))", 1, "a//b//c", "c3 c7"},
        PathRow{"NestedMatchesComeOnce", "a(a(b(b)))", 1, "//a//b", "b3 b4"},
        PathRow{"AMatchIsBeforeThoseBelowIt", "a(b(cb(b))b)", 1, "//b", "b2 b4 b5 b6"},
        PathRow{"ALeafInTheMiddle", "a(b)", 1, "a/b/c", ""},
        PathRow{"LongerThanTheTree", "a", 1, "a/a/a/a", ""}),
    [](const auto& row) { return row.param.name; });

TEST(DOMPathTest, NamesOfAnyTextAreLiteral)
{
    for (const char* name : {".", "..", "b[1]", "@k", "*b", "**", "text()", "größe", "p:b", "\\"}) {
        DOMElement root("a");
        DOMElement& child = root.AddNewChild(name, nullptr);
        root.AddNewChild("b", nullptr);
        EXPECT_EQ(DOMPath::GetAll(root, VString("a/") + name), std::vector<DOMElement*>{&child}) << name;
    }
}

TEST(DOMPathTest, AbsoluteWithoutADocumentYieldsNothing)
{
    DOMElement root("a");
    DOMElement& child = root.AddNewChild("b", nullptr);
    for (const char* path : {"/a", "/*", "/a/b", "/a//b"}) {
        ExpectMatches(root, path, "");
        ExpectMatches(std::as_const(child), path, "");
    }
    ExpectMatches(root, "//b", "b0");
}

TEST(DOMPathTest, AbsoluteWithoutADocumentElementYieldsNothing)
{
    DOM document;
    ExpectMatches(document.GetRoot(), "/Document", "");
    ExpectMatches(document.GetRoot(), "/*", "");
    ExpectMatches(std::as_const(document.GetRoot()), "/*", "");
    ExpectMatches(document.GetRoot(), "Document", "Document0");
}

TEST(DOMPathTest, ADetachedElementStartsAbsolutePathsAtItsDocument)
{
    const Tree tree("a(b(c))");
    const std::unique_ptr<DOMElement> removed = tree[1].RemoveChild("b");
    ExpectMatches(*removed, "/a", "a1");
    ExpectMatches(*removed, "/a/b", "");
    ExpectMatches(*removed, "b/c", "c3");
}

TEST(DOMPathTest, WalkReadsThePathWhenItBegins)
{
    const Tree tree("a(bc)");
    VString path("a/b");
    auto walk = DOMPath::Walk(tree[1], path);
    path = "a/c";
    EXPECT_EQ(Describe(*walk.begin()), "c3");
}

TEST(DOMPathTest, WalkKeepsATemporaryPath)
{
    const Tree tree("a(bcb)");
    const std::string path("a/b");
    std::vector<DOMElement*> matches;
    for (DOMElement& match : DOMPath::Walk(tree[1], path.c_str()))
        matches.push_back(&match);
    for (DOMElement& match : DOMPath::Walk(tree[1], VString("a/") + VString("c")))
        matches.push_back(&match);
    for (const DOMElement& match : DOMPath::Walk(std::as_const(tree[1]), std::add_const_t<VString>("//b")))
        matches.push_back(const_cast<DOMElement*>(&match));
    EXPECT_EQ(Describe(matches), "b2 b4 c3 b2 b4");
}

TEST(DOMPathTest, CopiedWalkKeepsATemporaryPath)
{
    const Tree tree("a(bcb)");
    auto walk = std::make_unique<Iterable>(DOMPath::Walk(tree[1], "a/b"));
    Iterable copy(*walk);
    walk.reset();
    EXPECT_EQ(Describe(*copy.begin()), "b2");
    EXPECT_EQ(Describe(*copy.cbegin()), "b2");
}

TEST(DOMPathTest, AnIteratorKeepsThePathItBeganWith)
{
    const Tree tree("a(bcb)");
    VString path("a/b");
    Iterator i = DOMPath::Walk(tree[1], path).begin();
    path = "a/c";
    EXPECT_EQ(Describe(*++i), "b4");
}

TEST(DOMPathTest, AWalkBeginsAnewEachTime)
{
    const Tree tree("a(bb)");
    const VString path("a/b");
    auto walk = DOMPath::Walk(tree[1], path);
    for (int round = 0; round < 2; ++round) {
        std::vector<DOMElement*> matches;
        for (DOMElement& match : walk)
            matches.push_back(&match);
        EXPECT_EQ(Describe(matches), "b2 b3");
    }
}

TEST(DOMPathTest, AConstantWalkYieldsConstantElements)
{
    const Tree tree("a(bb)");
    const VString path("a/b");
    const auto walk = DOMPath::Walk(tree[1], path);
    std::vector<const DOMElement*> matches;
    for (const DOMElement& match : walk)
        matches.push_back(&match);
    for (ConstIterator i = walk.cbegin(); i != walk.cend(); ++i)
        matches.push_back(&*i);
    EXPECT_EQ(Describe(matches), "b2 b3 b2 b3");
}

TEST(DOMPathIteratorTest, AnExhaustedWalkEqualsEveryEnd)
{
    const Tree tree("a(b)");
    const VString path("a/b");
    auto walk = DOMPath::Walk(tree[1], path);
    Iterator i = walk.begin();
    EXPECT_NE(i, walk.end());
    EXPECT_EQ(i->GetName(), VString("b"));
    ++i;
    EXPECT_EQ(i, walk.end());
    EXPECT_EQ(i, Iterator());
    EXPECT_FALSE(i != Iterator());
    EXPECT_EQ(Iterator(tree[1], "x"), Iterator());
}

TEST(DOMPathIteratorTest, LiveWalksAreNeverEqual)
{
    const Tree tree("a(b)");
    Iterator one(tree[1], "a/b");
    Iterator two(tree[1], "a/b");
    EXPECT_EQ(&*one, &*two);
    EXPECT_NE(one, two);
    ++one;
    EXPECT_NE(one, two);
    ++two;
    EXPECT_EQ(one, two);
}

TEST(DOMPathIteratorTest, TheEndStaysWhereItIs)
{
    Iterator end;
    ++end;
    EXPECT_EQ(end, Iterator());
    EXPECT_EQ(end++, Iterator());
    EXPECT_EQ(end, Iterator());
}

TEST(DOMPathIteratorTest, ACopyIsReadButNotAdvanced)
{
    const Tree tree("a(bb(b))");
    Iterator i(tree[1], "//b");
    const Iterator copy(i);
    Iterator assigned;
    assigned = i;
    EXPECT_EQ(Describe(*copy), "b2");
    EXPECT_EQ(Describe(*assigned), "b2");
    EXPECT_NE(copy, i);
    EXPECT_NE(copy, assigned);
    ExpectNoAdvance(copy);
    EXPECT_THROW(++assigned, std::out_of_range);
    EXPECT_EQ(Describe(*++i), "b3");
    EXPECT_EQ(Describe(*++i), "b4");
    EXPECT_EQ(++i, Iterator());
    EXPECT_EQ(Describe(*copy), "b2");
}

TEST(DOMPathIteratorTest, AConstantCopyIsNotAdvancedEither)
{
    const Tree tree("a(bb)");
    const ConstIterator i(tree[1], "a/b");
    ExpectNoAdvance(i);
}

TEST(DOMPathIteratorTest, ACopyOfACopyIsNotAdvancedEither)
{
    const Tree tree("a(bb)");
    const Iterator i(tree[1], "a/b");
    const Iterator copy(i);
    ExpectNoAdvance(Iterator(copy));
}

TEST(DOMPathIteratorTest, ACopyAdvancesToTheEndWhenNothingIsLeft)
{
    const Tree tree("a(cb)");
    const Iterator i(tree[1], "a/b");
    Iterator copy(i);
    EXPECT_NE(copy, Iterator());
    ++copy;
    EXPECT_EQ(copy, Iterator());
    Iterator endCopy(copy);
    EXPECT_EQ(++endCopy, Iterator());
}

TEST(DOMPathIteratorTest, PostfixIncrementGivesACopyOfTheOldPlace)
{
    const Tree tree("a(bb)");
    Iterator i(tree[1], "a/b");
    const Iterator before = i++;
    EXPECT_EQ(Describe(*before), "b2");
    EXPECT_EQ(Describe(*i), "b3");
    ExpectNoAdvance(before);
    i++;
    EXPECT_EQ(i, Iterator());
}

TEST(DOMPathIteratorTest, AMovedIteratorWalksOn)
{
    const Tree tree("a(bb)");
    Iterator i(tree[1], "a/b");
    Iterator moved(std::move(i));
    EXPECT_EQ(i, Iterator());
    EXPECT_EQ(Describe(*moved), "b2");
    Iterator assigned(tree[1], "a");
    assigned = std::move(moved);
    EXPECT_EQ(moved, Iterator());
    EXPECT_EQ(Describe(*++assigned), "b3");
    EXPECT_EQ(++assigned, Iterator());
}

TEST(DOMPathIteratorTest, AnIteratorAssignedToItselfWalksOn)
{
    const Tree tree("a(bb)");
    Iterator i(tree[1], "a/b");
    const Iterator& same = i;
    i = same;
    EXPECT_EQ(Describe(*i), "b2");
    EXPECT_EQ(Describe(*++i), "b3");
}

TEST(DOMPathIteratorTest, ServesAlgorithmsThatDoNotCopyIt)
{
    const Tree tree("a(bcb)");
    const VString path("a/b");
    auto walk = DOMPath::Walk(tree[1], path);
    std::vector<DOMElement*> matches;
    std::for_each(walk.begin(), walk.end(), [&matches](DOMElement& match) { matches.push_back(&match); });
    EXPECT_EQ(Describe(matches), "b2 b4");
    EXPECT_EQ(
        std::accumulate(
            walk.begin(), walk.end(), 0, [](int sum, const DOMElement& match) { return sum + match.GetStartLine(); }),
        6);
}

TEST(DOMPathWalkerTest, RestartBeginsAgainAtAnotherElement)
{
    const Tree tree("a(b(x)b(xx)c(x))");
    DOMPath::Walker walker(tree[1], "b/x");
    EXPECT_EQ(walker.Next(), nullptr);
    walker.Restart(tree[4]);
    EXPECT_EQ(walker.Next(), &tree[5]);
    walker.Restart(tree[2]);
    EXPECT_EQ(walker.Next(), &tree[3]);
    EXPECT_EQ(walker.Next(), nullptr);
    walker.Restart(tree[4]);
    EXPECT_EQ(walker.Next(), &tree[5]);
    EXPECT_EQ(walker.Next(), &tree[6]);
    EXPECT_EQ(walker.Next(), nullptr);
}

TEST(DOMPathWalkerTest, RestartGoesByTheStartOfThePath)
{
    const Tree tree("a(b(c))");
    const DOMElement loose("a");
    DOMPath::Walker absolute(loose, "/a");
    EXPECT_EQ(absolute.Next(), nullptr);
    absolute.Restart(tree[3]);
    EXPECT_EQ(absolute.Next(), &tree[1]);
    DOMPath::Walker relative(tree[1], "//c");
    relative.Restart(tree[2]);
    EXPECT_EQ(relative.Next(), &tree[3]);
    DOMPath::Walker none(tree[1], "a/");
    none.Restart(tree[1]);
    EXPECT_EQ(none.Next(), nullptr);
}

TEST(DOMPathForeachTest, TheFunctionMayChangeTheTree)
{
    const Tree tree("a(bcb)");
    std::vector<std::string> called;
    DOMPath::Foreach(tree[1], "a/b", [&](DOMElement& match) {
        called.push_back(Describe(match));
        tree[1].AddNewChild("b", &match);
        match.SetName("x");
        match.AddNewChild("b", nullptr);
    });
    EXPECT_EQ(called, (std::vector<std::string>{"b2", "b4"}));
    EXPECT_EQ(Describe(tree[1].GetChildren()), "b0 x2 c3 b0 x4");
}

TEST(DOMPathForeachTest, TheFunctionMayRemoveItsMatch)
{
    const Tree tree("a(bcb(d))");
    DOMPath::Foreach(tree[1], "a/b", [](DOMElement& match) { match.GetParent()->RemoveChild(match); });
    EXPECT_EQ(Describe(tree[1].GetChildren()), "c3");
}

TEST(DOMPathForeachTest, TheFunctionMayChangeThePath)
{
    const Tree tree("a(bb)");
    VString path("a/b");
    int calls = 0;
    DOMPath::Foreach(tree[1], path, [&](DOMElement&) {
        path = "x";
        ++calls;
    });
    EXPECT_EQ(calls, 2);
}

TEST(DOMPathForeachTest, AnEmptyFunctionThrowsOnlyForAMatch)
{
    const Tree tree("a(b)");
    const std::function<void(DOMElement&)> none;
    const std::function<void(const DOMElement&)> constNone;
    EXPECT_THROW(DOMPath::Foreach(tree[1], "a/b", none), std::bad_function_call);
    EXPECT_THROW(DOMPath::Foreach(std::as_const(tree[1]), "a/b", constNone), std::bad_function_call);
    EXPECT_NO_THROW(DOMPath::Foreach(tree[1], "a/x", none));
    EXPECT_NO_THROW(DOMPath::Foreach(std::as_const(tree[1]), "", constNone));
}

// Would not end in any sensible time if the rest of the tree were visited.
TEST(DOMPathTest, TheFirstMatchVisitsNothingBehindIt)
{
    DOMElement root("a");
    constexpr int Count = 200000;
    for (int i = 0; i < Count; ++i)
        root.AddNewChild("b", nullptr);
    const DOMElement* const first = root.GetChildren().front();
    const VString path("//b");
    int found = 0;
    for (int i = 0; i < Count; ++i) {
        found += DOMPath::GetFirst(root, path) == first;
        found += &*DOMPath::Walk(root, path).begin() == first;
    }
    EXPECT_EQ(found, 2 * Count);
}

// The same for the segments of a long path that no element has come to.
TEST(DOMPathTest, SegmentsThatAreNotReachedCostNothing)
{
    const Tree tree("a(b)");
    for (int i = 0; i < 300000; ++i)
        tree[1].AddNewChild("b", nullptr);
    constexpr int Count = 1500000;
    for (const char* segments : {"a/b/", "*/*/", "//", "/*/"})
        EXPECT_TRUE(DOMPath::GetAll(tree[1], Repeated(segments, Count) + "b").empty()) << segments;
}

// The same for branches that cannot match.
TEST(DOMPathTest, BranchesThatCannotMatchAreNotEntered)
{
    const Tree tree("a(xb(c))");
    constexpr int Count = 200000;
    for (int i = 0; i < Count; ++i)
        tree[2].AddNewChild("c", nullptr);
    int found = 0;
    for (int i = 0; i < Count; ++i)
        found += DOMPath::GetFirst(tree[1], "a/b/c") == &tree[4];
    EXPECT_EQ(found, Count);
}
