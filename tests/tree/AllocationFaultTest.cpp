// Every allocation of an operation fails in turn: nothing leaks (the address sanitizer tells),
// and what promises to stay unchanged does.
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "tests/tree/TreeTestSupport.h"

namespace {

// Allocations of this thread until one fails; negative: none does.
thread_local long allocationsLeft = -1;

void* Allocate(std::size_t size)
{
    if (allocationsLeft == 0)
        throw std::bad_alloc();
    if (allocationsLeft > 0)
        --allocationsLeft;
    if (void* memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

using namespace treetest;

namespace {

// Runs `run` on what `make` makes, with the first allocation failing, then the second, until
// none fails; after each failure `check` looks at what is left. Returns how many failed.
template <typename Make, typename Run, typename Check>
int FailEach(Make make, Run run, Check check)
{
    for (int failures = 0;; ++failures) {
        auto subject = make();
        allocationsLeft = failures;
        bool failed = false;
        try {
            run(*subject);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        allocationsLeft = -1;
        if (!failed)
            return failures;
        check(*subject);
    }
}

// Two documents with the same tree: top -> a(error) -> b(error, warning) ; c
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
    }
}

}  // namespace

TEST(AllocationFaultTest, ACopyThatFailsLeavesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { DOMElement copy(*pair.one.GetDocumentRoot()); }, ExpectUnchanged),
        8);
}

TEST(AllocationFaultTest, AnAssignmentThatFailsChangesNothing)
{
    const auto make = [] {
        auto pair = MakePair();
        pair->two.GetElement("c")->AddNewChild("old", nullptr);
        return pair;
    };
    const auto check = [](Pair& pair) {
        ASSERT_NE(pair.two.GetElement("old"), nullptr);
        pair.two.GetElement("c")->RemoveChildren().clear();
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEach(
                  make, [](Pair& pair) { *pair.two.GetElement("c") = *pair.one.GetDocumentRoot(); }, check),
        8);
}

// The source has errors and warnings, the target none: it gets neither.
TEST(AllocationFaultTest, AnAssignmentThatFailsCopiesNoRecords)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { *pair.two.GetElement("c") = *pair.one.GetElement("b"); }, ExpectUnchanged),
        4);
}

TEST(AllocationFaultTest, MovingAllRecordsThatFailsChangesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { DOMTestAccess::MoveAll(pair.one, pair.two); }, ExpectUnchanged),
        4);
}

TEST(AllocationFaultTest, AdoptingRecordsThatFailsChangesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair,
                  [](Pair& pair) { DOMTestAccess::Adopt(pair.two, *pair.one.GetElement("b"), nullptr); },
                  ExpectUnchanged),
        1);
}

TEST(AllocationFaultTest, ClearingThatFailsLeavesTheTestsRight)
{
    const auto check = [](Pair& pair) {
        EXPECT_EQ(pair.one.GetDocumentRoot()->HasErrors(), !pair.one.GetErrors().empty());
        EXPECT_EQ(Strings(pair.one.GetWarnings()), (Texts{"w"}));
    };
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetElement("a")->ClearErrors(); }, check),
        0);
}

TEST(AllocationFaultTest, AnInsertionThatFailsChangesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetElement("c")->AddNewChild("new", nullptr); }, ExpectUnchanged),
        1);
}

TEST(AllocationFaultTest, AMoveBetweenDocumentsThatFailsChangesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair,
                  [](Pair& pair) { pair.one.GetElement("a")->Move(*pair.two.GetElement("c"), nullptr); },
                  ExpectUnchanged),
        2);
}

// So many that the other document's maps must grow.
TEST(AllocationFaultTest, AMoveOfManyRecordsThatFailsChangesNothing)
{
    const auto make = [] {
        auto pair = MakePair();
        DOMElement& many = pair->one.GetRoot().AddNewChild("many", nullptr);
        for (int i = 0; i < 100; ++i)
            AddError(many.AddNewChild("one", nullptr), "e");
        return pair;
    };
    const auto check = [](Pair& pair) {
        ASSERT_NE(pair.one.GetElement("many"), nullptr);
        EXPECT_EQ(ErrorsOf(*pair.one.GetElement("many")).size(), 100u);
        pair.one.GetRoot().RemoveChild("many").reset();
        ExpectUnchanged(pair);
    };
    EXPECT_GT(
        FailEach(
            make, [](Pair& pair) { pair.one.GetElement("many")->Move(*pair.two.GetElement("c"), nullptr); }, check),
        3);
}

TEST(AllocationFaultTest, AMoveOutOfAllDocumentsThatFailsChangesNothing)
{
    DOMElement free("free");
    EXPECT_GT(FailEach(
                  MakePair, [&free](Pair& pair) { pair.one.GetElement("a")->Move(free, nullptr); }, ExpectUnchanged),
        2);
}

TEST(AllocationFaultTest, AdoptingChildrenThatFailsChangesNothing)
{
    EXPECT_GT(FailEach(
                  MakePair,
                  [](Pair& pair) { pair.two.GetElement("c")->AdoptChildren(*pair.one.GetDocumentRoot(), nullptr); },
                  ExpectUnchanged),
        2);
}

