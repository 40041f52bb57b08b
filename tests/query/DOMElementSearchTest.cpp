#include "vancorexml/main/parser/DOMElementSearch.h"

#include <algorithm>
#include <climits>
#include <type_traits>
#include <utility>

#include "tests/query/QueryTestSupport.h"

using namespace querytest;

namespace {

// r with children a (no attribute k), a (k empty), a (k one), b (k one), a (k two); below the
// first a another a with k two, below that one an a with k three.
struct Searched : Tree {
    Searched() : Tree("r(a(a(a))aaba)")
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

TEST_P(FindChildRows, Found)
{
    const Searched tree;
    const auto& [name, child, attribute, value, found] = GetParam();
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindChild(tree[1], child, attribute, value)), found);
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindChild(std::as_const(tree[1]), child, attribute, value)), found);
}

INSTANTIATE_TEST_SUITE_P(DOMElementSearchTest,
    FindChildRows,
    testing::Values(ChildRow{"ByValue", "a", "k", "one", "a6"},
        ChildRow{"ByNameToo", "b", "k", "one", "b7"},
        ChildRow{"DirectChildrenOnly", "a", "k", "two", "a8"},
        ChildRow{"NoGrandchild", "a", "k", "three", "none"},
        ChildRow{"EmptyValueMatchesAMissingAttribute", "a", "k", "", "a2"},
        ChildRow{"UnknownAttributeIsEmpty", "b", "x", "", "b7"},
        ChildRow{"NoAttributeName", "b", "", "", "b7"},
        ChildRow{"NoAttributeNameButAValue", "b", "", "one", "none"},
        ChildRow{"UnknownName", "x", "k", "one", "none"},
        ChildRow{"NotTheParent", "r", "k", "", "none"},
        ChildRow{"CaseCounts", "A", "k", "one", "none"},
        ChildRow{"ValueCaseCounts", "a", "k", "One", "none"}),
    [](const auto& row) { return row.param.name; });

TEST_P(FindElementRows, Found)
{
    const Searched tree;
    const auto& [name, start, element, depth, attribute, value, found] = GetParam();
    EXPECT_EQ(DescribeFound(DOMElementSearch::FindElement(tree[start], element, depth, attribute, value)), found);
    EXPECT_EQ(
        DescribeFound(DOMElementSearch::FindElement(std::as_const(tree[start]), element, depth, attribute, value)),
        found);
}

INSTANTIATE_TEST_SUITE_P(DOMElementSearchTest,
    FindElementRows,
    testing::Values(ElementRow{"TheStartItself", 1, "r", 0, "", "", "r1"},
        ElementRow{"TheStartAtANegativeDepth", 1, "r", -1, "", "", "r1"},
        ElementRow{"TheStartAtTheLeastDepth", 1, "r", INT_MIN, "", "", "r1"},
        ElementRow{"NoChildAtDepthZero", 1, "a", 0, "", "", "none"},
        ElementRow{"NoChildAtANegativeDepth", 1, "a", -3, "", "", "none"},
        ElementRow{"AChildAtDepthOne", 1, "b", 1, "", "", "b7"},
        ElementRow{"NoGrandchildAtDepthOne", 1, "a", 1, "k", "two", "a8"},
        ElementRow{"AGrandchildFirstInDocumentOrder", 1, "a", 2, "k", "two", "a3"},
        ElementRow{"NoThirdLevelAtDepthTwo", 1, "a", 2, "k", "three", "none"},
        ElementRow{"TheThirdLevelAtDepthThree", 1, "a", 3, "k", "three", "a4"},
        ElementRow{"AnyDepth", 1, "a", INT_MAX, "k", "three", "a4"},
        ElementRow{"OnlyBelowTheStart", 3, "b", 9, "", "", "none"},
        ElementRow{"BelowAnInnerStart", 2, "a", 9, "k", "two", "a3"},
        ElementRow{"NoAttributeName", 1, "a", 9, "", "", "a2"},
        ElementRow{"TheValueAloneDoesNotCount", 1, "a", 9, "", "one", "a2"},
        ElementRow{"EmptyValueWantsANonEmptyAttribute", 1, "a", 1, "k", "", "a6"},
        ElementRow{"EmptyValueInDepth", 1, "a", 9, "k", "", "a3"},
        ElementRow{"AStartWithoutTheAttributeIsSearched", 2, "a", 9, "k", "", "a3"},
        ElementRow{"UnknownAttribute", 1, "a", 9, "x", "", "none"},
        ElementRow{"UnknownValue", 1, "a", 9, "k", "four", "none"},
        ElementRow{"UnknownName", 1, "x", 9, "", "", "none"},
        ElementRow{"CaseCounts", 1, "B", 9, "", "", "none"}),
    [](const auto& row) { return row.param.name; });

TEST(DOMElementSearchTest, BothFormsKeepConstness)
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

TEST(DOMElementSearchTest, GetElementLooksAThousandLevelsDown)
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
