// Elements that keep links without being in a tree, and every order in which they, their old
// parents and their documents may die. Freed memory shows under the address sanitizer.
#include <algorithm>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

std::unique_ptr<DOMElement> RemoveFromParent(DOMElement& element)
{
    return element.GetParent()->RemoveChild(element);
}

// Follows the links of an element as the library does.
void UseLinks(const DOMElement& element)
{
    element.GetParentAttr("n");
    if (element.GetDOMManager()) {
        element.HasErrors();
        element.HasWarnings();
        element.GetDOMManager()->HasErrors();
        element.GetDOMManager()->GetErrors();
    }
    for (const DOMElement* child : element.GetChildren())
        UseLinks(*child);
}

// Calls `run` with every order of 0 to count - 1.
void ForEachOrder(std::size_t count, const std::function<void(const std::vector<std::size_t>&)>& run)
{
    std::vector<std::size_t> order(count);
    for (std::size_t i = 0; i < count; ++i)
        order[i] = i;
    do
        run(order);
    while (std::next_permutation(order.begin(), order.end()));
}

// Elements out of their trees and the documents they came from.
struct Outside {
    std::vector<std::unique_ptr<DOM>> documents;
    std::vector<std::unique_ptr<DOMElement>> elements;

    std::size_t size() const { return documents.size() + elements.size(); }
    void Kill(std::size_t which)
    {
        if (which < documents.size())
            documents[which].reset();
        else
            elements[which - documents.size()].reset();
    }
    void Use() const
    {
        for (const auto& document : documents) {
            if (document)
                UseLinks(document->GetRoot());
        }
        for (const auto& element : elements) {
            if (element)
                UseLinks(*element);
        }
    }
};

DOM& NewDocument(Outside& outside)
{
    outside.documents.push_back(std::make_unique<DOM>());
    DOM& document = *outside.documents.back();
    DOMElement& top = document.GetRoot().AddNewChild("top", nullptr);
    DOMElement& parent = top.AddNewChild("parent", nullptr);
    DOMElement& child = parent.AddNewChild("child", nullptr);
    AddError(child.AddNewChild("grandchild", nullptr).AddNewChild("low", nullptr), "low");
    AddError(child, "child");
    parent.Warning("parent", Info(1));
    AddError(top, "top");
    return document;
}

DOMElement& Find(DOM& document, const VString& name)
{
    return *document.GetElement(name);
}

struct Scene {
    const char* name;
    std::function<void(Outside&)> build;
};

void RemovedParentAndChild(Outside& outside)
{
    DOM& document = NewDocument(outside);
    DOMElement& parent = Find(document, "parent");
    outside.elements.push_back(RemoveFromParent(*parent.GetChild("child")));
    outside.elements.push_back(RemoveFromParent(parent));
}

void ChainOfRemovals(Outside& outside)
{
    DOM& document = NewDocument(outside);
    std::unique_ptr<DOMElement> parent = RemoveFromParent(Find(document, "parent"));
    std::unique_ptr<DOMElement> child = parent->RemoveChild("child");
    std::unique_ptr<DOMElement> grandchild = child->RemoveChild("grandchild");
    outside.elements.push_back(grandchild->RemoveChild("low"));
    outside.elements.push_back(std::move(grandchild));
    outside.elements.push_back(std::move(child));
    outside.elements.push_back(std::move(parent));
}

void Copies(Outside& outside)
{
    DOM& document = NewDocument(outside);
    outside.elements.push_back(std::make_unique<DOMElement>(Find(document, "parent")));
    outside.elements.push_back(std::make_unique<DOMElement>(*outside.elements[0]));
    outside.elements.push_back(outside.elements[0]->RemoveChild("child"));
    outside.elements.push_back(std::make_unique<DOMElement>(document.GetRoot()));
}

void IntoAnotherDocument(Outside& outside)
{
    DOM& from = NewDocument(outside);
    DOM& to = NewDocument(outside);
    DOMElement& child = Find(from, "child");
    outside.elements.push_back(RemoveFromParent(Find(from, "low")));
    outside.elements.push_back(RemoveFromParent(*child.GetChild("grandchild")));
    Find(to, "low").AppendChild(RemoveFromParent(child));
}

void ParentIntoAnotherDocument(Outside& outside)
{
    DOM& from = NewDocument(outside);
    DOM& to = NewDocument(outside);
    outside.elements.push_back(RemoveFromParent(Find(from, "child")));
    Find(to, "low").AppendChild(RemoveFromParent(Find(from, "parent")));
    outside.elements.push_back(RemoveFromParent(*to.GetElement("low")->GetChild("parent")));
}

void IntoATreeWithoutDocument(Outside& outside)
{
    DOM& document = NewDocument(outside);
    outside.elements.push_back(NewElement("free"));
    outside.elements.push_back(RemoveFromParent(Find(document, "low")));
    outside.elements[0]->AppendChild(RemoveFromParent(Find(document, "child")));
    outside.elements.push_back(outside.elements[0]->RemoveChild("child"));
}

void WithoutAnyDocument(Outside& outside)
{
    outside.elements.push_back(NewElement("top"));
    DOMElement& parent = outside.elements[0]->AddNewChild("parent", nullptr);
    parent.AddNewChild("child", nullptr).AddNewChild("low", nullptr);
    outside.elements.push_back(parent.RemoveChild("child"));
    outside.elements.push_back(outside.elements[1]->RemoveChild("low"));
    outside.elements.push_back(RemoveFromParent(parent));
}

