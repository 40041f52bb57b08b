// The diagnostics operations of DOM.
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

struct KindRow {
    const char* name;
    bool reported;
    bool cancel;
    bool hasUnreported;
    bool hasCancel;
    bool hasOnlyCancel;
};

}  // namespace

TEST(DOMDiagnosticsTest, ANewDocumentHasNoDiagnostics)
{
    const DOM document;
    EXPECT_FALSE(document.HasErrors());
    EXPECT_FALSE(document.HasUnreportedErrors());
    EXPECT_FALSE(document.HasCancelErrors());
    EXPECT_TRUE(document.HasOnlyCancelErrors());
    EXPECT_FALSE(document.HasWarnings());
    EXPECT_TRUE(document.GetErrors().empty());
    EXPECT_TRUE(document.GetWarnings().empty());
    EXPECT_EQ(document.GetConcatenatedErrors(), VString());
    EXPECT_EQ(document.GetConcatenatedWarnings(), VString());
}

class DOMErrorKindTest : public testing::TestWithParam<KindRow> {};

TEST_P(DOMErrorKindTest, IsReportedForTheElementAndItsAncestors)
{
    const KindRow& row = GetParam();
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    DOMElement& sibling = document.GetRoot().AddNewChild("s", nullptr);
    DOMElement& child = parent.AddNewChild("c", nullptr);
    child.Error("m", Info(1), row.reported, row.cancel);
    for (const DOMElement* element : {&child, &parent, &document.GetRoot()}) {
        EXPECT_TRUE(element->HasErrors());
        EXPECT_EQ(element->HasUnreportedErrors(), row.hasUnreported);
        EXPECT_EQ(element->HasCancelErrors(), row.hasCancel);
        EXPECT_EQ(element->HasOnlyCancelErrors(), row.hasOnlyCancel);
    }
    EXPECT_FALSE(sibling.HasUnreportedErrors());
    EXPECT_FALSE(sibling.HasCancelErrors());
    EXPECT_TRUE(sibling.HasOnlyCancelErrors());
}

const KindRow KindRows[] = {
    {"New", false, false, true, false, false},
    {"Reported", true, false, false, false, false},
    {"NewCancel", false, true, true, true, true},
    {"ReportedCancel", true, true, false, true, true},
};

INSTANTIATE_TEST_SUITE_P(
    Kinds, DOMErrorKindTest, testing::ValuesIn(KindRows), [](const auto& row) { return row.param.name; });

TEST(DOMDiagnosticsTest, HasOnlyCancelErrorsIsFalseWithAnOrdinaryError)
{
    DOM document;
    document.GetRoot().Error("cancel", Info(1), true, true);
    document.GetRoot().Error("fault", Info(1), true, false);
    EXPECT_TRUE(document.HasCancelErrors());
    EXPECT_FALSE(document.HasOnlyCancelErrors());
    EXPECT_FALSE(document.HasUnreportedErrors());
}

TEST(DOMDiagnosticsTest, ConcatenatedMessagesAreInDocumentOrder)
{
    DOM document;
    DOMElement& first = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& second = first.AddNewChild("b", nullptr);
    AddError(second, "b");
    AddError(first, "a");
    second.Warning("w", Info(1));
    EXPECT_EQ(document.GetConcatenatedErrors(), VString("a\nb"));
    EXPECT_EQ(document.GetConcatenatedWarnings(), VString("w"));
}

TEST(DOMDiagnosticsTest, MetadataIsInDocumentOrder)
{
    DOM document;
    DOMElement& child = document.GetRoot().AddNewChild("a", nullptr);
    child.Error("a", Info(2), false, false);
    document.GetRoot().Error("root", Info(1), false, false);
    child.Warning("w", Info(3));
    EXPECT_EQ(document.GetMetadataForErrors(), (std::list<VError::ErrorInfo>{Info(1), Info(2)}));
    EXPECT_EQ(document.GetMetadataForWarnings(), (std::list<VError::ErrorInfo>{Info(3)}));
}

TEST(DOMDiagnosticsTest, ClearingRemovesAllRecordsOfOneKind)
{
    DOM document;
    DOMElement& child = document.GetRoot().AddNewChild("a", nullptr);
    const DOMElement outside(child);
    AddError(child, "e");
    AddError(outside, "o");
    child.Warning("w", Info(1));
    document.ClearErrors();
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 0u);
    EXPECT_TRUE(document.HasWarnings());
    document.ClearWarnings();
    EXPECT_FALSE(document.HasWarnings());
    EXPECT_FALSE(DOMTestAccess::RefersToElements(document));
}

