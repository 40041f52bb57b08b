// Moving elements between parents and documents.
#include <algorithm>
#include <cstddef>
#include <random>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;
using testsupport::ExpectLogicException;
using testsupport::LogCapture;

namespace {

constexpr char File[] = "vancorexml\\main\\parser\\DOMElement";
constexpr char MissingBefore[] = "DOMElement was asked to insert before a non-existent child.";

void AddChildren(DOMElement& parent, const std::vector<const char*>& names)
{
    for (const char* name : names)
        parent.AddNewChild(name, nullptr);
}

void ExpectRefusedAsOwnDescendant(const std::function<void()>& run)
{
    ExpectLogicException(run, File, 420, "An element cannot become its own descendant.", 0x7A41C0D3);
}

// Does the same as AdoptChildren by inserting one child at a time.
void AdoptOneByOne(DOMElement& parent, DOMElement& other, const DOMElement* before)
{
    std::vector<std::unique_ptr<DOMElement>> children = other.RemoveChildren();
    for (std::unique_ptr<DOMElement>& child : children)
        parent.InsertChild(std::move(child), before);
}

struct Adoption {
    std::string names;  // the children of the parent afterwards
    std::size_t logged = 0;
};

// Calls `adopt` with a parent, another element, and the candidate with the number `before`. Candidate 0 is null.
// Candidate 1 is an unrelated element. Candidates 2 and 3 are children of the parent, and 4 to 7 are children of the
// other element.
template <typename Adopt>
Adoption AdoptBefore(std::size_t before, Adopt adopt)
{
    LogCapture log;
    DOMElement parent("p");
    DOMElement other("o");
    const DOMElement stranger("s");
    AddChildren(parent, {"x", "y"});
    AddChildren(other, {"a", "b", "c", "d"});
    std::vector<const DOMElement*> candidates{nullptr, &stranger};
    candidates.insert(candidates.end(), parent.GetChildren().begin(), parent.GetChildren().end());
    candidates.insert(candidates.end(), other.GetChildren().begin(), other.GetChildren().end());
    adopt(parent, other, candidates.at(before));
    return {ChildNames(parent), log.records.size()};
}

}  // namespace

TEST(DOMElementMoveTest, MoveInsertsBeforeTheGivenChild)
{
    DOMElement top("t");
    DOMElement& from = top.AddNewChild("from", nullptr);
    DOMElement& to = top.AddNewChild("to", nullptr);
    AddChildren(from, {"a", "b"});
    AddChildren(to, {"x", "y"});
    from.GetChild("a")->Move(to, to.GetChild("y"));
    EXPECT_EQ(ChildNames(from), "b");
    EXPECT_EQ(ChildNames(to), "x a y");
    EXPECT_EQ(to.GetChild("a")->GetParent(), &to);
}

TEST(DOMElementMoveTest, MoveWithinOneParentReorders)
{
    DOMElement parent("p");
    AddChildren(parent, {"a", "b", "c"});
    parent.GetChild("c")->Move(parent, parent.GetChild("a"));
    EXPECT_EQ(ChildNames(parent), "c a b");
    parent.GetChild("c")->Move(parent, nullptr);
    EXPECT_EQ(ChildNames(parent), "a b c");
}

TEST(DOMElementMoveTest, MoveWithoutAParentAsserts)
{
    DOMElement element("a");
    DOMElement parent("p");
    ExpectLogicException([&] { element.Move(parent, nullptr); }, File, 530, "m_parent", 0x5C0E21B7);
}

TEST(DOMElementMoveTest, MoveOfARemovedChildAsserts)
{
    DOMElement parent("p");
    DOMElement other("o");
    AddChildren(parent, {"a"});
    const std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    ExpectLogicException([&] { removed->Move(other, nullptr); }, File, 556, "i != m_children.end()", 0x65F1A21B);
}

TEST(DOMElementMoveTest, MoveToFrontMakesTheChildTheFirst)
{
    LogCapture log;
    DOMElement parent("p");
    AddChildren(parent, {"a", "b", "c"});
    parent.GetChild("c")->MoveToFront();
    EXPECT_EQ(ChildNames(parent), "c a b");
    EXPECT_TRUE(log.records.empty());
}

TEST(DOMElementMoveTest, MoveToFrontOfTheFirstChildLogsAndMovesItToTheEnd)
{
    LogCapture log;
    DOMElement parent("p");
    AddChildren(parent, {"a", "b", "c"});
    parent.GetChild("a")->MoveToFront();
    EXPECT_EQ(ChildNames(parent), "b c a");
    ASSERT_EQ(log.records.size(), 1u);
    EXPECT_EQ(log.records[0].message, VString(MissingBefore));
    EXPECT_EQ(log.records[0].severity, VLog::Warn);
}

