#include "vancorexml/main/parser/DOMElementChildren.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"

using namespace querytest;

static_assert(std::random_access_iterator<DOMElementChildren::iterator>);
static_assert(std::random_access_iterator<DOMElementChildren::const_iterator>);
static_assert(std::random_access_iterator<DOMElementChildren::reverse_iterator>);
static_assert(std::random_access_iterator<DOMElementChildren::const_reverse_iterator>);
static_assert(std::is_same_v<std::iter_reference_t<DOMElementChildren::iterator>, DOMElement*>);
static_assert(std::is_same_v<std::iter_reference_t<DOMElementChildren::const_iterator>, const DOMElement*>);
static_assert(std::is_convertible_v<DOMElementChildren::iterator, DOMElementChildren::const_iterator>);
static_assert(!std::is_convertible_v<DOMElementChildren::const_iterator, DOMElementChildren::iterator>);
static_assert(std::is_same_v<decltype(std::declval<const DOMElement&>().GetChildren().begin()),
    DOMElementChildren::const_iterator>);
static_assert(
    std::is_same_v<decltype(std::declval<DOMElement&>().GetChildren().begin()), DOMElementChildren::iterator>);

// The iterators return pointers by value. So their iterator_category is input, although std::ranges accepts them as
// random access iterators.
template <typename Iterator>
constexpr bool IsClassicInputIterator =
    std::is_same_v<typename std::iterator_traits<Iterator>::iterator_category, std::input_iterator_tag>;
static_assert(IsClassicInputIterator<DOMElementChildren::iterator>);
static_assert(IsClassicInputIterator<DOMElementChildren::const_iterator>);
static_assert(IsClassicInputIterator<DOMElementChildren::reverse_iterator>);

// The children of a constant element cannot be changed through any view.
static_assert(std::is_same_v<decltype(std::declval<const DOMElement&>().GetChildren()), const DOMElementConstChildren>);
static_assert(!std::is_constructible_v<DOMElementChildren, DOMElementConstChildren>);
static_assert(!std::is_constructible_v<DOMElementChildren, const DOMElement&>);
static_assert(!std::is_convertible_v<DOMElementConstChildren, DOMElementChildren>);
static_assert(!std::is_convertible_v<DOMElementConstChildren, DOMElementChildren&>);
static_assert(!std::is_convertible_v<const DOMElementConstChildren, DOMElementChildren&&>);
static_assert(!std::is_assignable_v<DOMElementChildren&, DOMElementConstChildren>);
static_assert(std::is_convertible_v<DOMElementConstChildren, const DOMElementChildren&>);
static_assert(std::is_convertible_v<DOMElementChildren, DOMElementConstChildren>);
static_assert(std::is_same_v<decltype(*std::declval<DOMElementConstChildren&>().begin()), const DOMElement*>);
static_assert(std::is_same_v<decltype(std::declval<DOMElementConstChildren&>()[0]), const DOMElement*>);
static_assert(std::is_same_v<decltype(std::declval<DOMElementConstChildren&>().at(0)), const DOMElement*>);
static_assert(std::is_same_v<decltype(std::declval<DOMElementConstChildren&>().front()), const DOMElement*>);
static_assert(std::is_same_v<decltype(std::declval<DOMElementConstChildren&>().back()), const DOMElement*>);
static_assert(std::is_same_v<decltype(*std::declval<DOMElementConstChildren&>().rbegin()), const DOMElement*>);

static_assert(std::is_same_v<DOMElementChildren::value_type, DOMElement*>);
static_assert(std::is_same_v<DOMElementConstChildren::value_type, const DOMElement*>);
static_assert(std::is_same_v<DOMElementChildren::size_type, std::size_t>);
static_assert(std::ranges::borrowed_range<DOMElementChildren>);
static_assert(std::ranges::borrowed_range<DOMElementConstChildren>);
static_assert(std::ranges::random_access_range<DOMElementChildren>);
static_assert(std::ranges::random_access_range<const DOMElementChildren>);
static_assert(std::ranges::random_access_range<DOMElementConstChildren>);
static_assert(std::ranges::sized_range<const DOMElementConstChildren>);

