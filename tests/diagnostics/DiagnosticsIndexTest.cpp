// Compares the index behind the Has... queries with a plain implementation, which climbs to the root from every element
// that has a record.
#include "vancorexml/main/parser/DiagnosticsIndex.h"

#include <algorithm>
#include <array>
#include <random>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

template <typename Map, typename Counts>
bool HasRecordInSubtree(const Map& map, const DOMElement& element, Counts counts)
{
    bool any = false;
    for (const auto& [key, records] : map) {
        bool gathered = false;
        records.ForEach([&](const auto& record) { gathered = gathered || counts(record); });
        any = any || (gathered && (element.IsRootNode() || key == &element || key->IsChildOf(element)));
    }
    return any;
}

void ExpectPlainAnswers(const DOM& document, const DOMElement& element)
{
    const auto& errors = DOMTestAccess::Errors(document);
    ASSERT_EQ(element.HasErrors(), HasRecordInSubtree(errors, element, [](const ErrorRecord&) { return true; }));
    ASSERT_EQ(element.HasUnreportedErrors(),
        HasRecordInSubtree(errors, element, [](const ErrorRecord& r) { return !r.reported; }));
    ASSERT_EQ(
        element.HasCancelErrors(), HasRecordInSubtree(errors, element, [](const ErrorRecord& r) { return r.cancel; }));
    ASSERT_EQ(element.HasOnlyCancelErrors(),
        !HasRecordInSubtree(errors, element, [](const ErrorRecord& r) { return !r.cancel; }));
    ASSERT_EQ(element.HasWarnings(),
        HasRecordInSubtree(DOMTestAccess::Warnings(document), element, [](const WarningRecord&) { return true; }));
}

// Clears the errors of `element` and expects that only the records of its subtree are erased.
void ClearErrorsAndExpectSubtreeCleared(const DOM& document, DOMElement& element)
{
    std::vector<const DOMElement*> subtree{&element};
    for (std::size_t i = 0; i < subtree.size(); ++i)
        subtree.insert(subtree.end(), subtree[i]->GetChildren().begin(), subtree[i]->GetChildren().end());
    std::size_t left = 0;
    for (const auto& [key, records] : DOMTestAccess::Errors(document))
        left += !element.IsRootNode() && std::find(subtree.begin(), subtree.end(), key) == subtree.end();
    element.ClearErrors();
    ASSERT_EQ(DOMTestAccess::ErrorEntries(document), left);
    for (const DOMElement* cleared : subtree)
        ASSERT_EQ(DOMTestAccess::Errors(document).count(cleared), 0u);
}

// Changes two documents, a tree without a document, and detached elements at random.
class RandomDocuments {
public:
    explicit RandomDocuments(unsigned seed) : m_random(seed) {}

    void Step()
    {
        DOMElement& element = AnyElement();
        switch (Below(12)) {
        case 0:
        case 1:
        case 2: element.AddNewChild("e", nullptr); break;
        case 3:
        case 4:
            if (element.GetDOMManager())
                element.Error("m", Info(1), Below(2) != 0, Below(2) != 0);
            break;
        case 5:
            if (element.GetDOMManager())
                element.Warning("m", Info(1));
            break;
        case 6: Detach(element); break;
        case 7: Attach(element); break;
        case 8: Move(element, AnyElement()); break;
        case 9:
            if (!m_detached.empty() && Below(3) == 0)
                m_detached.erase(m_detached.begin() + static_cast<std::ptrdiff_t>(Below(m_detached.size())));
            break;
        case 10: Clear(element); break;
        default: Copy(element);
        }
    }

    void Check()
    {
        for (DOMElement* element : All()) {
            if (element->GetDOMManager())
                ExpectPlainAnswers(*element->GetDOMManager(), *element);
        }
    }

private:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    std::vector<DOMElement*> All()
    {
        std::vector<DOMElement*> all{&m_documents[0].GetRoot(), &m_documents[1].GetRoot(), &m_free};
        for (const auto& element : m_detached)
            all.push_back(element.get());
        for (std::size_t i = 0; i < all.size(); ++i) {
            for (DOMElement* child : all[i]->GetChildren())
                all.push_back(child);
        }
        return all;
    }

    DOMElement& AnyElement()
    {
        const std::vector<DOMElement*> all = All();
        return *all[Below(all.size())];
    }

    bool IsListedByItsParent(DOMElement& element)
    {
        const DOMElement* const parent = element.GetParent();
        return parent &&
            std::any_of(parent->GetChildren().begin(), parent->GetChildren().end(), [&](const DOMElement* i) {
                return i == &element;
            });
    }

