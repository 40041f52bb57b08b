// Each test makes every allocation of an operation fail in turn. The documents must keep the promised state, and
// nothing may leak. The address sanitizer detects leaks.
#include <cstdint>
#include <new>
#include <stdexcept>

#include "tests/common/TestMemory.h"
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

// Calls `run` on a new object from `make` while the first allocation fails, then on another object while the second one
// fails, and so on until `run` succeeds. Calls `check` with the object after each failure. Returns the number of
// failures.
template <typename Make, typename Run, typename Check>
int FailEachAllocation(Make make, Run run, Check check)
{
    for (int failures = 0;; ++failures) {
        auto subject = make();
        AllocationFaults::Begin(AllocationFaults::Kind::New, failures);
        bool failed = false;
        try {
            run(*subject);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        AllocationFaults::End();
        if (!failed)
            return failures;
        check(*subject);
    }
}

// Two documents with equal trees. The element top has the children a and c, and a has the child b.
// There are errors on a and b, and a warning on b. A parse diagnostic links to a, and another one to b.
struct Pair {
    Pair()
    {
        for (DOM* document : {&one, &two}) {
            DOMElement& top = document->GetRoot().AddNewChild("top", nullptr);
            top.SetText("text");
            top.SetAttributes(AttributeMap{{"m", "1"}, {"n", "2"}});
            DOMElement& a = top.AddNewChild("a", nullptr);
            AddError(a, "a");
            DOMElement& b = a.AddNewChild("b", nullptr);
            AddError(b, "b");
            b.Warning("w", Info(1));
            top.AddNewChild("c", nullptr).SetAttribute("x", "y");
            std::vector<ParseDiagnostic> diagnostics(2);
            diagnostics[0].element = 2;
            diagnostics[1].element = 3;
            document->SetParseDiagnostics(diagnostics);
        }
    }

    DOM one;
    DOM two;
};

std::unique_ptr<Pair> MakePair()
{
    return std::make_unique<Pair>();
}

void ExpectUnchanged(Pair& pair)
{
    const Pair fresh;
    EXPECT_EQ(pair.one, fresh.one);
    EXPECT_EQ(pair.two, fresh.two);
    for (const DOM* document : {&pair.one, &pair.two}) {
        EXPECT_EQ(Strings(document->GetErrors()), (Texts{"a", "b"}));
        EXPECT_EQ(Strings(document->GetWarnings()), (Texts{"w"}));
        EXPECT_EQ(DOMTestAccess::ErrorEntries(*document), 2u);
        EXPECT_EQ(document->GetElement("b")->GetDOMManager(), document);
        EXPECT_TRUE(document->GetElement("a")->HasErrors());
        ASSERT_EQ(document->GetParseDiagnostics().size(), 2u);
        EXPECT_EQ(document->GetParseDiagnostics()[0].element, document->GetElement("a"));
        EXPECT_EQ(document->GetParseDiagnostics()[1].element, document->GetElement("b"));
    }
}

}  // namespace

TEST(AllocationFaultTest, FailedCopyChangesNothing)
{
    const auto run = [](Pair& pair) { DOMElement copy(*pair.one.GetDocumentRoot()); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 8);
}

TEST(AllocationFaultTest, FailedAssignmentChangesNothing)
{
    const auto make = [] {
        auto pair = MakePair();
        pair->two.GetElement("c")->AddNewChild("old", nullptr);
        return pair;
    };
    const auto run = [](Pair& pair) { *pair.two.GetElement("c") = *pair.one.GetDocumentRoot(); };
    const auto check = [](Pair& pair) {
        ASSERT_NE(pair.two.GetElement("old"), nullptr);
        pair.two.GetElement("c")->RemoveChildren().clear();
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEachAllocation(make, run, check), 8);
}

// The source has errors and warnings. The target has none and must not get any.
TEST(AllocationFaultTest, FailedAssignmentCopiesNoRecords)
{
    const auto run = [](Pair& pair) { *pair.two.GetElement("c") = *pair.one.GetElement("b"); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 4);
}

TEST(AllocationFaultTest, FailedMoveOfAllRecordsChangesNothing)
{
    const auto run = [](Pair& pair) { DOMTestAccess::MoveAll(pair.one, pair.two); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 4);
}

