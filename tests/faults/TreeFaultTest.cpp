// Changes documents while allocations fail. An operation that throws must leave both documents as they were. An
// operation that returns must be complete.
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <new>
#include <string>

#include "tests/faults/FailedAllocations.h"
#include "vancoredata/QualifiedName.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vansys/VError.h"

namespace {

// Two equal documents. The element top has the children a, c and d, and a has the child b. There are an error on a, and
// an error and a warning on b. A subtree with diagnostics has been removed from the second document.
struct Pair {
    Pair()
    {
        for (DOM* document : {&one, &two}) {
            DOMElement& top = document->GetRoot().AddNewChild("top", nullptr);
            top.SetText("text");
            top.SetAttributes(AttributeMap{{"m", "1"}, {"n", "2"}});
            DOMElement& a = top.AddNewChild("a", nullptr);
            a.Error("error of a", VError::ErrorInfo::NoError, false, false);
            DOMElement& b = a.AddNewChild("b", nullptr);
            b.Error("error of b", VError::ErrorInfo::NoError, false, false);
            b.Warning("warning of b", VError::ErrorInfo::NoError);
            top.AddNewChild("c", nullptr).SetAttribute("x", "y");
            top.AddNewChild("d", nullptr);
            document->AddDataSourceRename("old", "new");
        }
        DOMElement& old = OtherTop().AddNewChild("old", nullptr);
        old.Error("error of old", VError::ErrorInfo::NoError, false, false);
        old.AddNewChild("inner", nullptr).Warning("warning of inner", VError::ErrorInfo::NoError);
        removed = OtherTop().RemoveChild(old);
        paths.SetCRC("in/one", "out/one", 1);
        paths.SetCRC("in/two", "out/one", 1);
    }

    DOMElement& Top() { return *one.GetDocumentRoot(); }
    DOMElement& OtherTop() { return *two.GetDocumentRoot(); }

    DOM one;
    DOM two;
    std::unique_ptr<DOMElement> child = std::make_unique<DOMElement>("child");
    std::unique_ptr<DOMElement> removed;
    const VString text{"a text that is long enough to need memory of its own"};
    const AttributeMap attributes{{"m", "3"}, {"o", "4"}, {"p", "5"}};
    const FieldName oldField{"new", "field"};
    const FieldName newField{"new", "new field"};
    PathRenames paths;
    bool answer = false;  // of a query
};

std::string Describe(const DOM& document)
{
    std::string text = XMLDomFormatter::RenderAsXMLString(document, nullptr, false).toStdString();
    for (const VString& error : document.GetErrors())
        text += "error: " + error.toStdString() + "\n";
    for (const VString& warning : document.GetWarnings())
        text += "warning: " + warning.toStdString() + "\n";
    for (const char* const name : {"old", "other"})
        text += "rename: " + document.RenameDataSource(name).toStdString() +
            document.RenameDataConnection(name).toStdString() + document.RenameMapSource(name).toStdString() +
            document.GetCaptionRenameIfItExists(name).toStdString() + "\n";
    text += document.RenameField(FieldName("old", "field")).GetFullValue().toStdString() + "\n";
    for (const auto& [from, to] : document.GetPathRenames().GetPathMap())
        text += "path: " + from.String().toStdString() + " to " + to.String().toStdString() + "\n";
    text += document.GetProtectedDataSourceName().toStdString() + "\n";
    text += std::to_string(document.GetParseDiagnostics().size()) + " diagnostics\n";
    return text;
}

std::string Describe(const Pair& pair)
{
    std::string text = Describe(pair.one) + Describe(pair.two);
    text += pair.child ? "with the child\n" : "without the child\n";
    if (pair.removed) {
        text += "removed" + std::to_string(pair.removed->HasErrors()) + std::to_string(pair.removed->HasWarnings());
        for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(*pair.removed))
            text += element.GetDOMManager() == &pair.two ? " of two" : " of another document";
        text += pair.removed->IsRemovedChild() ? " with its parent\n" : " without its parent\n";
    }
    return text + (pair.answer ? "yes\n" : "no\n");
}

struct Row {
    const char* name;
    void (*run)(Pair&);
};

