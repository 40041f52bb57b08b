#include "vancorexml/main/parser/DOMElementTraversal.h"

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"

using namespace querytest;
using namespace DOMElementTraversal;

static_assert(std::input_iterator<PreorderIterator>);
static_assert(std::input_iterator<MutablePreorderIterator>);
static_assert(std::sentinel_for<PreorderIterator, PreorderIterator>);
static_assert(std::is_same_v<std::iter_reference_t<PreorderIterator>, const DOMElement&>);
static_assert(std::is_same_v<std::iter_reference_t<MutablePreorderIterator>, DOMElement&>);

namespace {

template <typename T>
class DOMElementTraversalTest : public testing::Test {};

using Forms = testing::Types<DOMElement, const DOMElement>;
TYPED_TEST_SUITE(DOMElementTraversalTest, Forms);

template <typename T>
std::string DescribeRest(PreorderGeneratorTemplate<T>& generator)
{
    std::vector<T*> elements;
    while (T* element = generator.Next())
        elements.push_back(element);
    return Describe(elements);
}

template <typename T>
std::string DescribeRange(PreorderIteratorTemplate<T> begin, PreorderIteratorTemplate<T> end)
{
    std::vector<T*> elements;
    for (; begin != end; ++begin)
        elements.push_back(&*begin);
    return Describe(elements);
}

}  // namespace

TYPED_TEST(DOMElementTraversalTest, WalkOfALeafYieldsOnlyTheLeaf)
{
    const Tree tree("a");
    PreorderGeneratorTemplate<TypeParam> generator(tree[1]);
    EXPECT_EQ(generator.Next(), &tree[1]);
    EXPECT_EQ(generator.Next(), nullptr);
    EXPECT_EQ(generator.Next(), nullptr);
}

TYPED_TEST(DOMElementTraversalTest, YieldsParentsBeforeTheirChildren)
{
    const Tree tree("r(a(c)b)");
    PreorderGeneratorTemplate<TypeParam> generator(tree[1]);
    EXPECT_EQ(DescribeRest(generator), "r1 a2 c3 b4");
}

TYPED_TEST(DOMElementTraversalTest, StaysWithinTheSubtree)
{
    const Tree tree("r(a(b(c)d)e)");
    PreorderGeneratorTemplate<TypeParam> generator(tree[2]);
    EXPECT_EQ(DescribeRest(generator), "a2 b3 c4 d5");
}

TYPED_TEST(DOMElementTraversalTest, CopiedGeneratorsAdvanceIndependently)
{
    const Tree tree("r(a(c)b)");
    PreorderGeneratorTemplate<TypeParam> generator(tree[1]);
    generator.Next();
    PreorderGeneratorTemplate<TypeParam> copy(generator);
    PreorderGeneratorTemplate<TypeParam> assigned(tree[4]);
    assigned = generator;
    EXPECT_EQ(DescribeRest(generator), "a2 c3 b4");
    EXPECT_EQ(DescribeRest(copy), "a2 c3 b4");
    EXPECT_EQ(DescribeRest(assigned), "a2 c3 b4");
}

TYPED_TEST(DOMElementTraversalTest, MovedGeneratorsContinueTheWalk)
{
    const Tree tree("r(a(c)b)");
    PreorderGeneratorTemplate<TypeParam> generator(tree[1]);
    PreorderGeneratorTemplate<TypeParam> moved(std::move(generator));
    EXPECT_EQ(generator.Next(), nullptr);
    PreorderGeneratorTemplate<TypeParam> assigned(tree[4]);
    assigned = std::move(moved);
    EXPECT_EQ(moved.Next(), nullptr);
    EXPECT_EQ(DescribeRest(assigned), "r1 a2 c3 b4");
}

TYPED_TEST(DOMElementTraversalTest, NewIteratorPointsToTheStart)
{
    const Tree tree("r(a)");
    const PreorderIteratorTemplate<TypeParam> i(tree[1]);
    EXPECT_EQ(&*i, &tree[1]);
    EXPECT_EQ(i->GetName(), VString("r"));
}