TEST(AllocationFaultTest, RemovalsThatFailChangeNothing)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChild("a").reset(); }, ExpectUnchanged),
        1);
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChildren().clear(); }, ExpectUnchanged),
        3);
}

// A child that counted as taken out could be put below itself.
TEST(AllocationFaultTest, ARemovalThatFailsLeavesTheChildrenInTheTree)
{
    const auto check = [](Pair& pair) {
        EXPECT_THROW(pair.one.GetElement("b")->AdoptChildren(*pair.one.GetDocumentRoot(), nullptr), LogicException);
        ExpectUnchanged(pair);
    };
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetDocumentRoot()->RemoveChildren().clear(); }, check),
        3);
}

TEST(AllocationFaultTest, ARefusedChildStaysWithTheCaller)
{
    std::unique_ptr<DOMElement> child = NewElement("new");
    EXPECT_GT(FailEach(
                  MakePair,
                  [&child](Pair& pair) { pair.one.GetElement("b")->AppendChild(std::move(child)); },
                  [&child](Pair& pair) {
                      EXPECT_NE(child, nullptr);
                      ExpectUnchanged(pair);
                  }),
        0);
}

TEST(AllocationFaultTest, ARecordThatFailsLeavesNoEmptyEntry)
{
    const auto run = [](Pair& pair) { AddError(*pair.one.GetElement("c"), "c"); };
    EXPECT_GT(FailEach(MakePair,
                  run,
                  [](Pair& pair) {
                      ExpectUnchanged(pair);
                      EXPECT_FALSE(pair.one.GetElement("c")->HasErrors());
                  }),
        1);
}

TEST(AllocationFaultTest, TestsForErrorsSurviveAFailure)
{
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetElement("a")->HasErrors(); }, ExpectUnchanged),
        1);
}

// The failure may leave the index half built, and the move builds on that.
TEST(AllocationFaultTest, TestsForErrorsAreRightAfterAFailureAndAMove)
{
    const auto check = [](Pair& pair) {
        DOMElement& moved = *pair.one.GetElement("a");
        DOMElement& target = *pair.one.GetElement("c");
        moved.Move(target, nullptr);
        EXPECT_TRUE(target.HasErrors() && target.HasUnreportedErrors() && target.HasWarnings());
        EXPECT_FALSE(target.HasCancelErrors() || target.HasOnlyCancelErrors());
    };
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.one.GetElement("a")->HasCancelErrors(); }, check),
        8);
}

TEST(AllocationFaultTest, ADeepCopyThatFailsLeavesTheSourceAlone)
{
    const auto check = [](Pair& pair) {
        EXPECT_EQ(Strings(pair.one.GetErrors()), (Texts{"a", "b"}));
        EXPECT_EQ(pair.one, pair.two);  // the tree that was there, which is equal
    };
    EXPECT_GT(FailEach(
                  MakePair, [](Pair& pair) { pair.two.DeepCopy(pair.one); }, check),
        8);
}

TEST(AllocationFaultTest, AttributesThatFailAreAsTheyWere)
{
    const auto make = [] { return std::make_unique<AttributeMap>(AttributeMap{{"a", "1"}, {"b", "2"}}); };
    const auto check = [](AttributeMap& map) { EXPECT_EQ(map, (AttributeMap{{"a", "1"}, {"b", "2"}})); };
    const AttributeMap other{{"x", "1"}, {"y", "2"}};
    EXPECT_EQ(FailEach(
                  make, [](AttributeMap& map) { map.insert_or_assign("c", "3"); }, check),
        1);
    EXPECT_EQ(FailEach(
                  make, [&other](AttributeMap& map) { map = other; }, check),
        1);
    EXPECT_EQ(FailEach(
                  make, [](AttributeMap& map) { map.reserve(40); }, check),
        1);
    EXPECT_EQ(FailEach(
                  make, [](AttributeMap& map) { const AttributeMap copy(map); }, check),
        1);
    EXPECT_EQ(FailEach(
                  make,
                  [](AttributeMap&) {
                      const AttributeMap list{{"a", "1"}, {"b", "2"}};
                  },
                  check),
        1);
}

// Aligned beyond what the global operator new gives.
class AlignedElement : public DOMElement {
public:
    using DOMElement::DOMElement;

    alignas(64) char mark = 'm';
};

TEST(AllocationFaultTest, NothrowNewGivesAnElement)
{
    const std::unique_ptr<DOMElement> element(new (std::nothrow) DOMElement("a"));
    EXPECT_EQ(element->GetName(), VString("a"));
    const std::unique_ptr<AlignedElement> aligned(new (std::nothrow) AlignedElement("b"));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned.get()) % 64, 0u);
}

TEST(AllocationFaultTest, NothrowNewGivesNullWhenThereIsNoMemory)
{
    const VString name("a");
    allocationsLeft = 0;
    DOMElement* const element = new (std::nothrow) DOMElement(name);
    allocationsLeft = -1;
    EXPECT_EQ(element, nullptr);
}

// Takes memory, and then fails.
class FailingElement : public DOMElement {
public:
    FailingElement() : DOMElement("a") { throw std::runtime_error("failed"); }
};

TEST(AllocationFaultTest, NothrowNewFreesTheMemoryOfAnElementThatFails)
{
    EXPECT_THROW(static_cast<void>(new (std::nothrow) FailingElement()), std::runtime_error);
}