TEST(DOMElementMoveTest, MoveToFrontOfAnOnlyChildChangesNothing)
{
    LogCapture log;
    DOMElement parent("p");
    AddChildren(parent, {"a"});
    parent.GetChild("a")->MoveToFront();
    EXPECT_EQ(ChildNames(parent), "a");
    EXPECT_TRUE(log.records.empty());
}

TEST(DOMElementMoveTest, MoveToFrontWithoutAParentAsserts)
{
    DOMElement element("a");
    ExpectLogicException([&] { element.MoveToFront(); }, File, 546, "parent", 0xD66645D1);
}

TEST(DOMElementMoveTest, AdoptMovesTheChildFromItsParent)
{
    DOM from;
    DOM to;
    AddChildren(from.GetRoot(), {"a", "b"});
    AddChildren(to.GetRoot(), {"x"});
    DOMElement& child = *from.GetRoot().GetChild("a");
    to.GetRoot().Adopt(child, to.GetRoot().GetChild("x"));
    EXPECT_EQ(ChildNames(to.GetRoot()), "a x");
    EXPECT_EQ(ChildNames(from.GetRoot()), "b");
    EXPECT_EQ(child.GetParent(), &to.GetRoot());
    EXPECT_EQ(child.GetDOMManager(), &to);
}

TEST(DOMElementMoveTest, AdoptingItselfOrAnOwnChildChangesNothing)
{
    DOMElement top("t");
    DOMElement& parent = top.AddNewChild("p", nullptr);
    AddChildren(parent, {"a", "b"});
    parent.Adopt(*parent.GetChild("b"), parent.GetChild("a"));
    parent.Adopt(parent, nullptr);
    EXPECT_EQ(ChildNames(parent), "a b");
    EXPECT_EQ(ChildNames(top), "p");
}

TEST(DOMElementMoveTest, AdoptWithoutAParentAsserts)
{
    DOMElement parent("p");
    DOMElement child("a");
    const char* const message = "Cannot adopt a child without an existing parent.";
    ExpectLogicException([&] { parent.Adopt(child, nullptr); }, File, 492, message, 0x956B8EC3);
    ExpectLogicException([&] { parent.Adopt(parent, nullptr); }, File, 492, message, 0x956B8EC3);
}

TEST(DOMElementMoveTest, AdoptChildrenKeepsTheirOrder)
{
    DOM from;
    DOM to;
    AddChildren(from.GetRoot(), {"a", "b", "c"});
    AddChildren(to.GetRoot(), {"x", "y"});
    to.GetRoot().AdoptChildren(from.GetRoot(), to.GetRoot().GetChild("y"));
    EXPECT_EQ(ChildNames(to.GetRoot()), "x a b c y");
    EXPECT_FALSE(from.GetRoot().HasChildren());
    for (const DOMElement* child : to.GetRoot().GetChildren()) {
        EXPECT_EQ(child->GetParent(), &to.GetRoot());
        EXPECT_EQ(child->GetDOMManager(), &to);
    }
}

TEST(DOMElementMoveTest, AdoptChildrenOfItselfChangesNothing)
{
    LogCapture log;
    DOMElement parent("p");
    AddChildren(parent, {"a", "b"});
    parent.AdoptChildren(parent, nullptr);
    parent.AdoptChildren(parent, parent.GetChild("a"));
    parent.AdoptChildren(parent, parent.GetChild("b"));
    EXPECT_EQ(ChildNames(parent), "a b");
    EXPECT_TRUE(log.records.empty());
}

TEST(DOMElementMoveTest, AdoptChildrenEqualsInsertingOneByOne)
{
    const auto adoptChildren = [](DOMElement& parent, DOMElement& other, const DOMElement* before) {
        parent.AdoptChildren(other, before);
    };
    for (std::size_t before = 0; before < 8; ++before) {
        const Adoption adoption = AdoptBefore(before, adoptChildren);
        const Adoption expected = AdoptBefore(before, AdoptOneByOne);
        EXPECT_EQ(adoption.names, expected.names) << before;
        EXPECT_EQ(adoption.logged, expected.logged) << before;
    }
}