void RemovedTogether(Outside& outside)
{
    DOM& document = NewDocument(outside);
    Find(document, "parent").AddNewChild("second", nullptr);
    for (std::unique_ptr<DOMElement>& child : Find(document, "parent").RemoveChildren())
        outside.elements.push_back(std::move(child));
    outside.elements.push_back(RemoveFromParent(Find(document, "parent")));
}

void RecordsOfAnotherDocument(Outside& outside)
{
    DOM& from = NewDocument(outside);
    DOM& to = NewDocument(outside);
    outside.elements.push_back(RemoveFromParent(Find(from, "child")));
    DOMTestAccess::MoveAll(from, to);
    outside.elements.push_back(RemoveFromParent(Find(from, "parent")));
    AddError(*outside.elements[0], "again");
}

class DetachedElementsOrderTest : public testing::TestWithParam<Scene> {};

}  // namespace

TEST_P(DetachedElementsOrderTest, EveryOrderOfDeathIsSafe)
{
    std::size_t count = 0;
    {
        Outside outside;
        GetParam().build(outside);
        count = outside.size();
    }
    ForEachOrder(count, [](const std::vector<std::size_t>& order) {
        Outside outside;
        GetParam().build(outside);
        for (const std::size_t which : order) {
            outside.Use();
            outside.Kill(which);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Of,
    DetachedElementsOrderTest,
    testing::Values(Scene{"RemovedParentAndChild", RemovedParentAndChild},
        Scene{"ChainOfRemovals", ChainOfRemovals},
        Scene{"Copies", Copies},
        Scene{"IntoAnotherDocument", IntoAnotherDocument},
        Scene{"ParentIntoAnotherDocument", ParentIntoAnotherDocument},
        Scene{"IntoATreeWithoutDocument", IntoATreeWithoutDocument},
        Scene{"WithoutAnyDocument", WithoutAnyDocument},
        Scene{"RemovedTogether", RemovedTogether},
        Scene{"RecordsOfAnotherDocument", RecordsOfAnotherDocument}),
    [](const auto& row) { return row.param.name; });

TEST(DetachedElementsTest, TheParentLinkEndsWithTheParent)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    parent.AddNewChild("a", nullptr);
    const std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    document.GetRoot().RemoveChildren().clear();
    EXPECT_EQ(removed->GetParent(), nullptr);
    EXPECT_TRUE(removed->IsRootNode());
    EXPECT_EQ(removed->GetDOMManager(), &document);
}

TEST(DetachedElementsTest, TheDocumentLinkOfTheSubtreeEndsWithTheDocument)
{
    auto document = std::make_unique<DOM>();
    document->GetRoot().AddNewChild("a", nullptr).AddNewChild("b", nullptr);
    const DOMElement copy(*document->GetDocumentRoot());
    const std::unique_ptr<DOMElement> removed = document->GetRoot().RemoveChild("a");
    document.reset();
    EXPECT_EQ(removed->GetDOMManager(), nullptr);
    EXPECT_EQ(removed->GetParent(), nullptr);
    EXPECT_EQ(removed->GetChild("b")->GetDOMManager(), nullptr);
    EXPECT_EQ(removed->GetChild("b")->GetParent(), removed.get());
    EXPECT_EQ(copy.GetChild("b")->GetDOMManager(), nullptr);
}

TEST(DetachedElementsTest, AnInsertedElementForgetsItsOldLinks)
{
    DOM to;
    {
        DOM from;
        from.GetRoot().AddNewChild("a", nullptr);
        to.GetRoot().AppendChild(from.GetRoot().RemoveChild("a"));
    }
    EXPECT_EQ(to.GetDocumentRoot()->GetParent(), &to.GetRoot());
    EXPECT_EQ(to.GetDocumentRoot()->GetDOMManager(), &to);
}

TEST(DetachedElementsTest, AChildCopiedIntoTheTreeIsNoLongerOutside)
{
    auto document = std::make_unique<DOM>();
    DOMElement& a = document->GetRoot().AddNewChild("a", nullptr);
    AddError(a, "a");
    document->GetRoot().AppendChild(std::make_unique<DOMElement>(a));
    EXPECT_EQ(Strings(document->GetErrors()), (Texts{"a", "a"}));
    document.reset();
}

TEST(DetachedElementsTest, ARemovedChildDiesWithItsOwnRecordsOnly)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    AddError(a, "a");
    AddError(document.GetRoot(), "root");
    std::unique_ptr<DOMElement> removed = document.GetRoot().RemoveChild("a");
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 2u);
    removed.reset();
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"root"}));
}

// Without a parent it is a root, and roots speak for the document; but it is not the
// document's own, so it takes along only what is its own.
TEST(DetachedElementsTest, AnOrphanDiesWithItsOwnRecordsOnly)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    AddError(parent.AddNewChild("a", nullptr), "a");
    AddError(document.GetRoot(), "root");
    std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    document.GetRoot().RemoveChildren().clear();
    ASSERT_TRUE(removed->IsRootNode());
    removed.reset();
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"root"}));
}
