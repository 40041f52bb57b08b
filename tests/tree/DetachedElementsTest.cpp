// Detached elements keep links to their old parents and documents. The tests destroy elements, parents
// and documents in every order; the address sanitizer detects uses of freed memory.
#include <algorithm>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

std::unique_ptr<DOMElement> Detach(DOMElement& element)
{
    return element.GetParent()->RemoveChild(element);
}

// Calls operations that follow the links of `element` and of its subtree.
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

// Calls `run` with every permutation of 0 to count - 1.
void ForEachOrder(std::size_t count, const std::function<void(const std::vector<std::size_t>&)>& run)
{
    std::vector<std::size_t> order(count);
    for (std::size_t i = 0; i < count; ++i)
        order[i] = i;
    do
        run(order);
    while (std::next_permutation(order.begin(), order.end()));
}

// Detached elements and the documents that they come from. Destroyed objects become null.
struct DetachedObjects {
    std::vector<std::unique_ptr<DOM>> documents;
    std::vector<std::unique_ptr<DOMElement>> elements;

    std::size_t size() const { return documents.size() + elements.size(); }
    void Destroy(std::size_t index)
    {
        if (index < documents.size())
            documents[index].reset();
        else
            elements[index - documents.size()].reset();
    }
    void UseLinksOfAll() const
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

DOM& NewDocument(DetachedObjects& detached)
{
    detached.documents.push_back(std::make_unique<DOM>());
    DOM& document = *detached.documents.back();
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

struct SetupRow {
    const char* name;
    std::function<void(DetachedObjects&)> build;
};

void RemovedParentAndChild(DetachedObjects& detached)
{
    DOM& document = NewDocument(detached);
    DOMElement& parent = Find(document, "parent");
    detached.elements.push_back(Detach(*parent.GetChild("child")));
    detached.elements.push_back(Detach(parent));
}

void ChainOfRemovals(DetachedObjects& detached)
{
    DOM& document = NewDocument(detached);
    std::unique_ptr<DOMElement> parent = Detach(Find(document, "parent"));
    std::unique_ptr<DOMElement> child = parent->RemoveChild("child");
    std::unique_ptr<DOMElement> grandchild = child->RemoveChild("grandchild");
    detached.elements.push_back(grandchild->RemoveChild("low"));
    detached.elements.push_back(std::move(grandchild));
    detached.elements.push_back(std::move(child));
    detached.elements.push_back(std::move(parent));
}

void Copies(DetachedObjects& detached)
{
    DOM& document = NewDocument(detached);
    detached.elements.push_back(std::make_unique<DOMElement>(Find(document, "parent")));
    detached.elements.push_back(std::make_unique<DOMElement>(*detached.elements[0]));
    detached.elements.push_back(detached.elements[0]->RemoveChild("child"));
    detached.elements.push_back(std::make_unique<DOMElement>(document.GetRoot()));
}

void MovedIntoAnotherDocument(DetachedObjects& detached)
{
    DOM& from = NewDocument(detached);
    DOM& to = NewDocument(detached);
    DOMElement& child = Find(from, "child");
    detached.elements.push_back(Detach(Find(from, "low")));
    detached.elements.push_back(Detach(*child.GetChild("grandchild")));
    Find(to, "low").AppendChild(Detach(child));
}

void ParentMovedIntoAnotherDocument(DetachedObjects& detached)
{
    DOM& from = NewDocument(detached);
    DOM& to = NewDocument(detached);
    detached.elements.push_back(Detach(Find(from, "child")));
    Find(to, "low").AppendChild(Detach(Find(from, "parent")));
    detached.elements.push_back(Detach(*to.GetElement("low")->GetChild("parent")));
}

void MovedIntoATreeWithoutDocument(DetachedObjects& detached)
{
    DOM& document = NewDocument(detached);
    detached.elements.push_back(NewElement("free"));
    detached.elements.push_back(Detach(Find(document, "low")));
    detached.elements[0]->AppendChild(Detach(Find(document, "child")));
    detached.elements.push_back(detached.elements[0]->RemoveChild("child"));
}

void TreeWithoutDocument(DetachedObjects& detached)
{
    detached.elements.push_back(NewElement("top"));
    DOMElement& parent = detached.elements[0]->AddNewChild("parent", nullptr);
    parent.AddNewChild("child", nullptr).AddNewChild("low", nullptr);
    detached.elements.push_back(parent.RemoveChild("child"));
    detached.elements.push_back(detached.elements[1]->RemoveChild("low"));
    detached.elements.push_back(Detach(parent));
}

void RemovedTogether(DetachedObjects& detached)
{
    DOM& document = NewDocument(detached);
    Find(document, "parent").AddNewChild("second", nullptr);
    for (std::unique_ptr<DOMElement>& child : Find(document, "parent").RemoveChildren())
        detached.elements.push_back(std::move(child));
    detached.elements.push_back(Detach(Find(document, "parent")));
}

void RecordsInAnotherDocument(DetachedObjects& detached)
{
    DOM& from = NewDocument(detached);
    DOM& to = NewDocument(detached);
    detached.elements.push_back(Detach(Find(from, "child")));
    DOMTestAccess::MoveAll(from, to);
    detached.elements.push_back(Detach(Find(from, "parent")));
    AddError(*detached.elements[0], "again");
}

class DetachedElementsOrderTest : public testing::TestWithParam<SetupRow> {};

}  // namespace

TEST_P(DetachedElementsOrderTest, EveryOrderOfDestructionIsSafe)
{
    std::size_t count = 0;
    {
        DetachedObjects detached;
        GetParam().build(detached);
        count = detached.size();
    }
    ForEachOrder(count, [](const std::vector<std::size_t>& order) {
        DetachedObjects detached;
        GetParam().build(detached);
        for (const std::size_t index : order) {
            detached.UseLinksOfAll();
            detached.Destroy(index);
        }
    });
}

const SetupRow SetupRows[] = {
    {"RemovedParentAndChild", RemovedParentAndChild},
    {"ChainOfRemovals", ChainOfRemovals},
    {"Copies", Copies},
    {"MovedIntoAnotherDocument", MovedIntoAnotherDocument},
    {"ParentMovedIntoAnotherDocument", ParentMovedIntoAnotherDocument},
    {"MovedIntoATreeWithoutDocument", MovedIntoATreeWithoutDocument},
    {"TreeWithoutDocument", TreeWithoutDocument},
    {"RemovedTogether", RemovedTogether},
    {"RecordsInAnotherDocument", RecordsInAnotherDocument},
};

INSTANTIATE_TEST_SUITE_P(
    Of, DetachedElementsOrderTest, testing::ValuesIn(SetupRows), [](const auto& row) { return row.param.name; });

TEST(DetachedElementsTest, ParentLinkIsClearedWhenTheParentDies)
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

TEST(DetachedElementsTest, DocumentLinksOfTheSubtreeAreClearedWhenTheDocumentDies)
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

TEST(DetachedElementsTest, InsertionReplacesTheOldLinks)
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

TEST(DetachedElementsTest, CopyInsertedIntoTheTreeIsNoLongerDetached)
{
    auto document = std::make_unique<DOM>();
    DOMElement& a = document->GetRoot().AddNewChild("a", nullptr);
    AddError(a, "a");
    document->GetRoot().AppendChild(std::make_unique<DOMElement>(a));
    EXPECT_EQ(Strings(document->GetErrors()), (Texts{"a", "a"}));
    document.reset();
}

TEST(DetachedElementsTest, DestroyingARemovedChildErasesOnlyItsOwnRecords)
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

// ClearErrors of an element without a parent clears the whole document. The destruction of such an
// element must erase only its own records, because it is not the root of the document.
TEST(DetachedElementsTest, DestroyingAnOrphanErasesOnlyItsOwnRecords)
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
