// The links from the diagnostics of a parse to the elements of the document.
#include <thread>

#include "tests/tree/TreeTestSupport.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"

using namespace treetest;
using testing::ElementsAre;
using testing::IsNull;

namespace {

// Returns diagnostics of the elements with these numbers. Their messages are "0", "1" and so on.
std::vector<ParseDiagnostic> DiagnosticsOf(const std::vector<std::size_t>& numbers)
{
    std::vector<ParseDiagnostic> diagnostics;
    for (const std::size_t number : numbers) {
        ParseDiagnostic diagnostic;
        diagnostic.message = VString::number(static_cast<std::uint64_t>(diagnostics.size()));
        diagnostic.element = number;
        diagnostics.push_back(diagnostic);
    }
    return diagnostics;
}

std::unique_ptr<DOM> Parse(const std::string& text, const std::vector<std::size_t>& numbers)
{
    auto document = DOMParser().ParseXmlString(text, "id");
    EXPECT_FALSE(document->HasErrors());
    document->SetParseDiagnostics(DiagnosticsOf(numbers));
    return document;
}

std::vector<const DOMElement*> DiagnosedElements(const DOM& document)
{
    std::vector<const DOMElement*> elements;
    for (const DOMParseDiagnostic& each : document.GetParseDiagnostics())
        elements.push_back(each.element);
    return elements;
}

// Returns the names of the elements, with "-" for null.
std::string LinkedNames(const DOM& document)
{
    std::string names;
    for (const DOMElement* element : DiagnosedElements(document))
        names += element ? element->GetName().toStdString() : "-";
    return names;
}

constexpr const char* Text = "<a><b><c/><d/></b><e><f/></e></a>";

}  // namespace

TEST(DOMParseDiagnosticsTest, DocumentWithoutAParseHasNone)
{
    EXPECT_TRUE(DOM().GetParseDiagnostics().empty());
}