TYPED_TEST(DOMElementTraversalTest, PostfixIncrementReturnsTheOldPosition)
{
    const Tree tree("r(ab)");
    PreorderIteratorTemplate<TypeParam> i(tree[1]);
    PreorderIteratorTemplate<TypeParam> before = i++;
    EXPECT_EQ(Describe(*before), "r1");
    EXPECT_EQ(Describe(*i), "a2");
    EXPECT_EQ(Describe(*++before), "a2");
    EXPECT_EQ(Describe(*++before), "b3");
    EXPECT_EQ(Describe(*i), "a2");
}

TYPED_TEST(DOMElementTraversalTest, CopiedIteratorsAdvanceIndependently)
{
    const Tree tree("r(a(c)b)");
    PreorderIteratorTemplate<TypeParam> i(tree[1]);
    ++i;
    PreorderIteratorTemplate<TypeParam> copy(i);
    PreorderIteratorTemplate<TypeParam> assigned;
    assigned = i;
    ++copy;
    EXPECT_EQ(Describe(*i), "a2");
    EXPECT_EQ(DescribeRange(i, {}), "a2 c3 b4");
    EXPECT_EQ(DescribeRange(copy, {}), "c3 b4");
    EXPECT_EQ(DescribeRange(assigned, {}), "a2 c3 b4");
}

TYPED_TEST(DOMElementTraversalTest, SelfAssignedIteratorContinues)
{
    const Tree tree("r(ab)");
    PreorderIteratorTemplate<TypeParam> i(tree[1]);
    const PreorderIteratorTemplate<TypeParam>& same = i;
    i = same;
    EXPECT_EQ(DescribeRange(i, {}), "r1 a2 b3");
}

TYPED_TEST(DOMElementTraversalTest, MovedIteratorsContinue)
{
    const Tree tree("r(ab)");
    PreorderIteratorTemplate<TypeParam> i(tree[1]);
    PreorderIteratorTemplate<TypeParam> moved(std::move(i));
    PreorderIteratorTemplate<TypeParam> assigned;
    assigned = std::move(moved);
    EXPECT_EQ(DescribeRange(std::move(assigned), {}), "r1 a2 b3");
}

TYPED_TEST(DOMElementTraversalTest, IteratorsCompareOnlyTheirElements)
{
    const Tree tree("r(ab)");
    PreorderIteratorTemplate<TypeParam> fromRoot(tree[1]);
    EXPECT_NE(fromRoot, PreorderIteratorTemplate<TypeParam>(tree[2]));
    ++fromRoot;
    EXPECT_EQ(fromRoot, PreorderIteratorTemplate<TypeParam>(tree[2]));
    EXPECT_FALSE(fromRoot != PreorderIteratorTemplate<TypeParam>(tree[2]));
}

TYPED_TEST(DOMElementTraversalTest, EndsAfterOneStepPerElement)
{
    const Tree tree("r(a(c)b)");
    const PreorderTraversalTemplate<TypeParam> traversal(tree[1]);
    PreorderIteratorTemplate<TypeParam> i = traversal.begin();
    for (int step = 0; step < 4; ++step, ++i)
        EXPECT_NE(i, traversal.end());
    EXPECT_EQ(i, traversal.end());
    EXPECT_EQ(traversal.end(), PreorderIteratorTemplate<TypeParam>());
}

TYPED_TEST(DOMElementTraversalTest, TraversalCanBeIteratedRepeatedly)
{
    const Tree tree("r(a(c)b)");
    const PreorderTraversalTemplate<TypeParam> traversal(tree[1]);
    for (int round = 0; round < 2; ++round) {
        std::vector<TypeParam*> elements;
        for (TypeParam& element : traversal)
            elements.push_back(&element);
        EXPECT_EQ(Describe(elements), "r1 a2 c3 b4");
    }
}

