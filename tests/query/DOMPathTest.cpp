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
// A copy of an iterator cannot be advanced, but the classic algorithms advance copies.
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

// Expects that every query function returns these matches in this order.
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

// The parameter is passed by value, so it is a copy of the caller's iterator.
template <typename E>
void ExpectAdvanceThrows(DOMPath::IteratorTemplate<E> iterator)
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

TEST_P(DOMPathRows, ReturnsTheExpectedMatches)
{
    const Tree tree(GetParam().tree);
    ExpectMatches(tree[GetParam().start], GetParam().path, GetParam().matches);
    ExpectMatches(std::as_const(tree[GetParam().start]), GetParam().path, GetParam().matches);
}

const PathRow PathRows[] = {
    {"EmptyPath", "a(a)", 1, "", ""},
    {"Slash", "a(a)", 1, "/", ""},
    {"TwoSlashes", "a(a)", 1, "//", ""},
    {"EndsWithASlash", "a(a)", 1, "a/", ""},
    {"EndsWithTwoSlashes", "a(a)", 1, "a//", ""},
    {"AbsoluteEndsWithASlash", "a(a)", 1, "/a/", ""},
    {"StartWithTheName", "a(a)", 1, "a", "a1"},
    {"StartWithAnotherName", "b(a)", 1, "a", ""},
    {"AnInnerStart", "b(a(c))", 2, "a/c", "c3"},
    {"NamesAreCaseSensitive", "a", 1, "A", ""},
    {"BlanksAreNotTrimmed", "a", 1, " a", ""},
    {"PredicatesAreNotSupported", "a(b)", 1, "a/b[1]", ""},
    {"DotIsAName", "a", 1, ".", ""},
    {"TwoDotsAreAName", "a(b)", 2, "..", ""},
    {"Children", "a(bcb)", 1, "a/b", "b2 b4"},
    {"ChildrenOfTheStartOnly", "a(b(b)c(b))", 1, "a/b", "b2"},
    {"ChildrenOfEveryMatch", "a(b(x)c(x)b(xx))", 1, "a/b/x", "x3 x7 x8"},
    {"AbsoluteFromTheRoot", "a(b(c))", 1, "/a", "a1"},
    {"AbsoluteFromBelow", "a(b(c))", 3, "/a", "a1"},
    {"AbsoluteOfAnotherName", "a(b(c))", 3, "/b", ""},
    {"AbsoluteChildren", "a(b(c))", 3, "/a/b", "b2"},
    {"AbsoluteStar", "a(b(c))", 3, "/*", "a1"},
    {"SecondTopLevelElementIsNotReached", "ab", 1, "/b", ""},
    {"DescendantsIncludeTheStart", "b(a(b)b)", 1, "//b", "b1 b3 b4"},
    {"DescendantsFromAnInnerElement", "b(a(b(b))b)", 2, "//b", "b3 b4"},
    {"DescendantsFromAnInnerMatch", "b(a(b(b))b)", 3, "//b", "b3 b4"},
    {"DescendantsOfAnAbsoluteStart", "a(b(c)c)", 3, "/a//c", "c3 c4"},
    {"AllElements", "a(b(c)d)", 1, "//*", "a1 b2 c3 d4"},
    {"AllFromAnInnerElement", "a(b(c)d)", 2, "//*", "b2 c3"},
    {"Star", "a", 1, "*", "a1"},
    {"AllChildren", "a(b(c)d)", 1, "a/*", "b2 d4"},
    {"StarInTheMiddle", "a(b(x)c(xy)x(d(x)))", 1, "a/*/x", "x3 x5"},
    {"StarMatchesExactlyOneLevel", "a(x(x(x)))", 1, "*/*", "x2"},
    {"DescendantsOfAMatchExcludeTheMatch", "a(a(a))", 1, "a//a", "a2 a3"},
    {"DoubleSlashMatchesAtAnyDepth", "a(bc(bd(b)))", 1, "a//b", "b2 b4 b6"},
    {"ThreeSlashesSkipTheChildren", "a(bc(bd(b)))", 1, "a///b", "b4 b6"},
    {"ThreeSlashesForEverySibling", "a(bbc(bb)b)", 1, "a///b", "b5 b6"},
    {"FourSlashesSkipTwoLevels", "a(b(b(bb)b)b(b(b)))", 1, "a////b", "b4 b5 b9"},
    {"LeadingThreeSlashesSkipTheStart", "b(b(b)b)", 1, "///b", "b2 b3 b4"},
    {"LeadingFourSlashes", "b(bb(b)b)", 1, "////b", "b4"},
    {"TwoRunsOfEmptySegments", "a(b(c)x(b(y(c))))", 1, "a//b//c", "c3 c7"},
    {"NestedMatchesAreFoundOnce", "a(a(b(b)))", 1, "//a//b", "b3 b4"},
    {"MatchesPrecedeTheirDescendants", "a(b(cb(b))b)", 1, "//b", "b2 b4 b5 b6"},
    {"PathContinuesBelowALeaf", "a(b)", 1, "a/b/c", ""},
    {"PathIsDeeperThanTheTree", "a", 1, "a/a/a/a", ""},
};

