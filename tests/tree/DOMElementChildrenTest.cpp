// Operations of DOMElement that add and remove children.
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;
using testsupport::ExpectLogicException;
using testsupport::LogCapture;

namespace {

constexpr char File[] = "vancorexml\\main\\parser\\DOMElement";

// Expects `times` log records, each with the warning that "before" is not a child.
void ExpectMissingBeforeLogged(const LogCapture& log, std::size_t times)
{
    ASSERT_EQ(log.records.size(), times);
    for (const VLog::Record& record : log.records) {
        EXPECT_EQ(record.severity, VLog::Warn);
        EXPECT_EQ(record.message, VString("DOMElement was asked to insert before a non-existent child."));
        EXPECT_EQ(record.code, 0xD78DE10Eu);
        EXPECT_EQ(record.key, VString("LogSite_MissingDomElement_0xD78DE10E"));
        EXPECT_EQ(record.errorSource, 2);
        EXPECT_EQ(record.statusCode, 2);
    }
}

}  // namespace

TEST(DOMElementChildTest, AddNewChildInsertsBeforeTheChildOrAtTheEnd)
{
    LogCapture log;
    DOMElement parent("p");
    DOMElement& a = parent.AddNewChild("a", nullptr);
    parent.AddNewChild("b", nullptr);
    DOMElement& c = parent.AddNewChild("c", &a);
    EXPECT_EQ(ChildNames(parent), "c a b");
    EXPECT_EQ(c.GetParent(), &parent);
    EXPECT_FALSE(c.IsRootNode());
    EXPECT_TRUE(parent.HasChildren());
    EXPECT_TRUE(log.records.empty());
}

TEST(DOMElementChildTest, AppendChildTakesOwnership)
{
    DOMElement parent("p");
    std::unique_ptr<DOMElement> child = NewElement("a");
    DOMElement* const raw = child.get();
    EXPECT_EQ(&parent.AppendChild(std::move(child)), raw);
    EXPECT_EQ(child, nullptr);
    EXPECT_EQ(parent.GetChild("a"), raw);
    EXPECT_EQ(raw->GetParent(), &parent);
}

TEST(DOMElementChildTest, InsertingNullAsserts)
{
    DOMElement parent("p");
    const auto appendNull = [&] { parent.AppendChild(parent.RemoveChild("missing")); };
    ExpectLogicException(appendNull, File, 412, "child", 0x3E5D90A4);
    EXPECT_FALSE(parent.HasChildren());
}

TEST(DOMElementChildTest, InsertBeforeANonChildLogsAndAppends)
{
    LogCapture log;
    DOMElement parent("p");
    DOMElement stranger("s");
    parent.AddNewChild("a", nullptr);
    DOMElement& child = parent.InsertChild(NewElement("b"), &stranger);
    EXPECT_EQ(ChildNames(parent), "a b");
    EXPECT_EQ(child.GetParent(), &parent);
    ExpectMissingBeforeLogged(log, 1);
}

TEST(DOMElementChildTest, InsertionSetsTheDocumentOfTheWholeSubtree)
{
    DOM document;
    std::unique_ptr<DOMElement> child = NewElement("a");
    DOMElement& inner = child->AddNewChild("b", nullptr).AddNewChild("c", nullptr);
    DOMElement& inserted = document.GetRoot().AppendChild(std::move(child));
    EXPECT_EQ(inserted.GetDOMManager(), &document);
    EXPECT_EQ(inserted.GetChild("b")->GetDOMManager(), &document);
    EXPECT_EQ(inner.GetDOMManager(), &document);
    EXPECT_EQ(std::as_const(inner).GetDOMManager(), &document);
}

TEST(DOMElementChildTest, InsertionIntoATreeWithoutDocumentClearsTheDocument)
{
    DOM document;
    document.GetRoot().AddNewChild("a", nullptr).AddNewChild("b", nullptr);
    DOMElement free("f");
    DOMElement& moved = free.AppendChild(document.GetRoot().RemoveChild("a"));
    EXPECT_EQ(moved.GetDOMManager(), nullptr);
    EXPECT_EQ(moved.GetChild("b")->GetDOMManager(), nullptr);
}

TEST(DOMElementChildTest, RemoveChildKeepsParentAndDocumentLinks)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    parent.AddNewChild("a", nullptr);
    DOMElement& b = parent.AddNewChild("b", nullptr);
    parent.AddNewChild("c", nullptr);
    const std::unique_ptr<DOMElement> removed = parent.RemoveChild(b);
    EXPECT_EQ(removed.get(), &b);
    EXPECT_EQ(ChildNames(parent), "a c");
    EXPECT_EQ(removed->GetParent(), &parent);
    EXPECT_EQ(removed->GetDOMManager(), &document);
    EXPECT_TRUE(removed->IsChildOf(document.GetRoot()));
}

