// The diagnostics operations of DOMElement. They forward to the document, and assert that the element has one.
#include "tests/tree/TreeTestSupport.h"

using namespace treetest;
using testsupport::ExpectLogicException;

namespace {

struct OperationRow {
    const char* operation;
    int line;
    std::uint32_t code;
    std::function<void(DOMElement&)> run;
};

std::list<VString> someTexts;
std::list<VError::ErrorInfo> someInfos;

}  // namespace

class DOMElementDiagnosticsOperationTest : public testing::TestWithParam<OperationRow> {};

TEST_P(DOMElementDiagnosticsOperationTest, AssertsWithoutADocument)
{
    const OperationRow& row = GetParam();
    DOMElement element("a");
    const char* const file = "vancorexml\\main\\parser\\DOMElement";
    const std::string text =
        std::string("DOMElement::") + row.operation + " can only be called on a DOMElement that is attached to a DOM";
    ExpectLogicException([&] { row.run(element); }, file, row.line, text.c_str(), row.code);
    DOM document;
    EXPECT_NO_THROW(row.run(document.GetRoot()));
}

const OperationRow OperationRows[] = {
    {"ClearErrors", 789, 0xBACFCB15, [](DOMElement& e) { e.ClearErrors(); }},
    {"Error", 801, 0xCA9B9C3D, [](DOMElement& e) { e.Error("m", Info(1), false, false); }},
    {"PrefixError", 810, 0x35B23465, [](DOMElement& e) { e.PrefixError("m", Info(1), false); }},
    {"HasErrors", 818, 0xF2FE57DA, [](DOMElement& e) { e.HasErrors(); }},
    {"HasUnreportedErrors", 827, 0x6BA33C74, [](DOMElement& e) { e.HasUnreportedErrors(); }},
    {"HasCancelErrors", 836, 0x41FC1050, [](DOMElement& e) { e.HasCancelErrors(); }},
    {"HasOnlyCancelErrors", 845, 0xB3A0A105, [](DOMElement& e) { e.HasOnlyCancelErrors(); }},
    {"GetErrors", 853, 0x58C0A15B, [](DOMElement& e) { e.GetErrors(someTexts); }},
    {"GetMetadataForErrors", 862, 0x325D575C, [](DOMElement& e) { e.GetMetadataForErrors(someInfos); }},
    {"ClearWarnings", 871, 0x89E3A6EC, [](DOMElement& e) { e.ClearWarnings(); }},
    {"Warning", 880, 0x7EFAD16F, [](DOMElement& e) { e.Warning("m", Info(1)); }},
    {"PrefixWarning", 890, 0x97789898, [](DOMElement& e) { e.PrefixWarning("m", Info(1)); }},
    {"HasWarnings", 898, 0x58D0894A, [](DOMElement& e) { e.HasWarnings(); }},
    {"GetWarnings", 906, 0x4A1AF88C, [](DOMElement& e) { e.GetWarnings(someTexts); }},
    {"GetMetadataForWarnings", 915, 0x2DE19AB8, [](DOMElement& e) { e.GetMetadataForWarnings(someInfos); }},
};

INSTANTIATE_TEST_SUITE_P(
    Each, DOMElementDiagnosticsOperationTest, testing::ValuesIn(OperationRows), [](const auto& row) {
        return row.param.operation;
    });

TEST(DOMElementDiagnosticsTest, PrefixedErrorsComeFirst)
{
    DOM document;
    AddError(document.GetRoot(), "first");
    AddError(document.GetRoot(), "second");
    document.GetRoot().PrefixError("prefix", Info(3), true);
    document.GetRoot().PrefixError("before", Info(4), true);
    EXPECT_EQ(ErrorsOf(document.GetRoot()), (Texts{"before", "prefix", "first", "second"}));
}

TEST(DOMElementDiagnosticsTest, PrefixedWarningsComeFirst)
{
    DOM document;
    document.GetRoot().Warning("first", Info(1));
    document.GetRoot().PrefixWarning("prefix", Info(2));
    EXPECT_EQ(WarningsOf(document.GetRoot()), (Texts{"prefix", "first"}));
}

TEST(DOMElementDiagnosticsTest, PrefixingManyErrorsTakesLinearTime)
{
    DOM document;
    for (int i = 0; i < 300000; ++i)
        document.GetRoot().PrefixError(VString::number(i), Info(1), false);
    const std::list<VString> messages = document.GetErrors();
    ASSERT_EQ(messages.size(), 300000u);
    EXPECT_EQ(messages.front(), VString("299999"));
    EXPECT_EQ(messages.back(), VString("0"));
}