INSTANTIATE_TEST_SUITE_P(
    DOMPathTest, DOMPathRows, testing::ValuesIn(PathRows), [](const auto& row) { return row.param.name; });

TEST(DOMPathTest, AnyTextIsALiteralName)
{
    for (const char* name : {".", "..", "b[1]", "@k", "*b", "**", "text()", "größe", "p:b", "\\"}) {
        DOMElement root("a");
        DOMElement& child = root.AddNewChild(name, nullptr);
        root.AddNewChild("b", nullptr);
        EXPECT_EQ(DOMPath::GetAll(root, VString("a/") + name), std::vector<DOMElement*>{&child}) << name;
    }
}

TEST(DOMPathTest, AbsolutePathMatchesNothingWithoutADocument)
{
    DOMElement root("a");
    DOMElement& child = root.AddNewChild("b", nullptr);
    for (const char* path : {"/a", "/*", "/a/b", "/a//b"}) {
        ExpectMatches(root, path, "");
        ExpectMatches(std::as_const(child), path, "");
    }
    ExpectMatches(root, "//b", "b0");
}

TEST(DOMPathTest, AbsolutePathMatchesNothingInAnEmptyDocument)
{
    DOM document;
    ExpectMatches(document.GetRoot(), "/Document", "");
    ExpectMatches(document.GetRoot(), "/*", "");
    ExpectMatches(std::as_const(document.GetRoot()), "/*", "");
    ExpectMatches(document.GetRoot(), "Document", "Document0");
}

TEST(DOMPathTest, AbsolutePathOfADetachedElementStartsAtItsDocument)
{
    const Tree tree("a(b(c))");
    const std::unique_ptr<DOMElement> removed = tree[1].RemoveChild("b");
    ExpectMatches(*removed, "/a", "a1");
    ExpectMatches(*removed, "/a/b", "");
    ExpectMatches(*removed, "b/c", "c3");
}

TEST(DOMPathTest, WalkReadsThePathWhenBeginIsCalled)
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

TEST(DOMPathTest, IteratorKeepsItsPathWhenTheVariableChanges)
{
    const Tree tree("a(bcb)");
    VString path("a/b");
    Iterator i = DOMPath::Walk(tree[1], path).begin();
    path = "a/c";
    EXPECT_EQ(Describe(*++i), "b4");
}

TEST(DOMPathTest, WalkCanBeIteratedRepeatedly)
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

TEST(DOMPathTest, ConstantWalkYieldsConstantElements)
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

TEST(DOMPathIteratorTest, ExhaustedIteratorEqualsEveryEnd)
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

TEST(DOMPathIteratorTest, UnfinishedIteratorsAreNeverEqual)
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

TEST(DOMPathIteratorTest, IncrementingTheEndHasNoEffect)
{
    Iterator end;
    ++end;
    EXPECT_EQ(end, Iterator());
    EXPECT_EQ(end++, Iterator());
    EXPECT_EQ(end, Iterator());
}

TEST(DOMPathIteratorTest, CopyCanBeReadButNotAdvanced)
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
    ExpectAdvanceThrows(copy);
    EXPECT_THROW(++assigned, std::out_of_range);
    EXPECT_EQ(Describe(*++i), "b3");
    EXPECT_EQ(Describe(*++i), "b4");
    EXPECT_EQ(++i, Iterator());
    EXPECT_EQ(Describe(*copy), "b2");
}

TEST(DOMPathIteratorTest, CopyOfAConstIteratorCannotBeAdvanced)
{
    const Tree tree("a(bb)");
    const ConstIterator i(tree[1], "a/b");
    ExpectAdvanceThrows(i);
}

TEST(DOMPathIteratorTest, CopyOfACopyCannotBeAdvanced)
{
    const Tree tree("a(bb)");
    const Iterator i(tree[1], "a/b");
    const Iterator copy(i);
    ExpectAdvanceThrows(Iterator(copy));
}

TEST(DOMPathIteratorTest, CopyOnTheLastMatchCanAdvanceToTheEnd)
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

TEST(DOMPathIteratorTest, PostfixIncrementReturnsACopyOfTheOldPosition)
{
    const Tree tree("a(bb)");
    Iterator i(tree[1], "a/b");
    const Iterator before = i++;
    EXPECT_EQ(Describe(*before), "b2");
    EXPECT_EQ(Describe(*i), "b3");
    ExpectAdvanceThrows(before);
    i++;
    EXPECT_EQ(i, Iterator());
}

TEST(DOMPathIteratorTest, MovedIteratorContinues)
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