TEST(DOMParseDiagnosticsTest, ElementIsFoundByItsNumberInDocumentOrder)
{
    const auto document = Parse(Text, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(LinkedNames(*document), "abcdef");
}

TEST(DOMParseDiagnosticsTest, DiagnosticsKeepTheirOrder)
{
    const auto document = Parse(Text, {6, 2, 0, 2, 7, 1000, 1});
    EXPECT_EQ(LinkedNames(*document), "fb-b--a");
    for (std::size_t i = 0; i < 7; ++i) {
        EXPECT_EQ(
            document->GetParseDiagnostics()[i].diagnostic.message, VString::number(static_cast<std::uint64_t>(i)));
    }
}

TEST(DOMParseDiagnosticsTest, EmptyDocumentHasOnlyNullElements)
{
    DOM document;
    document.SetParseDiagnostics(DiagnosticsOf({0, 1}));
    EXPECT_THAT(DiagnosedElements(document), ElementsAre(IsNull(), IsNull()));
}

TEST(DOMParseDiagnosticsTest, SettingReplacesTheList)
{
    const auto document = Parse(Text, {2, 3});
    document->SetParseDiagnostics(DiagnosticsOf({5}));
    document->GetDocumentRoot()->RemoveChild("b");
    EXPECT_EQ(LinkedNames(*document), "e");
    document->SetParseDiagnostics({});
    EXPECT_FALSE(DOMTestAccess::RefersToElements(*document));
}

TEST(DOMParseDiagnosticsTest, ElementBecomesNullWhenItDies)
{
    const auto document = Parse(Text, {1, 2, 3, 4, 5, 4});
    document->GetDocumentRoot()->RemoveChild("b").reset();
    EXPECT_EQ(LinkedNames(*document), "a---e-");
    document->GetRoot().RemoveChildren();
    EXPECT_EQ(LinkedNames(*document), "------");
    EXPECT_FALSE(DOMTestAccess::RefersToElements(*document));
}

TEST(DOMParseDiagnosticsTest, AssignmentMakesTheReplacedElementsNull)
{
    const auto document = Parse(Text, {1, 2, 3});
    DOMElement* const b = document->GetDocumentRoot()->GetChild("b");
    *b = DOMElement("x");
    EXPECT_EQ(LinkedNames(*document), "ax-");
}

TEST(DOMParseDiagnosticsTest, RemovedElementStaysUntilItDies)
{
    const auto document = Parse(Text, {2, 3});
    std::unique_ptr<DOMElement> removed = document->GetDocumentRoot()->RemoveChild("b");
    EXPECT_EQ(LinkedNames(*document), "bc");
    removed->RemoveChild("c").reset();
    EXPECT_EQ(LinkedNames(*document), "b-");
    document->GetDocumentRoot()->AppendChild(std::move(removed));
    EXPECT_EQ(LinkedNames(*document), "b-");
}

TEST(DOMParseDiagnosticsTest, ElementStaysWhenItMovesWithinItsDocument)
{
    const auto document = Parse(Text, {2, 3, 6});
    document->GetDocumentRoot()->GetChild("b")->Move(*document->GetElement("f"), nullptr);
    EXPECT_EQ(LinkedNames(*document), "bcf");
}

TEST(DOMParseDiagnosticsTest, ElementBecomesNullWhenItMovesToAnotherDocument)
{
    const auto document = Parse(Text, {1, 2, 3, 5});
    const auto other = Parse("<x/>", {1});
    document->GetDocumentRoot()->GetChild("b")->Move(*other->GetDocumentRoot(), nullptr);
    EXPECT_EQ(LinkedNames(*document), "a--e");
    EXPECT_EQ(LinkedNames(*other), "x");
    other->GetElement("b")->Move(*document->GetDocumentRoot(), nullptr);
    EXPECT_EQ(LinkedNames(*document), "a--e");
}

TEST(DOMParseDiagnosticsTest, AdoptedChildrenOfAnotherDocumentBecomeNull)
{
    const auto document = Parse(Text, {1, 2, 3, 4, 5});
    DOM other;
    other.GetRoot().AdoptChildren(*document->GetDocumentRoot(), nullptr);
    EXPECT_EQ(LinkedNames(*document), "a----");
    EXPECT_FALSE(DOMTestAccess::RefersToElements(other));
}

TEST(DOMParseDiagnosticsTest, ElementBecomesNullWhenItMovesToATreeWithoutADocument)
{
    const auto document = Parse(Text, {2, 3, 5});
    DOMElement alone("x");
    alone.AppendChild(document->GetDocumentRoot()->RemoveChild("b"));
    EXPECT_EQ(LinkedNames(*document), "--e");
}

TEST(DOMParseDiagnosticsTest, CopyOfAnElementIsNotLinked)
{
    const auto document = Parse(Text, {2, 3});
    {
        const DOMElement copy(document->GetRoot());
    }
    EXPECT_EQ(LinkedNames(*document), "bc");
}

TEST(DOMParseDiagnosticsTest, ElementsMayOutliveTheDocument)
{
    auto document = Parse(Text, {2, 3});
    const std::unique_ptr<DOMElement> removed = document->GetDocumentRoot()->RemoveChild("b");
    const DOMElement copy(document->GetRoot());
    document.reset();
    EXPECT_EQ(removed->GetDOMManager(), nullptr);
}

TEST(DOMParseDiagnosticsTest, ClearingErrorsAndWarningsKeepsTheList)
{
    const auto document = Parse(Text, {2, 3});
    document->GetElement("c")->Error("e", Info(1), false, false);
    document->ClearErrors();
    document->ClearWarnings();
    EXPECT_EQ(LinkedNames(*document), "bc");
    document->GetElement("b")->RemoveChild("c");
    EXPECT_EQ(LinkedNames(*document), "b-");
}

TEST(DOMParseDiagnosticsTest, ErrorsAndWarningsOfElementsChangeNothing)
{
    const auto document = Parse(Text, {2});
    document->GetElement("b")->Error("e", Info(1), false, false);
    EXPECT_EQ(document->GetParseDiagnostics().size(), 1u);
    EXPECT_EQ(document->GetErrors().size(), 1u);
}

TEST(DOMParseDiagnosticsTest, DeepCopyLinksToTheElementsOfTheCopy)
{
    auto document = Parse(Text, {1, 3, 3, 6, 0});
    DOM copy;
    copy.DeepCopy(*document);
    EXPECT_EQ(LinkedNames(copy), "accf-");
    EXPECT_EQ(copy.GetParseDiagnostics()[2].diagnostic.message, VString("2"));
    EXPECT_EQ(copy.GetParseDiagnostics()[0].element, copy.GetDocumentRoot());
    copy.GetElement("b")->RemoveChild("c").reset();
    EXPECT_EQ(LinkedNames(copy), "a--f-");
    EXPECT_EQ(LinkedNames(*document), "accf-");
    document.reset();
    EXPECT_EQ(LinkedNames(copy), "a--f-");
}

TEST(DOMParseDiagnosticsTest, DeepCopyReplacesTheList)
{
    const auto document = Parse(Text, {2, 3});
    document->DeepCopy(*Parse("<x/>", {1}));
    EXPECT_EQ(LinkedNames(*document), "x");
    document->DeepCopy(DOM());
    EXPECT_TRUE(document->GetParseDiagnostics().empty());
}

TEST(DOMParseDiagnosticsTest, DeepCopyOfARemovedElementIsNull)
{
    const auto document = Parse(Text, {2, 5});
    const std::unique_ptr<DOMElement> removed = document->GetDocumentRoot()->RemoveChild("b");
    DOM copy;
    copy.DeepCopy(*document);
    EXPECT_EQ(LinkedNames(copy), "-e");
    EXPECT_EQ(LinkedNames(*document), "be");
}

TEST(DOMParseDiagnosticsTest, DeepCopyOfADocumentOntoItselfKeepsTheList)
{
    const auto document = Parse(Text, {2, 5});
    document->DeepCopy(*document);
    EXPECT_EQ(LinkedNames(*document), "be");
}

TEST(DOMParseDiagnosticsTest, ManyDiagnosticsAndDeathsTakeLinearTime)
{
    const testsupport::CpuTimeLimit limit(30);
    constexpr std::size_t Count = 200000;
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("a", nullptr);
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < Count; ++i) {
        root.AddNewChild("b", nullptr);
        numbers.push_back(Count + 1 - i);
        numbers.push_back(1);
    }
    document.SetParseDiagnostics(DiagnosticsOf(numbers));
    EXPECT_EQ(document.GetParseDiagnostics().front().element, root.GetChildren().back());
    DOM copy;
    copy.DeepCopy(document);
    EXPECT_EQ(copy.GetParseDiagnostics()[1].element, copy.GetDocumentRoot());
    copy.GetRoot().RemoveChildren();
    EXPECT_THAT(DiagnosedElements(copy), testing::Each(IsNull()));
    EXPECT_FALSE(DOMTestAccess::RefersToElements(copy));
}