    void Detach(DOMElement& element)
    {
        if (IsListedByItsParent(element))
            m_detached.push_back(element.GetParent()->RemoveChild(element));
    }

    void Attach(DOMElement& parent)
    {
        if (m_detached.empty())
            return;
        const std::size_t index = Below(m_detached.size());
        try {
            parent.AppendChild(std::move(m_detached[index]));
            m_detached.erase(m_detached.begin() + static_cast<std::ptrdiff_t>(index));
        } catch (const LogicException&) {
            ASSERT_NE(m_detached[index], nullptr);
        }
    }

    void Move(DOMElement& element, DOMElement& parent)
    {
        if (!IsListedByItsParent(element))
            return;
        if (&element == &parent || parent.IsChildOf(element)) {
            EXPECT_THROW(element.Move(parent, nullptr), LogicException);
        } else {
            element.Move(parent, nullptr);
        }
    }

    void Clear(DOMElement& element)
    {
        if (!element.GetDOMManager() || Below(4) != 0)
            return;
        switch (Below(4)) {
        case 0: ClearErrorsAndExpectSubtreeCleared(*element.GetDOMManager(), element); break;
        case 1: element.ClearWarnings(); break;
        case 2: DOMTestAccess::Adopt(m_documents[Below(2)], element, nullptr); break;
        default:
            if (Below(4) == 0)
                DOMTestAccess::MoveAll(m_documents[0], m_documents[1]);
        }
    }

    void Copy(DOMElement& element)
    {
        if (All().size() < 60)
            m_detached.push_back(std::make_unique<DOMElement>(element));
        else
            element = *std::make_unique<DOMElement>("e");
    }

    std::mt19937 m_random;
    std::array<DOM, 2> m_documents;
    DOMElement m_free{"free"};
    std::vector<std::unique_ptr<DOMElement>> m_detached;
};

}  // namespace

TEST(DiagnosticsIndexTest, AgreesWithClimbingOnRandomTrees)
{
    for (unsigned seed = 0; seed < 150 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomDocuments documents(seed);
        for (int step = 0; step < 200 && !testing::Test::HasFailure(); ++step) {
            documents.Step();
            documents.Check();
        }
    }
}

// Compares only after every tenth change, so that several changes update the index between two queries.
TEST(DiagnosticsIndexTest, AgreesWithClimbingAfterManyChanges)
{
    for (unsigned seed = 1000; seed < 1200 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomDocuments documents(seed);
        for (int step = 0; step < 300; ++step) {
            documents.Step();
            if (step % 10 == 9)
                documents.Check();
        }
    }
}

TEST(DiagnosticsIndexTest, RemovedChildStillCountsForItsOldParent)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    AddError(parent.AddNewChild("a", nullptr), "a");
    EXPECT_TRUE(parent.HasErrors());
    std::unique_ptr<DOMElement> removed = parent.RemoveChild("a");
    EXPECT_TRUE(parent.HasErrors());
    EXPECT_TRUE(ErrorsOf(parent).empty());
    removed.reset();
    EXPECT_FALSE(parent.HasErrors());
}

TEST(DiagnosticsIndexTest, MoveTransfersRecordsToTheNewAncestors)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    DOMElement& child = a.AddNewChild("c", nullptr);
    AddError(child, "c");
    EXPECT_TRUE(a.HasErrors());
    EXPECT_FALSE(b.HasErrors());
    child.Move(b, nullptr);
    EXPECT_FALSE(a.HasErrors());
    EXPECT_TRUE(b.HasErrors());
}

// If each query climbed from every error, the test would take thousands of millions of steps.
TEST(DiagnosticsIndexTest, QueriesOfEveryElementOfADeepTreeAreFast)
{
    constexpr int Levels = 100000;
    DOM document;
    std::vector<DOMElement*> chain;
    DOMElement* low = &document.GetRoot();
    for (int i = 0; i < Levels; ++i) {
        low = &low->AddNewChild("level", nullptr);
        chain.push_back(low);
        AddError(low->AddNewChild("leaf", nullptr), "e");
    }
    std::size_t withErrors = 0;
    for (const DOMElement* element : chain)
        withErrors += element->HasErrors() && !element->HasCancelErrors() && !element->HasWarnings();
    EXPECT_EQ(withErrors, chain.size());
}

// Each change invalidates the answer of the query before. The query of the whole document must not climb from every
// record.
TEST(DiagnosticsIndexTest, DocumentQueriesBetweenDeepChangesAreFast)
{
    constexpr int Levels = 100000;
    DOM document;
    DOMElement* low = &document.GetRoot();
    for (int i = 0; i < Levels; ++i)
        low = &low->AddNewChild("level", nullptr);
    for (int i = 0; i < Levels; ++i) {
        AddError(*low, "e");
        low->Warning("w", Info(1));
        ASSERT_TRUE(document.HasErrors() && document.HasWarnings());
        low->ClearErrors();
        low->ClearWarnings();
        ASSERT_FALSE(document.HasErrors() || document.HasWarnings());
    }
}

