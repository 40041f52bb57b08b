#include "vancorexml/main/parser/DOMElementSearch.h"

#include <algorithm>
#include <climits>
#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"

using namespace querytest;

namespace {

// The element r has the children a (without k), a (k empty), a (k one), b (k one) and a (k two). The first a has a
// child a (k two), which has a child a (k three).
struct SearchTree : Tree {
    SearchTree() : Tree("r(a(a(a))aaba)")
    {
        (*this)[5].SetAttribute("k", "");
        (*this)[6].SetAttribute("k", "one");
        (*this)[7].SetAttribute("k", "one");
        (*this)[8].SetAttribute("k", "two");
        (*this)[3].SetAttribute("k", "two");
        (*this)[4].SetAttribute("k", "three");
    }
};

std::string DescribeFound(const DOMElement* element)
{
    return element ? Describe(*element) : "none";
}

struct ChildRow {
    const char* name;
    const char* child;
    const char* attribute;
    const char* value;
    const char* found;
};

class FindChildRows : public testing::TestWithParam<ChildRow> {};

struct ElementRow {
    const char* name;
    std::size_t start;
    const char* element;
    int depth;
    const char* attribute;
    const char* value;
    const char* found;
};

class FindElementRows : public testing::TestWithParam<ElementRow> {};

}  // namespace

TEST_P(FindChildRows, ReturnsTheExpectedElement)
{
    const SearchTree tree;
    const auto& [name, child, attribute, value, found] = GetParam();
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindChild(tree[1], child, attribute, value)), found);
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindChild(std::as_const(tree[1]), child, attribute, value)), found);
}

const ChildRow ChildRows[] = {
    {"ByValue", "a", "k", "one", "a6"},
    {"ByNameAndValue", "b", "k", "one", "b7"},
    {"DirectChildrenOnly", "a", "k", "two", "a8"},
    {"NoGrandchild", "a", "k", "three", "none"},
    {"EmptyValueMatchesAMissingAttribute", "a", "k", "", "a2"},
    {"UnknownAttributeIsEmpty", "b", "x", "", "b7"},
    {"NoAttributeName", "b", "", "", "b7"},
    {"ValueWithoutAttributeName", "b", "", "one", "none"},
    {"UnknownName", "x", "k", "one", "none"},
    {"NotTheElementItself", "r", "k", "", "none"},
    {"NameIsCaseSensitive", "A", "k", "one", "none"},
    {"ValueIsCaseSensitive", "a", "k", "One", "none"},
};

INSTANTIATE_TEST_SUITE_P(
    DOMElementSearchTest, FindChildRows, testing::ValuesIn(ChildRows), [](const auto& row) { return row.param.name; });

TEST_P(FindElementRows, ReturnsTheExpectedElement)
{
    const SearchTree tree;
    const auto& [name, start, element, depth, attribute, value, found] = GetParam();
    const DOMElement& constant = tree[start];
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindElement(tree[start], element, depth, attribute, value)), found);
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindElement(constant, element, depth, attribute, value)), found);
}