TEST(AllocationFaultTest, FailedAdoptionOfRecordsChangesNothing)
{
    const auto run = [](Pair& pair) { DOMTestAccess::Adopt(pair.two, *pair.one.GetElement("b"), nullptr); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 1);
}

TEST(AllocationFaultTest, HasErrorsIsRightAfterAFailedClear)
{
    const auto run = [](Pair& pair) { pair.one.GetElement("a")->ClearErrors(); };
    const auto check = [](Pair& pair) {
        EXPECT_EQ(pair.one.GetDocumentRoot()->HasErrors(), !pair.one.GetErrors().empty());
        EXPECT_EQ(Strings(pair.one.GetWarnings()), (Texts{"w"}));
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 0);
}

TEST(AllocationFaultTest, FailedInsertionChangesNothing)
{
    const auto run = [](Pair& pair) { pair.one.GetElement("c")->AddNewChild("new", nullptr); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 1);
}

TEST(AllocationFaultTest, FailedMoveBetweenDocumentsChangesNothing)
{
    const auto run = [](Pair& pair) { pair.one.GetElement("a")->Move(*pair.two.GetElement("c"), nullptr); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 2);
}

// The number of records makes the maps of the other document grow.
TEST(AllocationFaultTest, FailedMoveOfManyRecordsChangesNothing)
{
    const auto make = [] {
        auto pair = MakePair();
        DOMElement& many = pair->one.GetRoot().AddNewChild("many", nullptr);
        for (int i = 0; i < 100; ++i)
            AddError(many.AddNewChild("one", nullptr), "e");
        return pair;
    };
    const auto run = [](Pair& pair) { pair.one.GetElement("many")->Move(*pair.two.GetElement("c"), nullptr); };
    const auto check = [](Pair& pair) {
        ASSERT_NE(pair.one.GetElement("many"), nullptr);
        EXPECT_EQ(ErrorsOf(*pair.one.GetElement("many")).size(), 100u);
        pair.one.GetRoot().RemoveChild("many").reset();
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEachAllocation(make, run, check), 3);
}

TEST(AllocationFaultTest, FailedMoveToATreeWithoutDocumentChangesNothing)
{
    DOMElement free("free");
    const auto run = [&free](Pair& pair) { pair.one.GetElement("a")->Move(free, nullptr); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 2);
}

TEST(AllocationFaultTest, FailedAdoptionOfChildrenChangesNothing)
{
    const auto run = [](Pair& pair) { pair.two.GetElement("c")->AdoptChildren(*pair.one.GetDocumentRoot(), nullptr); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 2);
}

TEST(AllocationFaultTest, FailedRemovalChangesNothing)
{
    const auto removeOne = [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChild("a").reset(); };
    EXPECT_GT(FailEachAllocation(MakePair, removeOne, ExpectUnchanged), 1);
    const auto removeAll = [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChildren().clear(); };
    EXPECT_GT(FailEachAllocation(MakePair, removeAll, ExpectUnchanged), 3);
}

// If the failed removal marked the children as removed, an element could become its own descendant.
TEST(AllocationFaultTest, FailedRemovalKeepsTheChildrenInTheTree)
{
    const auto run = [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChildren().clear(); };
    const auto check = [](Pair& pair) {
        EXPECT_THROW(pair.one.GetElement("b")->AdoptChildren(*pair.one.GetDocumentRoot(), nullptr), LogicException);
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 3);
}

TEST(AllocationFaultTest, FailedInsertionLeavesTheChildWithTheCaller)
{
    std::unique_ptr<DOMElement> child = NewElement("new");
    const auto run = [&child](Pair& pair) { pair.one.GetElement("b")->AppendChild(std::move(child)); };
    const auto check = [&child](Pair& pair) {
        EXPECT_NE(child, nullptr);
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 0);
}

TEST(AllocationFaultTest, FailedReportLeavesNoEmptyEntry)
{
    const auto run = [](Pair& pair) { AddError(*pair.one.GetElement("c"), "c"); };
    const auto check = [](Pair& pair) {
        ExpectUnchanged(pair);
        EXPECT_FALSE(pair.one.GetElement("c")->HasErrors());
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 1);
}

TEST(AllocationFaultTest, FailedHasErrorsChangesNothing)
{
    const auto run = [](Pair& pair) { pair.one.GetElement("a")->HasErrors(); };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 1);
}