TEST(DiagnosticsIndexTest, QueriesBetweenNewRecordsAreFast)
{
    constexpr int Levels = 100000;
    DOM document;
    DOMElement* low = &document.GetRoot().AddNewChild("top", nullptr);
    const DOMElement& top = *low;
    for (int i = 0; i < Levels; ++i) {
        low = &low->AddNewChild("level", nullptr);
        AddError(*low, "e");
        ASSERT_TRUE(low->HasErrors());
    }
    EXPECT_TRUE(top.HasErrors());
    EXPECT_FALSE(top.HasWarnings());
}

namespace {

constexpr int ElementCount = 20000;

struct ShapeRow {
    const char* name;
    // Adds an element to the tree and returns it; `last` is the previously added element.
    DOMElement& (*add)(DOMElement& top, DOMElement& last);
};

const ShapeRow ShapeRows[] = {
    {"Flat", [](DOMElement& top, DOMElement&) -> DOMElement& { return top.AddNewChild("item", nullptr); }},
    {"Deep", [](DOMElement&, DOMElement& last) -> DOMElement& { return last.AddNewChild("level", nullptr); }},
};

// If every query rebuilt the index, it would visit ElementCount * ElementCount elements, which takes a minute.
class DiagnosticsIndexCostTest : public testing::TestWithParam<ShapeRow> {
protected:
    DiagnosticsIndexCostTest()
    {
        DOMElement* last = &top;
        for (int i = 0; i < ElementCount; ++i) {
            last = &GetParam().add(top, *last);
            elements.push_back(last);
            AddError(*last, "e");
        }
    }

    const testsupport::CpuTimeLimit limit{15};
    DOM document;
    DOMElement& top = document.GetRoot().AddNewChild("top", nullptr);
    std::vector<DOMElement*> elements;
};

}  // namespace

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenClearsWithoutEffectAreFast)
{
    DOMElement& empty = document.GetRoot().AddNewChild("empty", nullptr);
    empty.AddNewChild("child", nullptr);
    for (const DOMElement* element : elements) {
        ASSERT_TRUE(element->HasErrors());
        empty.ClearErrors();
        elements.front()->ClearWarnings();
    }
}

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenClearsAndReportsAreFast)
{
    for (DOMElement* element : elements) {
        element->ClearErrors();
        ASSERT_FALSE(element->HasErrors());
        AddError(*element, "again");
        ASSERT_TRUE(element->HasErrors());
        ASSERT_TRUE(top.HasUnreportedErrors());
        ASSERT_FALSE(document.HasCancelErrors());
    }
}

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenClearsOfAllErrorsAreFast)
{
    for (DOMElement* element : elements) {
        top.ClearErrors();
        ASSERT_FALSE(top.HasErrors());
        AddError(*element, "again");
        ASSERT_TRUE(top.HasErrors());
        document.ClearErrors();
        element->Error("cancelled", Info(1), true, true);
        ASSERT_TRUE(top.HasCancelErrors());
    }
}

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenDestroyedCopiesAreFast)
{
    DOMElement& item = document.GetRoot().AddNewChild("item", nullptr);
    AddError(item, "e");
    for (const DOMElement* element : elements) {
        const DOMElement copy(item);
        ASSERT_TRUE(copy.HasErrors() && element->HasErrors());
    }
}

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenRemovalsAndReinsertionsAreFast)
{
    DOMElement& list = document.GetRoot().AddNewChild("list", nullptr);
    AddError(list.AddNewChild("item", nullptr), "e");
    for (const DOMElement* element : elements) {
        std::unique_ptr<DOMElement> removed = list.RemoveChild("item");
        ASSERT_TRUE(list.HasErrors() && element->HasErrors());
        list.AppendChild(std::move(removed));
        ASSERT_TRUE(list.HasErrors() && element->HasErrors());
    }
}

TEST_P(DiagnosticsIndexCostTest, QueriesBetweenNewElementsAreFast)
{
    DOMElement* last = elements.back();
    for (int i = 0; i < ElementCount; ++i) {
        last = &GetParam().add(top, *last);
        ASSERT_FALSE(last->HasErrors());
        AddError(*last, "e");
        ASSERT_TRUE(last->HasErrors());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, DiagnosticsIndexCostTest, testing::ValuesIn(ShapeRows), [](const auto& row) { return row.param.name; });