TEST(DOMElementDiagnosticsTest, PrefixedErrorsAreNotCancellations)
{
    DOM document;
    document.GetRoot().PrefixError("m", Info(1), true);
    EXPECT_FALSE(document.HasCancelErrors());
    EXPECT_FALSE(document.HasUnreportedErrors());
    EXPECT_FALSE(document.HasOnlyCancelErrors());
    EXPECT_TRUE(document.HasErrors());
}

TEST(DOMElementDiagnosticsTest, GettersAppendInDocumentOrder)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    DOMElement& a1 = a.AddNewChild("a1", nullptr);
    b.Error("b", Info(4), false, false);
    a1.Error("a1", Info(3), false, false);
    a.Error("a", Info(2), false, false);
    document.GetRoot().Error("root", Info(1), false, false);
    std::list<VString> messages{VString("there")};
    document.GetRoot().GetErrors(messages);
    EXPECT_EQ(Strings(messages), (Texts{"there", "root", "a", "a1", "b"}));
    EXPECT_EQ(ErrorsOf(a), (Texts{"a", "a1"}));
    std::list<VError::ErrorInfo> infos{Info(9)};
    a.GetMetadataForErrors(infos);
    EXPECT_EQ(infos, (std::list<VError::ErrorInfo>{Info(9), Info(2), Info(3)}));
}

TEST(DOMElementDiagnosticsTest, WarningsAndErrorsAreCollectedSeparately)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    a.Warning("w", Info(2));
    AddError(a, "e");
    EXPECT_EQ(WarningsOf(a), (Texts{"w"}));
    EXPECT_EQ(ErrorsOf(a), (Texts{"e"}));
    std::list<VError::ErrorInfo> infos;
    a.GetMetadataForWarnings(infos);
    EXPECT_EQ(infos, (std::list<VError::ErrorInfo>{Info(2)}));
}

TEST(DOMElementDiagnosticsTest, ErrorIsReportedForAncestorsButNotForSiblings)
{
    DOM document;
    DOMElement& grandparent = document.GetRoot().AddNewChild("g", nullptr);
    DOMElement& parent = grandparent.AddNewChild("p", nullptr);
    DOMElement& child = parent.AddNewChild("c", nullptr);
    DOMElement& sibling = parent.AddNewChild("s", nullptr);
    AddError(child, "error");
    EXPECT_TRUE(child.HasErrors());
    EXPECT_TRUE(parent.HasErrors());
    EXPECT_TRUE(grandparent.HasErrors());
    EXPECT_TRUE(document.HasErrors());
    EXPECT_FALSE(sibling.HasErrors());
    EXPECT_FALSE(parent.HasWarnings());
}

TEST(DOMElementDiagnosticsTest, WarningIsReportedForAncestorsButNotForSiblings)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("p", nullptr);
    DOMElement& child = parent.AddNewChild("c", nullptr);
    DOMElement& sibling = parent.AddNewChild("s", nullptr);
    child.Warning("careful", Info(1));
    EXPECT_TRUE(child.HasWarnings());
    EXPECT_TRUE(parent.HasWarnings());
    EXPECT_TRUE(document.HasWarnings());
    EXPECT_FALSE(sibling.HasWarnings());
    EXPECT_FALSE(document.HasErrors());
}

TEST(DOMElementDiagnosticsTest, ClearErrorsClearsOnlyTheSubtree)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    AddError(a, "a");
    AddError(a.AddNewChild("a1", nullptr), "a1");
    AddError(b, "b");
    a.Warning("careful", Info(1));
    a.ClearErrors();
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"b"}));
    EXPECT_EQ(Strings(document.GetWarnings()), (Texts{"careful"}));
    EXPECT_FALSE(a.HasErrors());
    EXPECT_TRUE(b.HasErrors());
}

TEST(DOMElementDiagnosticsTest, ClearWarningsClearsOnlyTheSubtree)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = document.GetRoot().AddNewChild("b", nullptr);
    a.AddNewChild("a1", nullptr).Warning("a1", Info(1));
    b.Warning("b", Info(1));
    AddError(a, "error");
    a.ClearWarnings();
    EXPECT_EQ(Strings(document.GetWarnings()), (Texts{"b"}));
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"error"}));
}

TEST(DOMElementDiagnosticsTest, QueriesAndClearsOfARootCoverTheWholeDocument)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    const DOMElement copy(a);
    AddError(a, "error");
    a.Warning("careful", Info(1));
    EXPECT_TRUE(copy.HasErrors());
    EXPECT_TRUE(copy.HasWarnings());
    EXPECT_TRUE(ErrorsOf(copy).empty());
    DOMElement(copy).ClearErrors();
    EXPECT_FALSE(document.HasErrors());
    EXPECT_TRUE(document.HasWarnings());
}