const Row Rows[] = {
    {"SetName", [](Pair& pair) { pair.Top().SetName(pair.text); }},
    {"SetText", [](Pair& pair) { pair.Top().SetText(pair.text); }},
    {"SetEncodedText", [](Pair& pair) { pair.Top().SetText(pair.text, true); }},
    {"AppendText", [](Pair& pair) { pair.Top().AppendText(pair.text); }},
    {"AppendEncodedText", [](Pair& pair) { pair.Top().AppendText(pair.text, true); }},
    {"SetNewAttribute", [](Pair& pair) { pair.Top().SetAttribute(pair.text, pair.text); }},
    {"SetOldAttribute", [](Pair& pair) { pair.Top().SetAttribute("m", pair.text); }},
    {"SetAttributes", [](Pair& pair) { pair.Top().SetAttributes(pair.attributes); }},
    {"RemoveAttribute", [](Pair& pair) { pair.Top().RemoveAttribute("m"); }},
    {"AddNewChild", [](Pair& pair) { pair.Top().AddNewChild("new", pair.Top().GetChild("a")); }},
    {"AppendChild", [](Pair& pair) { pair.Top().AppendChild(std::move(pair.child)); }},
    {"InsertChild", [](Pair& pair) { pair.Top().InsertChild(std::move(pair.child), pair.Top().GetChild("c")); }},
    {"InsertRemovedChild", [](Pair& pair) { pair.Top().InsertChild(std::move(pair.removed), nullptr); }},
    {"GetOrNewChild", [](Pair& pair) { pair.Top().GetOrNewChild("new"); }},
    {"RemoveChild", [](Pair& pair) { pair.Top().RemoveChild("a").reset(); }},
    {"RemoveThisChild", [](Pair& pair) { pair.Top().RemoveChild(*pair.one.GetElement("a")).reset(); }},
    {"RemoveChildren", [](Pair& pair) { pair.Top().RemoveChildren().clear(); }},
    {"RemoveIfEmpty", [](Pair& pair) { pair.Top().RemoveIfEmpty("d").reset(); }},
    {"RemoveThisIfEmpty", [](Pair& pair) { pair.Top().RemoveIfEmpty(*pair.one.GetElement("d")).reset(); }},
    {"Move", [](Pair& pair) { pair.one.GetElement("b")->Move(*pair.two.GetElement("c"), nullptr); }},
    {"MoveToFront", [](Pair& pair) { pair.one.GetElement("c")->MoveToFront(); }},
    {"Adopt", [](Pair& pair) { pair.OtherTop().Adopt(*pair.one.GetElement("a"), pair.two.GetElement("c")); }},
    {"AdoptChildren", [](Pair& pair) { pair.OtherTop().AdoptChildren(pair.Top(), nullptr); }},
    {"AdoptAttribute", [](Pair& pair) { pair.two.GetElement("c")->AdoptAttribute(pair.Top(), "m"); }},
    {"AdoptAttributes", [](Pair& pair) { pair.two.GetElement("c")->AdoptAttributes(pair.Top()); }},
    {"AdoptNewAttributes", [](Pair& pair) { pair.two.GetElement("c")->AdoptAttributes(pair.Top(), false); }},
    {"Assign", [](Pair& pair) { *pair.two.GetElement("c") = pair.Top(); }},
    {"Copy", [](Pair& pair) { pair.answer = DOMElement(pair.Top()) == pair.Top(); }},
    {"Error", [](Pair& pair) { pair.Top().Error(pair.text, VError::ErrorInfo::NoError, false, false); }},
    {"Warning", [](Pair& pair) { pair.Top().Warning(pair.text, VError::ErrorInfo::NoError); }},
    {"PrefixError", [](Pair& pair) { pair.Top().PrefixError(pair.text, VError::ErrorInfo::NoError, false); }},
    {"PrefixWarning", [](Pair& pair) { pair.Top().PrefixWarning(pair.text, VError::ErrorInfo::NoError); }},
    {"AddCaptionRename", [](Pair& pair) { pair.one.AddCaptionRename("other", pair.text); }},
    {"AddCaptionRenameOfElement", [](Pair& pair) { pair.Top().AddCaptionRename("other", pair.text); }},
    {"AddDataSourceRename", [](Pair& pair) { pair.one.AddDataSourceRename("other", pair.text); }},
    {"AddDataConnectionRename", [](Pair& pair) { pair.one.AddDataConnectionRename("other", pair.text); }},
    {"AddMapSourceRename", [](Pair& pair) { pair.one.AddMapSourceRename("other", pair.text); }},
    {"AddFieldRename", [](Pair& pair) { pair.one.AddFieldRename(pair.oldField, pair.newField); }},
    {"AddFieldRenameOfElement", [](Pair& pair) { pair.Top().AddFieldRename(pair.oldField, pair.newField); }},
    {"SetProtectedDataSourceName", [](Pair& pair) { pair.one.SetProtectedDataSourceName(pair.text); }},
    {"SetPathRenames", [](Pair& pair) { pair.one.SetPathRenames(pair.paths); }},
    {"SetParseDiagnostics", [](Pair& pair) { pair.one.SetParseDiagnostics(std::vector<ParseDiagnostic>(3)); }},
    {"ClearErrors", [](Pair& pair) { pair.one.GetElement("a")->ClearErrors(); }},
    {"ClearWarnings", [](Pair& pair) { pair.one.GetElement("a")->ClearWarnings(); }},
    {"ClearAllErrors", [](Pair& pair) { pair.one.ClearErrors(); }},
    {"ClearAllWarnings", [](Pair& pair) { pair.one.ClearWarnings(); }},
    {"HasErrors", [](Pair& pair) { pair.answer = pair.one.GetElement("a")->HasErrors(); }},
    {"HasWarnings", [](Pair& pair) { pair.answer = pair.one.GetElement("a")->HasWarnings(); }},
    {"HasUnreportedErrors", [](Pair& pair) { pair.answer = pair.one.GetElement("a")->HasUnreportedErrors(); }},
};

