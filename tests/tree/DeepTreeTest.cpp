// Trees with a million levels. No operation may use a call stack that grows with the depth.
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

constexpr int Levels = 1000000;

DOMElement& AddChain(DOMElement& top, int levels)
{
    const VString name("level");
    DOMElement* low = &top;
    for (int i = 0; i < levels; ++i)
        low = &low->AddNewChild(name, nullptr);
    return *low;
}

}  // namespace

TEST(DeepTreeTest, IsBuiltAndDestroyed)
{
    DOM document;
    DOMElement& low = AddChain(document.GetRoot(), Levels);
    EXPECT_TRUE(low.IsChildOf(document.GetRoot()));
    EXPECT_EQ(document.GetElement("missing"), nullptr);
}

TEST(DeepTreeTest, IsCopiedComparedAndAssigned)
{
    DOM document;
    DOMElement& low = AddChain(document.GetRoot(), Levels);
    DOMElement copy(document.GetRoot());
    EXPECT_TRUE(copy == document.GetRoot());
    low.SetText("x");
    EXPECT_TRUE(copy != document.GetRoot());
    copy = document.GetRoot();
    EXPECT_TRUE(copy == document.GetRoot());
}

TEST(DeepTreeTest, IsAssignedFromItsMiddleElement)
{
    DOMElement top("top");
    DOMElement& middle = AddChain(top, Levels / 2);
    AddChain(middle, Levels / 2);
    top = middle;
    EXPECT_EQ(top.GetName(), VString("level"));
    EXPECT_TRUE(top.HasChildren());
}

TEST(DeepTreeTest, MovesToAnotherDocumentWithItsRecords)
{
    DOM from;
    DOM to;
    DOMElement& top = from.GetRoot().AddNewChild("top", nullptr);
    DOMElement& low = AddChain(top, Levels);
    AddError(low, "deep");
    EXPECT_TRUE(top.HasErrors());
    EXPECT_EQ(Strings(from.GetErrors()), (Texts{"deep"}));
    top.Move(to.GetRoot(), nullptr);
    EXPECT_EQ(low.GetDOMManager(), &to);
    EXPECT_EQ(ErrorsOf(top), (Texts{"deep"}));
    top.ClearErrors();
    EXPECT_FALSE(to.HasErrors());
}

TEST(DeepTreeTest, IsDeepCopiedAndOutlivesItsDocument)
{
    std::unique_ptr<DOMElement> removed;
    {
        DOM document;
        DOM copy;
        AddChain(document.GetRoot(), Levels / 2);
        copy.DeepCopy(document);
        EXPECT_TRUE(copy == document);
        removed = copy.GetRoot().RemoveChild("level");
    }
    const DOMElement* low = removed.get();
    while (low->HasChildren())
        low = low->GetChildren().front();
    EXPECT_EQ(low->GetDOMManager(), nullptr);
}