const ElementRow ElementRows[] = {
    {"TheStartItself", 1, "r", 0, "", "", "r1"},
    {"TheStartAtANegativeDepth", 1, "r", -1, "", "", "r1"},
    {"TheStartAtTheSmallestDepth", 1, "r", INT_MIN, "", "", "r1"},
    {"NoChildAtDepthZero", 1, "a", 0, "", "", "none"},
    {"NoChildAtANegativeDepth", 1, "a", -3, "", "", "none"},
    {"AChildAtDepthOne", 1, "b", 1, "", "", "b7"},
    {"NoGrandchildAtDepthOne", 1, "a", 1, "k", "two", "a8"},
    {"AGrandchildAtDepthTwo", 1, "a", 2, "k", "two", "a3"},
    {"NoThirdLevelAtDepthTwo", 1, "a", 2, "k", "three", "none"},
    {"TheThirdLevelAtDepthThree", 1, "a", 3, "k", "three", "a4"},
    {"AnyDepth", 1, "a", INT_MAX, "k", "three", "a4"},
    {"OnlyBelowTheStart", 3, "b", 9, "", "", "none"},
    {"BelowAnInnerStart", 2, "a", 9, "k", "two", "a3"},
    {"NoAttributeName", 1, "a", 9, "", "", "a2"},
    {"ValueWithoutAttributeNameIsIgnored", 1, "a", 9, "", "one", "a2"},
    {"EmptyValueMatchesANonEmptyAttribute", 1, "a", 1, "k", "", "a6"},
    {"EmptyValueAtAnyDepth", 1, "a", 9, "k", "", "a3"},
    {"AStartWithoutTheAttributeIsSearched", 2, "a", 9, "k", "", "a3"},
    {"UnknownAttribute", 1, "a", 9, "x", "", "none"},
    {"UnknownValue", 1, "a", 9, "k", "four", "none"},
    {"UnknownName", 1, "x", 9, "", "", "none"},
    {"NameIsCaseSensitive", 1, "B", 9, "", "", "none"},
};

INSTANTIATE_TEST_SUITE_P(DOMElementSearchTest, FindElementRows, testing::ValuesIn(ElementRows), [](const auto& row) {
    return row.param.name;
});

TEST(DOMElementSearchTest, OverloadsPreserveConstness)
{
    static_assert(
        std::is_same_v<decltype(DOMElementSearch::FindChild(std::declval<DOMElement&>(), "", "", "")), DOMElement*>);
    static_assert(std::is_same_v<decltype(DOMElementSearch::FindChild(std::declval<const DOMElement&>(), "", "", "")),
        const DOMElement*>);
    static_assert(std::is_same_v<decltype(DOMElementSearch::FindElement(std::declval<DOMElement&>(), "", 0, "", "")),
        DOMElement*>);
    static_assert(
        std::is_same_v<decltype(DOMElementSearch::FindElement(std::declval<const DOMElement&>(), "", 0, "", "")),
            const DOMElement*>);
    const Tree tree("a(b)");
    DOMElementSearch::FindElement(tree[1], "b", 1, "", "")->SetText("t");
    EXPECT_EQ(tree[2].GetText(), VString("t"));
}

TEST(DOMElementSearchTest, FindsTheFirstInDocumentOrder)
{
    const Tree tree("r(a(bc(d))b(d(e)))");
    for (const char* name : {"a", "b", "c", "d", "e", "r"}) {
        const auto first = std::find_if(tree.elements.begin(), tree.elements.end(), [name](const DOMElement* element) {
            return element->GetName() == VString(name);
        });
        EXPECT_EQ(tree.document.GetElement(name), *first) << name;
        EXPECT_EQ(DOMElementSearch::FindElement(tree[1], name, 3, "", ""), *first) << name;
    }
}

TEST(DOMElementSearchTest, GetElementFindsTheRootOfANewDocument)
{
    DOM document;
    EXPECT_EQ(document.GetElement("Document"), &document.GetRoot());
    EXPECT_EQ(std::as_const(document).GetElement("Document"), &document.GetRoot());
    EXPECT_EQ(document.GetElement("document"), nullptr);
}

TEST(DOMElementSearchTest, GetElementSearchesAThousandLevels)
{
    DOM document;
    DOMElement& level999 = AddChain(document.GetRoot(), "level", 999);
    DOMElement& level1000 = level999.AddNewChild("x", nullptr);
    level1000.AddNewChild("y", nullptr);
    EXPECT_EQ(document.GetElement("x"), &level1000);
    EXPECT_EQ(std::as_const(document).GetElement("x"), &level1000);
    EXPECT_EQ(document.GetElement("y"), nullptr);
    EXPECT_EQ(std::as_const(document).GetElement("y"), nullptr);
}