TEST(DOMElementChildTest, RemoveChildOfAnotherParentAsserts)
{
    DOMElement parent("p");
    DOMElement& child = parent.AddNewChild("a", nullptr).AddNewChild("b", nullptr);
    ExpectLogicException([&] { parent.RemoveChild(child); }, File, 556, "i != m_children.end()", 0x65F1A21B);
    EXPECT_EQ(ChildNames(*parent.GetChild("a")), "b");
}

TEST(DOMElementChildTest, RemoveChildByNameRemovesTheFirst)
{
    DOMElement parent("p");
    DOMElement& first = parent.AddNewChild("a", nullptr);
    parent.AddNewChild("a", nullptr);
    EXPECT_EQ(parent.RemoveChild("a").get(), &first);
    EXPECT_EQ(ChildNames(parent), "a");
}

TEST(DOMElementChildTest, RemoveChildOfAMissingNameChangesNothing)
{
    DOMElement parent("p");
    parent.AddNewChild("a", nullptr);
    EXPECT_EQ(parent.RemoveChild("b"), nullptr);
    EXPECT_EQ(ChildNames(parent), "a");
}

TEST(DOMElementChildTest, RemoveChildrenReturnsAll)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    parent.AddNewChild("a", nullptr);
    parent.AddNewChild("b", nullptr);
    const std::vector<std::unique_ptr<DOMElement>> removed = parent.RemoveChildren();
    ASSERT_EQ(removed.size(), 2u);
    EXPECT_EQ(removed[0]->GetName(), VString("a"));
    EXPECT_EQ(removed[1]->GetName(), VString("b"));
    EXPECT_EQ(removed[1]->GetParent(), &parent);
    EXPECT_EQ(removed[1]->GetDOMManager(), &document);
    EXPECT_FALSE(parent.HasChildren());
    EXPECT_TRUE(parent.RemoveChildren().empty());
}

TEST(DOMElementChildTest, RemoveIfEmptyRemovesOnlyAnEmptyChild)
{
    DOMElement parent("p");
    DOMElement& full = parent.AddNewChild("full", nullptr);
    DOMElement& empty = parent.AddNewChild("empty", nullptr);
    full.SetText("x");
    EXPECT_EQ(parent.RemoveIfEmpty(full), nullptr);
    EXPECT_EQ(parent.RemoveIfEmpty("full"), nullptr);
    EXPECT_EQ(parent.RemoveIfEmpty("missing"), nullptr);
    const std::unique_ptr<DOMElement> removed = parent.RemoveIfEmpty(empty);
    EXPECT_EQ(removed.get(), &empty);
    EXPECT_EQ(removed->GetParent(), &parent);
    EXPECT_EQ(ChildNames(parent), "full");
}

TEST(DOMElementChildTest, RemoveIfEmptyByNameConsidersOnlyTheFirst)
{
    DOMElement parent("p");
    parent.AddNewChild("a", nullptr).SetText("x");
    parent.AddNewChild("a", nullptr);
    DOMElement& only = parent.AddNewChild("b", nullptr);
    EXPECT_EQ(parent.RemoveIfEmpty("a"), nullptr);
    EXPECT_EQ(parent.RemoveIfEmpty("b").get(), &only);
}

TEST(DOMElementChildTest, RemoveIfEmptyOfANonChildAssertsOnlyWhenEmpty)
{
    DOMElement parent("p");
    DOMElement stranger("s");
    ExpectLogicException([&] { parent.RemoveIfEmpty(stranger); }, File, 556, "i != m_children.end()", 0x65F1A21B);
    stranger.SetText("x");
    EXPECT_EQ(parent.RemoveIfEmpty(stranger), nullptr);
}

TEST(DOMElementChildTest, IsChildOfIsTrueForAncestorsButNotForItself)
{
    DOMElement top("t");
    DOMElement& middle = top.AddNewChild("m", nullptr);
    DOMElement& low = middle.AddNewChild("l", nullptr);
    EXPECT_TRUE(low.IsChildOf(middle));
    EXPECT_TRUE(low.IsChildOf(top));
    EXPECT_FALSE(top.IsChildOf(low));
    EXPECT_FALSE(low.IsChildOf(low));
}