TEST(DOMDiagnosticsTest, DestroyingAChildErasesOnlyTheRecordsOfItsSubtree)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    AddError(a, "a");
    AddError(a.AddNewChild("a1", nullptr), "a1");
    AddError(b, "b");
    document.GetRoot().RemoveChild(a).reset();
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"b"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 1u);
}

TEST(DOMDiagnosticsTest, DestroyingACopyErasesOnlyItsOwnRecords)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    AddError(a, "a");
    {
        const DOMElement copy(a);
    }
    {
        const DOMElement copy(document.GetRoot());
    }
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"a"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 1u);
}

TEST(DOMDiagnosticsTest, DestroyingTheRootErasesAllRecords)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    const DOMElement copy(a);
    AddError(a, "a");
    AddError(copy, "copy");
    copy.Warning("w", Info(1));
    DOMTestAccess::ReleaseRoot(document).reset();
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 0u);
    EXPECT_EQ(DOMTestAccess::WarningEntries(document), 0u);
}

TEST(DOMDiagnosticsTest, RecordsMoveWithTheirElements)
{
    DOM from;
    DOM to;
    DOMElement& moved = from.GetRoot().AddNewChild("p", nullptr).AddNewChild("a", nullptr);
    AddError(moved, "a");
    AddError(moved.AddNewChild("a1", nullptr), "a1");
    moved.Warning("w", Info(1));
    AddError(*from.GetDocumentRoot(), "stays");
    AddError(from.GetRoot(), "root");
    moved.Move(to.GetRoot(), nullptr);
    EXPECT_EQ(Strings(to.GetErrors()), (Texts{"a", "a1"}));
    EXPECT_EQ(Strings(to.GetWarnings()), (Texts{"w"}));
    EXPECT_EQ(Strings(from.GetErrors()), (Texts{"root", "stays"}));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(from), 2u);
}

TEST(DOMDiagnosticsTest, MovingAChildOfTheRootMovesTheRecordsOfTheRoot)
{
    DOM from;
    DOM to;
    from.GetRoot().AddNewChild("a", nullptr);
    AddError(from.GetRoot(), "root");
    from.GetRoot().Warning("w", Info(1));
    to.GetRoot().AddNewChild("x", nullptr).AppendChild(from.GetRoot().RemoveChild("a"));
    EXPECT_EQ(ErrorsOf(to.GetRoot()), (Texts{"root"}));
    EXPECT_FALSE(to.GetDocumentRoot()->HasErrors());
    EXPECT_EQ(Strings(to.GetWarnings()), (Texts{"w"}));
    EXPECT_FALSE(DOMTestAccess::RefersToElements(from));
}

TEST(DOMDiagnosticsTest, RecordsOfTheRootAreDroppedIfTheTargetRootHasSome)
{
    DOM from;
    DOM to;
    from.GetRoot().AddNewChild("a", nullptr);
    AddError(from.GetRoot(), "from");
    AddError(to.GetRoot(), "to");
    to.GetRoot().AdoptChildren(from.GetRoot(), nullptr);
    EXPECT_EQ(Strings(to.GetErrors()), (Texts{"to"}));
    EXPECT_FALSE(from.HasErrors());
}

TEST(DOMDiagnosticsTest, RecordsStayInTheDocumentWhenAnElementLeavesIt)
{
    DOM document;
    AddError(document.GetRoot().AddNewChild("a", nullptr), "a");
    DOMElement free("f");
    DOMElement& moved = free.AppendChild(document.GetRoot().RemoveChild("a"));
    EXPECT_TRUE(document.HasErrors());
    EXPECT_TRUE(document.GetErrors().empty());
    moved.Move(document.GetRoot(), nullptr);
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"a"}));
}

TEST(DOMDiagnosticsTest, RecordsLeftInTheDocumentAreErasedWithTheElement)
{
    DOM document;
    AddError(document.GetRoot().AddNewChild("a", nullptr).AddNewChild("b", nullptr), "b");
    {
        DOMElement free("f");
        free.AppendChild(document.GetRoot().RemoveChild("a"));
    }
    EXPECT_FALSE(document.HasErrors());
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 0u);
}

TEST(DOMDiagnosticsTest, DocumentMayDieBeforeElementsThatItHasRecordsFor)
{
    DOMElement free("f");
    {
        DOM document;
        AddError(document.GetRoot().AddNewChild("a", nullptr), "a");
        free.AppendChild(document.GetRoot().RemoveChild("a"));
    }
    EXPECT_EQ(free.GetChild("a")->GetDOMManager(), nullptr);
}