TEST(DOMElementMoveTest, AdoptChildrenTakesLinearTime)
{
    DOMElement parent("p");
    DOMElement other("o");
    const DOMElement* const last = &parent.AddNewChild("last", nullptr);
    for (int i = 0; i < 200000; ++i)
        other.AddNewChild("a", nullptr);
    parent.AdoptChildren(other, last);
    EXPECT_EQ(parent.GetChildren().size(), 200001u);
    EXPECT_EQ(parent.GetChildren().back(), last);
}

TEST(DOMElementMoveTest, NoElementBecomesItsOwnDescendantByMoving)
{
    DOMElement top("t");
    DOMElement& middle = top.AddNewChild("m", nullptr);
    DOMElement& low = middle.AddNewChild("l", nullptr);
    ExpectRefusedAsOwnDescendant([&] { middle.Move(low, nullptr); });
    ExpectRefusedAsOwnDescendant([&] { middle.Move(middle, nullptr); });
    ExpectRefusedAsOwnDescendant([&] { low.Move(low, nullptr); });
    ExpectRefusedAsOwnDescendant([&] { low.Adopt(middle, nullptr); });
    EXPECT_EQ(ChildNames(top), "m");
    EXPECT_EQ(ChildNames(middle), "l");
    EXPECT_EQ(middle.GetParent(), &top);
}

TEST(DOMElementMoveTest, NoElementBecomesItsOwnDescendantByInsertion)
{
    std::unique_ptr<DOMElement> top = NewElement("t");
    DOMElement& low = top->AddNewChild("m", nullptr).AddNewChild("l", nullptr);
    ExpectRefusedAsOwnDescendant([&] { low.InsertChild(std::move(top), nullptr); });
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(ChildNames(*top), "m");
    EXPECT_FALSE(low.HasChildren());
    ExpectRefusedAsOwnDescendant([&] { top->InsertChild(std::move(top), nullptr); });
    ASSERT_NE(top, nullptr);
}

TEST(DOMElementMoveTest, NoElementBecomesItsOwnDescendantByAdoptingItsSiblings)
{
    DOMElement top("t");
    AddChildren(top, {"a", "b"});
    DOMElement& low = top.GetChild("b")->AddNewChild("l", nullptr);
    ExpectRefusedAsOwnDescendant([&] { low.AdoptChildren(top, nullptr); });
    ExpectRefusedAsOwnDescendant([&] { top.GetChild("b")->AdoptChildren(top, nullptr); });
    EXPECT_EQ(ChildNames(top), "a b");
    EXPECT_FALSE(low.HasChildren());
}

// A removed child keeps the link to its old parent, so the old parent counts as its ancestor.
TEST(DOMElementMoveTest, OldParentCannotMoveIntoItsRemovedChild)
{
    DOMElement top("t");
    DOMElement& parent = top.AddNewChild("p", nullptr);
    AddChildren(parent, {"a"});
    const std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    ExpectRefusedAsOwnDescendant([&] { parent.Move(*removed, nullptr); });
    EXPECT_EQ(parent.GetParent(), &top);
}

TEST(DOMElementMoveTest, RemovedChildCanAdoptItsOldSiblings)
{
    DOMElement parent("p");
    AddChildren(parent, {"a", "b", "c"});
    const std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    removed->AdoptChildren(parent, nullptr);
    EXPECT_EQ(ChildNames(*removed), "b c");
    EXPECT_EQ(removed->GetParent(), &parent);
}

TEST(DOMElementMoveTest, AppendingSubtreesToTheLowestElementTakesLinearTime)
{
    const testsupport::CpuTimeLimit limit(15);
    DOM document;
    DOMElement* low = &document.GetRoot();
    for (int i = 0; i < 100000; ++i) {
        std::unique_ptr<DOMElement> subtree = NewElement("a");
        DOMElement& leaf = subtree->AddNewChild("b", nullptr);
        low->AppendChild(std::move(subtree));
        low = &leaf;
    }
    EXPECT_EQ(document.GetDocumentRoot()->GetName(), VString("a"));
}

TEST(DOMElementMoveTest, MovingAnElementDoesNotVisitItsChildren)
{
    const testsupport::CpuTimeLimit limit(15);
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    DOMElement& wide = a.AddNewChild("wide", nullptr);
    for (int i = 0; i < 100000; ++i)
        wide.AddNewChild("child", nullptr);
    for (int i = 0; i < 50000; ++i) {
        wide.Move(b, nullptr);
        wide.Move(a, nullptr);
    }
    EXPECT_EQ(wide.GetParent(), &a);
}