TYPED_TEST(DOMElementTraversalTest, CopiedAndMovedTraversalsYieldTheSameElements)
{
    const Tree tree("r(ab)");
    PreorderTraversalTemplate<TypeParam> traversal(tree[1]);
    PreorderTraversalTemplate<TypeParam> copy(traversal);
    PreorderTraversalTemplate<TypeParam> assigned(tree[2]);
    assigned = traversal;
    PreorderTraversalTemplate<TypeParam> moved(std::move(traversal));
    PreorderTraversalTemplate<TypeParam> moveAssigned(tree[2]);
    moveAssigned = std::move(copy);
    for (const auto* each : {&assigned, &moved, &moveAssigned})
        EXPECT_EQ(DescribeRange(each->begin(), each->end()), "r1 a2 b3");
}

TYPED_TEST(DOMElementTraversalTest, MovedFromTraversalHasNoElements)
{
    const Tree tree("r(ab)");
    PreorderTraversalTemplate<TypeParam> traversal(tree[1]);
    PreorderTraversalTemplate<TypeParam> moved(std::move(traversal));
    EXPECT_EQ(DescribeRange(traversal.begin(), traversal.end()), "");
    traversal = std::move(moved);
    EXPECT_EQ(DescribeRange(traversal.begin(), traversal.end()), "r1 a2 b3");
    EXPECT_EQ(DescribeRange(moved.begin(), moved.end()), "");
}

TYPED_TEST(DOMElementTraversalTest, MovedFromIteratorIsTheEnd)
{
    const Tree tree("r(ab)");
    PreorderIteratorTemplate<TypeParam> i(tree[1]);
    const PreorderIteratorTemplate<TypeParam> moved(std::move(i));
    EXPECT_EQ(i, PreorderIteratorTemplate<TypeParam>());
    EXPECT_EQ(Describe(*moved), "r1");
}

TYPED_TEST(DOMElementTraversalTest, MovedFromGeneratorIsAtItsEnd)
{
    const Tree tree("r(ab)");
    PreorderGeneratorTemplate<TypeParam> generator(tree[1]);
    PreorderGeneratorTemplate<TypeParam> moved(std::move(generator));
    EXPECT_EQ(generator.Next(), nullptr);
    EXPECT_EQ(DescribeRest(moved), "r1 a2 b3");
}

TYPED_TEST(DOMElementTraversalTest, WorksWithStandardAlgorithms)
{
    const Tree tree("r(a(b)b(c))");
    const PreorderTraversalTemplate<TypeParam> traversal(tree[1]);
    const auto isB = [](const DOMElement& element) { return element.GetName() == VString("b"); };
    EXPECT_EQ(std::count_if(traversal.begin(), traversal.end(), isB), 2);
    EXPECT_EQ(std::distance(traversal.begin(), traversal.end()), 5);
    auto found = std::find_if(traversal.begin(), traversal.end(), isB);
    EXPECT_EQ(Describe(*found), "b3");
    found = std::find_if(++found, traversal.end(), isB);
    EXPECT_EQ(Describe(*found), "b4");
}

TEST(DOMElementTraversalFormsTest, MutableTraversalAllowsChanges)
{
    const Tree tree("r(a(c)b)");
    for (DOMElement& element : MutablePreorderTraversal(tree[1]))
        element.SetName("x");
    EXPECT_EQ(Describe(tree.elements), "x1 x2 x3 x4");
}

TEST(DOMElementTraversalFormsTest, StackGrowsBeyondItsReservedCapacity)
{
    DOMElement root("r");
    for (int i = 0; i < 1000; ++i)
        root.AddNewChild("a", nullptr).AddNewChild("b", nullptr);
    const PreorderTraversal traversal(root);
    EXPECT_EQ(std::distance(traversal.begin(), traversal.end()), 2001);
}