// The failure may leave the index half built, and the move then updates that index.
TEST(AllocationFaultTest, ErrorQueriesAreRightAfterAFailedQueryAndAMove)
{
    const auto run = [](Pair& pair) { pair.one.GetElement("a")->HasCancelErrors(); };
    const auto check = [](Pair& pair) {
        DOMElement& moved = *pair.one.GetElement("a");
        DOMElement& target = *pair.one.GetElement("c");
        moved.Move(target, nullptr);
        EXPECT_TRUE(target.HasErrors() && target.HasUnreportedErrors() && target.HasWarnings());
        EXPECT_FALSE(target.HasCancelErrors() || target.HasOnlyCancelErrors());
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 8);
}

TEST(AllocationFaultTest, FailedDeepCopyLeavesBothTreesUnchanged)
{
    const auto run = [](Pair& pair) { pair.two.DeepCopy(pair.one); };
    const auto check = [](Pair& pair) {
        EXPECT_EQ(Strings(pair.one.GetErrors()), (Texts{"a", "b"}));
        EXPECT_EQ(pair.one, pair.two);
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 8);
}

TEST(AllocationFaultTest, FailedSettingOfParseDiagnosticsChangesNothing)
{
    const auto run = [](Pair& pair) {
        std::vector<ParseDiagnostic> diagnostics(3);
        diagnostics[2].element = 4;
        pair.one.SetParseDiagnostics(std::move(diagnostics));
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, ExpectUnchanged), 3);
}

TEST(AllocationFaultTest, FailedDeepCopyLeavesNoLinksToOldElements)
{
    const auto run = [](Pair& pair) { pair.two.DeepCopy(pair.one); };
    const auto check = [](Pair& pair) {
        for (const DOMParseDiagnostic& each : pair.two.GetParseDiagnostics())
            EXPECT_EQ(each.element, pair.two.GetElement(each.diagnostic.element == 2 ? "a" : "b"));
    };
    EXPECT_GT(FailEachAllocation(MakePair, run, check), 12);
}

TEST(AllocationFaultTest, FailedChangeLeavesAttributesUnchanged)
{
    const AttributeMap other{{"x", "1"}, {"y", "2"}};
    const std::function<void(AttributeMap&)> changes[] = {
        [](AttributeMap& map) { map.insert_or_assign("c", "3"); },
        [&other](AttributeMap& map) { map = other; },
        [](AttributeMap& map) { map.reserve(40); },
        [](AttributeMap& map) { const AttributeMap copy(map); },
    };
    const auto make = [] { return std::make_unique<AttributeMap>(AttributeMap{{"a", "1"}, {"b", "2"}}); };
    const auto check = [](AttributeMap& map) { EXPECT_EQ(map, (AttributeMap{{"a", "1"}, {"b", "2"}})); };
    for (const auto& change : changes)
        EXPECT_EQ(FailEachAllocation(make, change, check), 1);
    const auto construct = [](AttributeMap&) { const AttributeMap list{{"a", "1"}, {"b", "2"}}; };
    EXPECT_EQ(FailEachAllocation(make, construct, check), 1);
}

// Has a larger alignment than the global operator new guarantees.
class AlignedElement : public DOMElement {
public:
    using DOMElement::DOMElement;

    alignas(64) char mark = 'm';
};

TEST(AllocationFaultTest, NothrowNewReturnsAnElement)
{
    const std::unique_ptr<DOMElement> element(new (std::nothrow) DOMElement("a"));
    EXPECT_EQ(element->GetName(), VString("a"));
    const std::unique_ptr<AlignedElement> aligned(new (std::nothrow) AlignedElement("b"));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned.get()) % 64, 0u);
}

TEST(AllocationFaultTest, NothrowNewReturnsNullWithoutMemory)
{
    const VString name("a");
    AllocationFaults::Begin(AllocationFaults::Kind::New, 0);
    DOMElement* const element = new (std::nothrow) DOMElement(name);
    AllocationFaults::End();
    EXPECT_EQ(element, nullptr);
}

// The constructor throws after the memory of the element was allocated.
class ThrowingElement : public DOMElement {
public:
    ThrowingElement() : DOMElement("a") { throw std::runtime_error("failed"); }
};

TEST(AllocationFaultTest, NothrowNewFreesMemoryWhenTheConstructorThrows)
{
    EXPECT_THROW(static_cast<void>(new (std::nothrow) ThrowingElement()), std::runtime_error);
}