TEST(DOMElementMoveTest, ElementCannotMoveBelowARemovedChildOfItsSubtree)
{
    DOM document;
    DOMElement& top = document.GetRoot().AddNewChild("top", nullptr);
    top.AddNewChild("inner", nullptr).AddNewChild("removed", nullptr);
    const std::unique_ptr<DOMElement> removed = top.GetChild("inner")->RemoveChild("removed");
    EXPECT_THROW(top.Move(*removed, nullptr), LogicException);
    EXPECT_THROW(removed->AddNewChild("low", nullptr).AdoptChildren(document.GetRoot(), nullptr), LogicException);
}

TEST(DOMElementMoveTest, LookupsNearTheEndOfManyChildrenAreFast)
{
    const testsupport::CpuTimeLimit limit(15);
    constexpr int Count = 200000;
    DOM document;
    DOMElement& list = document.GetRoot().AddNewChild("list", nullptr);
    const DOMElement* last = &list.AddNewChild("last", nullptr);
    for (int i = 0; i < Count; ++i)
        list.AddNewChild("child", last);
    EXPECT_EQ(list.GetChildren().back(), last);
    for (int i = 0; i < Count; ++i)
        list.RemoveChild(*list.GetChildren().back()).reset();
    EXPECT_EQ(list.GetChildren().size(), 1u);
}

// A child stores where it was found last. Insertions, removals and moves make these positions wrong.
TEST(DOMElementMoveTest, ChildrenAreFoundWhereverTheyMoved)
{
    std::mt19937 random(7);
    const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    DOM document;
    DOMElement& top = document.GetRoot();
    std::vector<DOMElement*> parents{&top.AddNewChild("p", nullptr), &top.AddNewChild("q", nullptr)};
    std::vector<DOMElement*> lists[2];
    std::vector<std::unique_ptr<DOMElement>> removed;
    const auto placeIn = [&](std::size_t list) {
        const std::size_t size = lists[list].size();
        return below(4) == 0 ? (below(2) == 0 ? 0 : size) : below(size + 1);
    };
    const auto beforeAt = [&](std::size_t list, std::size_t place) {
        return place == lists[list].size() ? nullptr : lists[list][place];
    };
    const auto insert = [&](std::size_t list, std::size_t place, DOMElement* child) {
        lists[list].insert(lists[list].begin() + static_cast<std::ptrdiff_t>(place), child);
    };
    for (int i = 0; i < 20000; ++i) {
        const std::size_t list = below(2);
        const std::size_t place = placeIn(list);
        DOMElement* const before = beforeAt(list, place);
        switch (below(5)) {
        case 0:
            if (lists[list].size() < 300)
                insert(list, place, &parents[list]->AddNewChild("new", before));
            break;
        case 1:
            if (before) {
                removed.push_back(parents[list]->RemoveChild(*before));
                EXPECT_EQ(removed.back().get(), before);
                lists[list].erase(lists[list].begin() + static_cast<std::ptrdiff_t>(place));
            }
            break;
        case 2:
            if (!removed.empty()) {
                DOMElement* const child = removed.back().get();
                parents[list]->InsertChild(std::move(removed.back()), before);
                removed.pop_back();
                insert(list, place, child);
            }
            break;
        case 3:
            if (before) {
                const std::size_t other = 1 - list;
                const std::size_t target = placeIn(other);
                before->Move(*parents[other], beforeAt(other, target));
                lists[list].erase(lists[list].begin() + static_cast<std::ptrdiff_t>(place));
                insert(other, target, before);
            }
            break;
        default:
            if (before && place > 0) {
                before->MoveToFront();
                std::rotate(lists[list].begin(),
                    lists[list].begin() + static_cast<std::ptrdiff_t>(place),
                    lists[list].begin() + static_cast<std::ptrdiff_t>(place) + 1);
            }
        }
        ASSERT_TRUE(std::ranges::equal(parents[list]->GetChildren(), lists[list])) << i;
    }
    EXPECT_GT(lists[0].size() + lists[1].size(), 20U);
}

// The other element stores a position at which this element has a child.
TEST(DOMElementMoveTest, ChildOfAnotherElementIsNotFoundAtItsPosition)
{
    DOMElement one("one");
    DOMElement two("two");
    AddChildren(one, {"a", "b", "c"});
    AddChildren(two, {"a", "b", "c", "d", "e"});
    for (DOMElement* child : two.GetChildren())
        ExpectLogicException([&] { one.RemoveChild(*child); }, File, 556, "i != m_children.end()", 0x65F1A21B);
    EXPECT_EQ(one.GetChildren().size(), 3U);
    const LogCapture log;
    const DOMElement& last = one.AddNewChild("last", two.GetChildren()[1]);
    EXPECT_EQ(&last, one.GetChildren().back());
}