TEST(DOMPathIteratorTest, SelfAssignedIteratorContinues)
{
    const Tree tree("a(bb)");
    Iterator i(tree[1], "a/b");
    const Iterator& same = i;
    i = same;
    EXPECT_EQ(Describe(*i), "b2");
    EXPECT_EQ(Describe(*++i), "b3");
}

TEST(DOMPathIteratorTest, WorksWithAlgorithmsThatDoNotCopyIterators)
{
    const Tree tree("a(bcb)");
    const VString path("a/b");
    auto walk = DOMPath::Walk(tree[1], path);
    std::vector<DOMElement*> matches;
    std::for_each(walk.begin(), walk.end(), [&matches](DOMElement& match) { matches.push_back(&match); });
    EXPECT_EQ(Describe(matches), "b2 b4");
    const auto addLine = [](int sum, const DOMElement& match) { return sum + match.GetStartLine(); };
    EXPECT_EQ(std::accumulate(walk.begin(), walk.end(), 0, addLine), 6);
}

// The walk compares strings by their buffers first.
TEST(DOMPathTest, EqualNamesMatchWhetherOrNotTheyShareABuffer)
{
    const VString shared("ab");
    DOMElement root("a");
    std::size_t expected = 0;
    for (int i = 0; i < 100; ++i) {
        const bool isMatch = i % 3 != 2;
        expected += isMatch ? 1 : 0;
        root.AddNewChild(i % 3 == 0 ? shared : VString(isMatch ? "ab" : "ba"), nullptr).AddNewChild("c", nullptr);
    }
    EXPECT_EQ(DOMPath::GetAll(root, "//ab").size(), expected);
    EXPECT_EQ(DOMPath::GetAll(root, "//" + shared).size(), expected);
    EXPECT_EQ(DOMPath::GetAll(root, "a/ab/c").size(), expected);
    EXPECT_EQ(DOMPath::GetAll(root, "a/*/c").size(), 100U);
    EXPECT_EQ(DOMPath::GetAll(root, "//c").size(), 100U);
}

TEST(DOMPathTest, SiblingsOfOneStringAreVisitedEachOnItsOwn)
{
    const VString b("b");
    const VString c("c");
    DOMElement root("a");
    std::vector<DOMElement*> expected;
    for (int i = 0; i < 20; ++i) {
        DOMElement& child = root.AddNewChild(b, nullptr);
        for (int j = 0; j < i % 4; ++j)
            expected.push_back(&child.AddNewChild(c, nullptr));
    }
    EXPECT_EQ(DOMPath::GetAll(root, "a/b/c"), expected);
    EXPECT_EQ(DOMPath::GetAll(root, "//c"), expected);
}

TEST(DOMPathWalkerTest, RestartBeginsAtAnotherElement)
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

TEST(DOMPathWalkerTest, RestartSupportsEveryKindOfPath)
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

TEST(DOMPathForeachTest, CallbackMayChangeTheTree)
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

TEST(DOMPathForeachTest, CallbackMayRemoveItsMatch)
{
    const Tree tree("a(bcb(d))");
    DOMPath::Foreach(tree[1], "a/b", [](DOMElement& match) { match.GetParent()->RemoveChild(match); });
    EXPECT_EQ(Describe(tree[1].GetChildren()), "c3");
}

TEST(DOMPathForeachTest, CallbackMayChangeThePath)
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

TEST(DOMPathForeachTest, EmptyCallbackThrowsOnlyForAMatch)
{
    const Tree tree("a(b)");
    const std::function<void(DOMElement&)> none;
    const std::function<void(const DOMElement&)> constNone;
    EXPECT_THROW(DOMPath::Foreach(tree[1], "a/b", none), std::bad_function_call);
    EXPECT_THROW(DOMPath::Foreach(std::as_const(tree[1]), "a/b", constNone), std::bad_function_call);
    EXPECT_NO_THROW(DOMPath::Foreach(tree[1], "a/x", none));
    EXPECT_NO_THROW(DOMPath::Foreach(std::as_const(tree[1]), "", constNone));
}

// If every query visited the rest of the tree, the test would visit 80,000 million elements.
TEST(DOMPathTest, FirstMatchEndsTheSearch)
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

// If a query compared each element with every segment of the path, the test would make more than 100,000 million
// comparisons.
TEST(DOMPathTest, UnreachedSegmentsCostNothing)
{
    const Tree tree("a(b)");
    for (int i = 0; i < 300000; ++i)
        tree[1].AddNewChild("b", nullptr);
    constexpr int Count = 1500000;
    for (const char* segments : {"a/b/", "*/*/", "//", "/*/"})
        EXPECT_TRUE(DOMPath::GetAll(tree[1], Repeated(segments, Count) + "b").empty()) << segments;
}

// The large branch cannot match. If every query visited it, the test would visit 40,000 million elements.
TEST(DOMPathTest, BranchesThatCannotMatchAreSkipped)
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
