// Copies, assignment and comparison of elements.
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

// Gives `element` an encoded text, an attribute, locations and the children a and c. The child a gets an
// encoded text, a location and a child b with an attribute.
void Fill(DOMElement& element)
{
    element.SetText("text", true);
    element.SetAttribute("n", "v");
    element.SetElementStartLocation(1, 2);
    element.SetElementEndLocation(3, 4);
    DOMElement& a = element.AddNewChild("a", nullptr);
    a.SetText("inner", true);
    a.SetElementStartLocation(5, 6);
    a.AddNewChild("b", nullptr).SetAttribute("m", "w");
    element.AddNewChild("c", nullptr);
}

void ExpectNoLocation(const DOMElement& element)
{
    EXPECT_EQ(element.GetStartLine(), 0);
    EXPECT_EQ(element.GetStartColumn(), 0);
    EXPECT_EQ(element.GetEndLine(), 0);
    EXPECT_EQ(element.GetEndColumn(), 0);
}

void ExpectLinked(const DOMElement& element, const DOM* document)
{
    EXPECT_EQ(element.GetDOMManager(), document);
    for (const DOMElement* child : element.GetChildren()) {
        EXPECT_EQ(child->GetParent(), &element);
        ExpectLinked(*child, document);
    }
}

struct DifferenceRow {
    const char* name;
    std::function<void(DOMElement&)> change;
};

}  // namespace

TEST(DOMElementCopyTest, CopyIsEqualWithoutLocationsAndEncodedFlag)
{
    DOM document;
    DOMElement& source = document.GetRoot().AddNewChild("t", nullptr);
    Fill(source);
    const DOMElement copy(source);
    EXPECT_EQ(copy, source);
    EXPECT_FALSE(copy.IsEncoded());
    EXPECT_FALSE(copy.GetChild("a")->IsEncoded());
    ExpectNoLocation(copy);
    ExpectNoLocation(*copy.GetChild("a"));
    EXPECT_TRUE(source.IsEncoded());
    EXPECT_EQ(source.GetStartLine(), 1);
}

TEST(DOMElementCopyTest, CopyKeepsTheDocumentAndHasNoParent)
{
    DOM document;
    DOMElement& source = document.GetRoot().AddNewChild("t", nullptr);
    Fill(source);
    const DOMElement copy(source);
    EXPECT_EQ(copy.GetParent(), nullptr);
    ExpectLinked(copy, &document);
}

TEST(DOMElementCopyTest, CopyIsIndependent)
{
    DOMElement source("t");
    Fill(source);
    DOMElement copy(source);
    copy.GetChild("a")->SetText("changed");
    copy.AddNewChild("d", nullptr);
    EXPECT_EQ(source.GetChild("a")->GetText(), VString("inner"));
    EXPECT_EQ(ChildNames(source), "a c");
}