class TreeFaultTest : public FaultTest {};

TEST_P(TreeFaultTest, OperationThatThrowsChangesNothing)
{
    const std::string unchanged = Describe(Pair());
    int failures = 0;
    for (const Row& row : Rows) {
        Pair expected;
        row.run(expected);
        const std::string changed = Describe(expected);
        EXPECT_NE(changed, unchanged) << row.name;
        for (long number = 0;; ++number) {
            const LiveMemory before = CountLiveMemory();
            auto pair = std::make_unique<Pair>();
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            bool hasThrown = false;
            bool hasFailed = false;
            try {
                row.run(*pair);
                hasFailed = AllocationFaults::End();
            } catch (const std::bad_alloc&) {
                hasFailed = AllocationFaults::End();
                hasThrown = true;
            }
            failures += hasThrown;
            EXPECT_EQ(Describe(*pair), hasThrown ? unchanged : changed)
                << row.name << " after " << number << " allocations";
            pair.reset();
            EXPECT_EQ(CountLiveMemory(), before) << row.name << " after " << number << " allocations";
            if (!hasFailed)
                break;
        }
    }
    EXPECT_GT(failures, 60);
}

std::string RenderTree(const DOM& document)
{
    return XMLDomFormatter::RenderAsXMLString(document, nullptr, false).toStdString();
}