namespace {

// Checks every accessor of a view of the children b2, c3 and d4.
template <typename Children>
void ExpectThreeChildren(Children& children)
{
    EXPECT_EQ(children.size(), 3u);
    EXPECT_FALSE(children.empty());
    EXPECT_EQ(Describe(*children[1]), "c3");
    EXPECT_EQ(Describe(*children.at(2)), "d4");
    EXPECT_EQ(Describe(*children.front()), "b2");
    EXPECT_EQ(Describe(*children.back()), "d4");
    EXPECT_EQ(Describe(std::vector<const DOMElement*>(children.begin(), children.end())), "b2 c3 d4");
    EXPECT_EQ(Describe(std::vector<const DOMElement*>(children.cbegin(), children.cend())), "b2 c3 d4");
    EXPECT_EQ(Describe(std::vector<const DOMElement*>(children.rbegin(), children.rend())), "d4 c3 b2");
    EXPECT_EQ(Describe(std::vector<const DOMElement*>(children.crbegin(), children.crend())), "d4 c3 b2");
}

template <typename Children>
void ExpectOutOfRange(Children& children, std::size_t position)
{
    try {
        children.at(position);
    } catch (const std::out_of_range& exception) {
        EXPECT_STREQ(exception.what(), "invalid vector subscript");
        return;
    }
    ADD_FAILURE() << "no exception at " << position;
}

}  // namespace

TEST(DOMElementChildrenTest, TheMutableViewShowsTheChildren)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children = tree[1].GetChildren();
    ExpectThreeChildren(children);
    children.front()->SetName("x");
    children[1]->SetName("y");
    children.at(2)->SetName("z");
    EXPECT_EQ(Describe(children), "x2 y3 z4");
}

TEST(DOMElementChildrenTest, TheConstantViewShowsTheChildren)
{
    const Tree tree("a(bcd)");
    const auto children = std::as_const(tree[1]).GetChildren();
    ExpectThreeChildren(children);
    ExpectOutOfRange(children, 3);
    EXPECT_TRUE(std::as_const(tree[2]).GetChildren().empty());
}

// Receives the view by constant reference, as XMLFormatter::OutputDOMElements does.
std::string DescribeView(const DOMElementChildren& children)
{
    return Describe(children);
}

TEST(DOMElementChildrenTest, EitherViewCanBePassedByConstantReference)
{
    const Tree tree("a(bcd)");
    EXPECT_EQ(DescribeView(tree[1].GetChildren()), "b2 c3 d4");
    EXPECT_EQ(DescribeView(std::as_const(tree[1]).GetChildren()), "b2 c3 d4");
    const DOMElementConstChildren children = tree[1].GetChildren();
    EXPECT_EQ(DescribeView(children), "b2 c3 d4");
}

TEST(DOMElementChildrenTest, CanBeConstructedFromAnElement)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children(tree[1]);
    ExpectThreeChildren(children);
}

TEST(DOMElementChildrenTest, AnEmptyViewHasEqualBeginAndEnd)
{
    const Tree tree("a");
    DOMElementChildren children = tree[1].GetChildren();
    EXPECT_EQ(children.size(), 0u);
    EXPECT_TRUE(children.empty());
    EXPECT_EQ(children.begin(), children.end());
    EXPECT_EQ(children.cbegin(), children.cend());
    EXPECT_EQ(children.rbegin(), children.rend());
    EXPECT_EQ(children.crbegin(), children.crend());
}

TEST(DOMElementChildrenTest, AtThrowsOutOfRange)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children = tree[1].GetChildren();
    ExpectOutOfRange(children, 3);
    ExpectOutOfRange(std::as_const(children), 3);
    ExpectOutOfRange(children, static_cast<std::size_t>(-1));
    DOMElementChildren none = tree[2].GetChildren();
    ExpectOutOfRange(none, 0);
    ExpectOutOfRange(std::as_const(none), 0);
}

TEST(DOMElementChildrenTest, FollowsLaterChanges)
{
    const Tree tree("a(b)");
    const DOMElementChildren children = tree[1].GetChildren();
    tree[1].AddNewChild("c", &tree[2]);
    EXPECT_EQ(Describe(children), "c0 b2");
    tree[1].RemoveChildren();
    EXPECT_TRUE(children.empty());
}

TEST(DOMElementChildrenTest, CopiedAndMovedViewsShowTheSameChildren)
{
    const Tree tree("a(bcd(e))");
    DOMElementChildren children = tree[1].GetChildren();
    DOMElementChildren copy(children);
    DOMElementChildren moved(std::move(children));
    DOMElementChildren assigned(tree[5]);
    EXPECT_TRUE(assigned.empty());
    assigned = copy;
    DOMElementChildren moveAssigned(tree[5]);
    moveAssigned = std::move(copy);
    ExpectThreeChildren(moved);
    ExpectThreeChildren(assigned);
    ExpectThreeChildren(moveAssigned);
}