TEST(DOMDiagnosticsTest, CopyDoesNotReplaceRecordsOfTheTarget)
{
    DOM from;
    DOM to;
    DOMElement& source = from.GetRoot().AddNewChild("s", nullptr);
    DOMElement& target = to.GetRoot().AddNewChild("t", nullptr);
    AddError(source, "source");
    source.Warning("w", Info(1));
    AddError(target, "target");
    DOMTestAccess::Copy(to, source, &target);
    EXPECT_EQ(ErrorsOf(target), (Texts{"target"}));
    EXPECT_EQ(WarningsOf(target), (Texts{"w"}));
    EXPECT_EQ(ErrorsOf(source), (Texts{"source"}));
}

TEST(DOMDiagnosticsTest, CopyWithoutATargetStoresRecordsForTheSource)
{
    DOM to;
    {
        DOM from;
        DOMElement& source = from.GetRoot().AddNewChild("s", nullptr);
        AddError(source, "source");
        DOMTestAccess::Copy(to, source, nullptr);
        EXPECT_TRUE(to.HasErrors());
        std::list<VString> messages;
        DOMTestAccess::Collect(to, source, messages);
        EXPECT_EQ(Strings(messages), (Texts{"source"}));
    }
    EXPECT_FALSE(to.HasErrors());
}

TEST(DOMDiagnosticsTest, CopyFromAnElementWithoutDocumentDoesNothing)
{
    DOM document;
    const DOMElement source("s");
    DOMTestAccess::Copy(document, source, &document.GetRoot());
    DOMTestAccess::Adopt(document, source, &document.GetRoot());
    EXPECT_FALSE(document.HasErrors());
}

TEST(DOMDiagnosticsTest, AdoptDropsErrorsWhenTheTargetHasErrors)
{
    DOM from;
    DOM to;
    DOMElement& source = from.GetRoot().AddNewChild("s", nullptr);
    DOMElement& target = to.GetRoot().AddNewChild("t", nullptr);
    AddError(source, "source");
    source.Warning("w", Info(1));
    AddError(target, "target");
    DOMTestAccess::Adopt(to, source, &target);
    EXPECT_EQ(ErrorsOf(target), (Texts{"target"}));
    EXPECT_EQ(WarningsOf(target), (Texts{"w"}));
    EXPECT_FALSE(DOMTestAccess::RefersToElements(from));
}

TEST(DOMDiagnosticsTest, AdoptWithinADocumentMovesRecordsToTheTarget)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    AddError(a, "a");
    DOMTestAccess::Adopt(document, a, &b);
    EXPECT_FALSE(a.HasErrors());
    EXPECT_EQ(ErrorsOf(b), (Texts{"a"}));
    DOMTestAccess::Adopt(document, b, &b);
    EXPECT_FALSE(document.HasErrors());
}

TEST(DOMDiagnosticsTest, MoveAllReplacesTheRecordsOfTheTarget)
{
    DOM from;
    DOM to;
    AddError(from.GetRoot().AddNewChild("a", nullptr), "from");
    from.GetRoot().Warning("w", Info(1));
    AddError(to.GetRoot(), "to");
    DOMTestAccess::MoveAll(from, to);
    EXPECT_FALSE(DOMTestAccess::RefersToElements(from));
    EXPECT_EQ(DOMTestAccess::ErrorEntries(to), 1u);
    EXPECT_TRUE(to.HasErrors());
    EXPECT_TRUE(to.HasWarnings());
    EXPECT_TRUE(ErrorsOf(to.GetRoot()).empty());
    from.GetRoot().RemoveChildren().clear();
    EXPECT_FALSE(to.HasErrors());
}

TEST(DOMDiagnosticsTest, MoveAllToItselfErasesAllRecords)
{
    DOM document;
    AddError(document.GetRoot(), "e");
    document.GetRoot().Warning("w", Info(1));
    DOMTestAccess::MoveAll(document, document);
    EXPECT_FALSE(DOMTestAccess::RefersToElements(document));
}

TEST(DOMDiagnosticsTest, EitherDocumentMayDieFirstAfterMoveAll)
{
    auto from = std::make_unique<DOM>();
    auto to = std::make_unique<DOM>();
    AddError(from->GetRoot().AddNewChild("a", nullptr), "a");
    DOMTestAccess::MoveAll(*from, *to);
    to.reset();
    from.reset();
    from = std::make_unique<DOM>();
    to = std::make_unique<DOM>();
    AddError(from->GetRoot(), "a");
    DOMTestAccess::MoveAll(*from, *to);
    from.reset();
    EXPECT_FALSE(to->HasErrors());
}