// A copy that throws may have copied the tree or not, but the tree is always whole. The table of paths comes last,
// so it is the old one.
TEST_P(TreeFaultTest, DeepCopyThatThrowsLeavesAWholeTree)
{
    const auto make = [] {
        auto pair = std::make_unique<Pair>();
        pair->two.GetElement("a")->SetText("only in two");
        pair->OtherTop().RemoveChild("c").reset();
        pair->two.GetElement("d")->Warning("warning of d", VError::ErrorInfo::NoError);
        pair->one.AddDataSourceRename("other", "copied");
        pair->one.SetPathRenames(pair->paths);
        return pair;
    };
    const auto before = make();
    const std::string source = Describe(before->one);
    const std::string oldTree = RenderTree(before->two);
    const std::string newTree = RenderTree(before->one);
    ASSERT_NE(newTree, oldTree);
    int failures = 0;
    for (long number = 0;; ++number) {
        const LiveMemory memory = CountLiveMemory();
        auto pair = make();
        AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
        bool hasThrown = false;
        try {
            pair->two.DeepCopy(pair->one);
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        const bool hasFailed = AllocationFaults::End();
        failures += hasThrown;
        EXPECT_EQ(Describe(pair->one), source) << number;
        if (hasThrown) {
            const std::string tree = RenderTree(pair->two);
            EXPECT_TRUE(tree == oldTree || tree == newTree) << number << ": " << tree;
            EXPECT_TRUE(pair->two.GetPathRenames().GetPathMap().empty()) << number;
            pair->two.DeepCopy(pair->one);
        }
        EXPECT_EQ(Describe(pair->two), source) << number;
        pair.reset();
        EXPECT_EQ(CountLiveMemory(), memory) << number;
        if (!hasFailed)
            break;
    }
    EXPECT_GT(failures, 10);
}

std::unique_ptr<StandaloneDOMElement> MakeStandalone()
{
    auto top = std::make_unique<StandaloneDOMElement>(VString("top"));
    top->AppendText("text");
    top->SetAttribute("m", "1");
    top->AppendChild(std::make_unique<StandaloneDOMElement>(VString("a")));
    top->AppendChild(std::make_unique<StandaloneDOMElement>(VString("b")));
    return top;
}

struct StandaloneRow {
    const char* name;
    void (*run)(StandaloneDOMElement&, std::unique_ptr<StandaloneDOMElement>, const VString&);
};

using StandaloneChild = std::unique_ptr<StandaloneDOMElement>;

const StandaloneRow StandaloneRows[] = {
    {"SetName", [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.SetName(text); }},
    {"SetNewAttribute",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.SetAttribute(text, text); }},
    {"SetOldAttribute",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.SetAttribute("m", text); }},
    {"SetAttributes",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) {
            top.SetAttributes(AttributeMap{{text, text}});
        }},
    {"RemoveAttribute", [](StandaloneDOMElement& top, StandaloneChild, const VString&) { top.RemoveAttribute("m"); }},
    {"AppendChild",
        [](StandaloneDOMElement& top, StandaloneChild child, const VString&) { top.AppendChild(std::move(child)); }},
    {"AppendText", [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.AppendText(text); }},
    {"AppendMovedText",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.AppendText(VString(text)); }},
    {"AppendEncodedText",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) { top.AppendText(text, true); }},
    {"InsertChildBefore",
        [](StandaloneDOMElement& top, StandaloneChild child, const VString&) {
            top.InsertChildBefore(std::move(child), *top.GetChild("b"));
        }},
    {"RemoveChild",
        [](StandaloneDOMElement& top, StandaloneChild, const VString&) {
            top.RemoveChild(*top.GetChild("a")).reset();
        }},
    {"RemoveChildren",
        [](StandaloneDOMElement& top, StandaloneChild, const VString&) { top.RemoveChildren().clear(); }},
    {"EraseAllChildNodes",
        [](StandaloneDOMElement& top, StandaloneChild, const VString&) { top.EraseAllChildNodes(); }},
    {"Clone",
        [](StandaloneDOMElement& top, StandaloneChild, const VString& text) {
            const StandaloneChild copy = top.Clone();
            top.SetName(*copy == top ? text : VString());
        }},
};

TEST_P(TreeFaultTest, OperationOfAStandaloneTreeThatThrowsChangesNothing)
{
    const auto unchanged = MakeStandalone();
    const VString text("more text");
    for (const StandaloneRow& row : StandaloneRows) {
        const auto changed = MakeStandalone();
        row.run(*changed, std::make_unique<StandaloneDOMElement>(VString("child")), text);
        EXPECT_FALSE(*changed == *unchanged) << row.name;
        for (long number = 0;; ++number) {
            const LiveMemory before = CountLiveMemory();
            auto top = MakeStandalone();
            auto child = std::make_unique<StandaloneDOMElement>(VString("child"));
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            bool hasThrown = false;
            bool hasFailed = false;
            try {
                row.run(*top, std::move(child), text);
                hasFailed = AllocationFaults::End();
            } catch (const std::bad_alloc&) {
                hasFailed = AllocationFaults::End();
                hasThrown = true;
            }
            EXPECT_TRUE(*top == (hasThrown ? *unchanged : *changed))
                << row.name << " after " << number << " allocations";
            child.reset();
            top.reset();
            EXPECT_EQ(CountLiveMemory(), before) << row.name << " after " << number << " allocations";
            if (!hasFailed)
                break;
        }
    }
}

INSTANTIATE_FAULT_TEST(TreeFaultTest);

}  // namespace