TEST(DOMElementChildrenTest, IteratorsStepInBothDirections)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children = tree[1].GetChildren();
    DOMElementChildren::iterator i = children.begin();
    EXPECT_EQ(Describe(**i++), "b2");
    EXPECT_EQ(Describe(**i), "c3");
    EXPECT_EQ(Describe(**++i), "d4");
    EXPECT_EQ(Describe(**i--), "d4");
    EXPECT_EQ(Describe(**i), "c3");
    EXPECT_EQ(Describe(**--i), "b2");
    EXPECT_EQ(i, children.begin());
}

TEST(DOMElementChildrenTest, IteratorsJumpAndCompareByPosition)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children = tree[1].GetChildren();
    const DOMElementChildren::iterator begin = children.begin();
    DOMElementChildren::iterator i = begin + 2;
    EXPECT_EQ(Describe(**i), "d4");
    EXPECT_EQ(Describe(**(1 + begin)), "c3");
    EXPECT_EQ(Describe(**(i - 1)), "c3");
    EXPECT_EQ(Describe(*begin[1]), "c3");
    EXPECT_EQ(i - begin, 2);
    EXPECT_EQ(begin - i, -2);
    EXPECT_TRUE(begin < i && i > begin && begin <= i && i >= begin && begin != i);
    EXPECT_FALSE(i < begin || begin > i || i <= begin || begin >= i || begin == i);
    i -= 2;
    EXPECT_TRUE(i == begin && i <= begin && i >= begin);
    i += 3;
    EXPECT_EQ(i, children.end());
}

TEST(DOMElementChildrenTest, MutableIteratorConvertsToAConstantOne)
{
    const Tree tree("a(bcd)");
    DOMElementChildren children = tree[1].GetChildren();
    DOMElementChildren::const_iterator i = children.begin();
    EXPECT_EQ(i, children.cbegin());
    EXPECT_EQ(*i, *children.begin());
}

TEST(DOMElementChildrenTest, WorksWithRangeAlgorithms)
{
    const Tree tree("a(bcbd)");
    const auto isB = [](const DOMElement* child) { return child->GetName() == VString("b"); };
    // The iterator outlives the temporary view.
    const auto found = std::ranges::find_if(tree[1].GetChildren(), isB);
    EXPECT_EQ(Describe(**found), "b2");
    EXPECT_EQ(Describe(**std::ranges::prev(tree[1].GetChildren().end())), "d5");
    EXPECT_EQ(std::ranges::distance(std::as_const(tree[1]).GetChildren()), 4);
    EXPECT_EQ(std::ranges::size(std::as_const(tree[1]).GetChildren()), 4u);
    EXPECT_EQ(Describe(**std::ranges::next(tree[1].GetChildren().begin(), 2)), "b4");
}

TEST(DOMElementChildrenTest, WorksWithStandardAlgorithms)
{
    const Tree tree("a(bcbd)");
    DOMElementChildren children = tree[1].GetChildren();
    const auto isB = [](const DOMElement* child) { return child->GetName() == VString("b"); };
    EXPECT_EQ(std::count_if(children.begin(), children.end(), isB), 2);
    EXPECT_EQ(Describe(**std::find_if(children.rbegin(), children.rend(), isB)), "b4");
    EXPECT_EQ(std::distance(children.cbegin(), children.cend()), 4);
    const auto addLine = [](int sum, const DOMElement* child) { return sum + child->GetStartLine(); };
    EXPECT_EQ(std::accumulate(children.begin(), children.end(), 0, addLine), 14);
    const auto byLine = [](const DOMElement* child, int line) { return child->GetStartLine() < line; };
    EXPECT_EQ(Describe(**std::lower_bound(children.cbegin(), children.cend(), 4, byLine)), "b4");
}

TEST(DOMElementConstChildrenTest, AConstantReferenceKeepsTheViewAlive)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    DOMElement other("c");
    const DOMElementChildren& children = std::as_const(element).GetChildren();
    const DOMElementChildren& none = std::as_const(other).GetChildren();
    EXPECT_EQ(children.size(), 1u);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(children.front()->GetName(), VString("b"));
}

TEST(DOMElementConstChildrenTest, CopyShowsTheSameChildren)
{
    DOMElement element("a");
    element.AddNewChild("b", nullptr);
    auto children = std::as_const(element).GetChildren();
    const auto copy = children;
    EXPECT_EQ(copy.front(), children.front());
    children = std::as_const(*element.GetChild("b")).GetChildren();
    EXPECT_TRUE(children.empty());
    static_assert(std::is_same_v<decltype(children.front()), const DOMElement*>);
    static_assert(!std::is_constructible_v<DOMElementChildren, const DOMElementConstChildren&>);
    static_assert(!std::is_assignable_v<DOMElementChildren&, const DOMElementConstChildren&>);
}