TEST(DOMElementCopyTest, CopyHasItsOwnRecordsUntilItDies)
{
    DOM document;
    DOMElement& source = document.GetRoot().AddNewChild("t", nullptr);
    Fill(source);
    AddError(source, "outer");
    AddError(*source.GetChild("a")->GetChild("b"), "inner");
    source.GetChild("c")->Warning("careful", Info(2));
    {
        const DOMElement copy(source);
        EXPECT_EQ(ErrorsOf(copy), (Texts{"outer", "inner"}));
        EXPECT_EQ(WarningsOf(copy), (Texts{"careful"}));
        EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 4u);
    }
    EXPECT_EQ(ErrorsOf(source), (Texts{"outer", "inner"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 2u);
    EXPECT_EQ(DOMTestAccess::WarningEntries(document), 1u);
}

TEST(DOMElementCopyTest, AssignmentKeepsLinksAndLocations)
{
    DOM document;
    DOMElement source("s");
    Fill(source);
    DOMElement& target = document.GetRoot().AddNewChild("t", nullptr);
    target.SetElementStartLocation(7, 8);
    target.SetElementEndLocation(9, 10);
    target.SetText("old", true);
    target.AddNewChild("old", nullptr);
    target = source;
    EXPECT_EQ(target, source);
    EXPECT_FALSE(target.IsEncoded());
    EXPECT_EQ(target.GetParent(), &document.GetRoot());
    EXPECT_EQ(target.GetStartLine(), 7);
    EXPECT_EQ(target.GetEndColumn(), 10);
    ExpectNoLocation(*target.GetChild("a"));
    ExpectLinked(target, &document);
}

TEST(DOMElementCopyTest, AssignmentToItselfChangesNothing)
{
    DOM document;
    DOMElement& element = document.GetRoot().AddNewChild("t", nullptr);
    Fill(element);
    AddError(element, "error");
    const DOMElement* const child = element.GetChild("a");
    const DOMElement& alias = element;
    element = alias;
    EXPECT_EQ(element.GetChild("a"), child);
    EXPECT_TRUE(element.IsEncoded());
    EXPECT_EQ(ErrorsOf(element), (Texts{"error"}));
}

TEST(DOMElementCopyTest, AssignmentCopiesRecordsAcrossDocuments)
{
    DOM from;
    DOM to;
    Fill(from.GetRoot());
    AddError(from.GetRoot(), "outer");
    AddError(*from.GetRoot().GetChild("a"), "inner");
    DOMElement& target = to.GetRoot().AddNewChild("t", nullptr);
    AddError(target.AddNewChild("old", nullptr), "dropped");
    target = from.GetRoot();
    EXPECT_EQ(ErrorsOf(target), (Texts{"outer", "inner"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(to), 2u);
    EXPECT_EQ(DOMTestAccess::ErrorEntries(from), 2u);
}

TEST(DOMElementCopyTest, AssignmentDoesNotReplaceRecordsOfTheTarget)
{
    DOM document;
    DOMElement& source = document.GetRoot().AddNewChild("s", nullptr);
    DOMElement& target = document.GetRoot().AddNewChild("t", nullptr);
    AddError(source, "source");
    source.Warning("careful", Info(2));
    AddError(target, "target");
    target = source;
    EXPECT_EQ(ErrorsOf(target), (Texts{"target"}));
    EXPECT_EQ(WarningsOf(target), (Texts{"careful"}));
}

TEST(DOMElementCopyTest, AssignmentToAnElementWithoutDocumentCopiesNoRecords)
{
    DOM document;
    Fill(document.GetRoot());
    AddError(document.GetRoot(), "error");
    DOMElement target("t");
    target = document.GetRoot();
    EXPECT_EQ(target, document.GetRoot());
    ExpectLinked(target, nullptr);
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 1u);
}

TEST(DOMElementCopyTest, AssignsFromADescendant)
{
    DOM document;
    DOMElement& element = document.GetRoot().AddNewChild("t", nullptr);
    Fill(element);
    DOMElement& inner = *element.GetChild("a");
    AddError(inner, "a");
    AddError(*inner.GetChild("b"), "b");
    AddError(*element.GetChild("c"), "c");
    const DOMElement expected(inner);
    element = inner;
    EXPECT_EQ(element, expected);
    ExpectLinked(element, &document);
    EXPECT_EQ(ErrorsOf(element), (Texts{"a", "b"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 4u);  // two of `element` and two of `expected`
}

TEST(DOMElementCopyTest, AssignsFromAnAncestor)
{
    DOM document;
    DOMElement& top = document.GetRoot().AddNewChild("t", nullptr);
    Fill(top);
    AddError(top, "t");
    AddError(*top.GetChild("a")->GetChild("b"), "b");
    const DOMElement expected(top);
    DOMElement& inner = *top.GetChild("a");
    inner = top;
    EXPECT_EQ(inner, expected);
    ExpectLinked(top, &document);
    EXPECT_EQ(ErrorsOf(inner), (Texts{"t", "b"}));
    EXPECT_EQ(ErrorsOf(top), (Texts{"t", "t", "b"}));
}

class DOMElementDifferenceTest : public testing::TestWithParam<DifferenceRow> {};

TEST_P(DOMElementDifferenceTest, MakesElementsUnequalInBothDirections)
{
    DOMElement a("t");
    Fill(a);
    DOMElement b(a);
    GetParam().change(b);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(b != a);
    EXPECT_FALSE(a == b);
    DOMElement outerA("o");
    DOMElement outerB("o");
    outerA.AddNewChild("x", nullptr) = a;
    outerB.AddNewChild("x", nullptr) = b;
    EXPECT_NE(outerA, outerB);
}

const DifferenceRow DifferenceRows[] = {
    {"Name", [](DOMElement& e) { e.SetName("other"); }},
    {"Text", [](DOMElement& e) { e.SetText("other"); }},
    {"AttributeCount", [](DOMElement& e) { e.SetAttribute("more", ""); }},
    {"AttributeName",
        [](DOMElement& e) {
            e.RemoveAttribute("n");
            e.SetAttribute("m", "v");
        }},
    {"AttributeValue", [](DOMElement& e) { e.SetAttribute("n", "w"); }},
    {"ChildCount", [](DOMElement& e) { e.AddNewChild("d", nullptr); }},
    {"ChildOrder", [](DOMElement& e) { e.GetChild("c")->MoveToFront(); }},
    {"Grandchild", [](DOMElement& e) { e.GetChild("a")->GetChild("b")->SetText("x"); }},
};

INSTANTIATE_TEST_SUITE_P(
    Of, DOMElementDifferenceTest, testing::ValuesIn(DifferenceRows), [](const auto& row) { return row.param.name; });

TEST(DOMElementCopyTest, ComparisonIgnoresFlagsLocationsAndRecords)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("t", nullptr);
    DOMElement b("t");
    a.SetAttribute("x", "1");
    a.SetAttribute("y", "2");
    b.SetAttribute("y", "2");
    b.SetAttribute("x", "1");
    a.SetEncoded(true);
    a.SetElementStartLocation(1, 1);
    AddError(a, "error");
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, a);
}