// Run this test under the thread sanitizer.
TEST(DOMParseDiagnosticsTest, ManyThreadsMayReadTheList)
{
    const auto document = Parse(Text, {2, 3, 6});
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&document] {
            for (int round = 0; round < 50; ++round) {
                const DOMElement copy(document->GetRoot());
                EXPECT_EQ(LinkedNames(*document), "bcf");
                EXPECT_TRUE(document->GetDiagnostics().empty());
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

// Run this test under the thread sanitizer.
TEST(DOMParseDiagnosticsTest, DocumentsAndTheirRemovedElementsMayDieOnSeveralThreads)
{
    for (int round = 0; round < 50; ++round) {
        auto document = Parse(Text, {2, 3, 5});
        auto other = Parse("<x/>", {1});
        document->GetElement("b")->Move(*other->GetDocumentRoot(), nullptr);
        std::thread thread([&document] { document.reset(); });
        other.reset();
        thread.join();
    }
}

TEST(DOMDiagnosticsListTest, PairsEachRecordWithItsElementInDocumentOrder)
{
    DOM document;
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    DOMElement& b = a.AddNewChild("b", nullptr);
    DOMElement& c = a.AddNewChild("c", nullptr);
    c.Error("last", Info(5), false, false);
    b.Warning("warning", Info(4));
    b.Error("second", Info(3), true, true);
    b.PrefixError("first", Info(2), false);
    document.GetRoot().Error("top", Info(1), false, false);
    const auto isRecord = [](const DOMElement& element, const char* message, int info) {
        return testing::AllOf(testing::Field(&DOMDiagnostic::element, &element),
            testing::Field(&DOMDiagnostic::message, VString(message)),
            testing::Field(&DOMDiagnostic::info, Info(static_cast<std::uint32_t>(info))));
    };
    const std::vector<DOMDiagnostic> diagnostics = document.GetDiagnostics();
    ASSERT_THAT(diagnostics,
        ElementsAre(isRecord(document.GetRoot(), "top", 1),
            isRecord(b, "first", 2),
            isRecord(b, "second", 3),
            isRecord(b, "warning", 4),
            isRecord(c, "last", 5)));
    EXPECT_TRUE(diagnostics[2].reported && diagnostics[2].cancel);
    EXPECT_FALSE(diagnostics[1].reported || diagnostics[1].cancel);
    EXPECT_EQ(diagnostics[2].severity, ParseDiagnostic::Severity::Error);
    EXPECT_EQ(diagnostics[3].severity, ParseDiagnostic::Severity::Warning);
}

TEST(DOMDiagnosticsListTest, OmitsElementsOutsideOfTheTree)
{
    DOM document;
    document.GetRoot().AddNewChild("a", nullptr).Error("e", Info(1), false, false);
    const std::unique_ptr<DOMElement> removed = document.GetRoot().RemoveChild("a");
    EXPECT_TRUE(document.HasErrors());
    EXPECT_TRUE(document.GetDiagnostics().empty());
    EXPECT_TRUE(document.GetErrors().empty());
}

TEST(DOMDiagnosticsListTest, ParseErrorsBelongToTheTopmostElement)
{
    const auto document = DOMParser().ParseXmlString("<a", "id");
    const std::vector<DOMDiagnostic> diagnostics = document->GetDiagnostics();
    ASSERT_EQ(diagnostics.size(), document->GetErrors().size());
    EXPECT_EQ(diagnostics[0].element, &document->GetRoot());
    EXPECT_EQ(diagnostics[0].message, document->GetErrors().front());
}
