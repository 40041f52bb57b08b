// Operations that many threads may call at once on one document. Run these tests under the thread sanitizer.
#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/query/QueryTestSupport.h"
#include "vancorexml/main/parser/DOMElementSearch.h"
#include "vancorexml/main/parser/DOMElementTraversal.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/DOMPathCanopy.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

using namespace querytest;

namespace {

constexpr int ThreadCount = 6;
constexpr int Rounds = 300;

// Starts ThreadCount threads, which call `work` with the numbers from 0 to ThreadCount - 1. Waits for all of them.
void OnThreads(const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < ThreadCount; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

VString NumberedName(const char* name, int number)
{
    return name + VString::number(number);
}

void AddError(const DOMElement& element)
{
    element.Error("message", VError::ErrorInfo(VantoraError::MakeError(1, "Test_Error")), false, false);
}

}  // namespace

TEST(QueryThreadTest, ManyThreadsQueryAnUnchangingDocument)
{
    const Tree tree("a(b(c(x)x)c(c(x)y(x))b)");
    const DOM& document = tree.document;
    const DOMElement& top = tree[1];
    std::atomic<int> wrong{0};
    OnThreads([&](int) {
        for (int i = 0; i < Rounds; ++i) {
            wrong += Describe(DOMPath::GetAll(top, "//x")) != "x4 x5 x8 x10";
            wrong += DOMPath::GetFirst(tree[9], "/a/c/y") != &tree[9];
            wrong += Describe(DOMPathCanopy::WithinCanopy(top, "a/c", "c")) != "c7";
            wrong += Describe(DOMPathCanopy::UnderneathCanopy(top, "a/c", "*")) != "x8 y9";
            wrong += document.GetElement("y") != &tree[9];
            wrong += DOMElementSearch::FindChild(top, "c", "k", "") != &tree[6];
            wrong += top.GetChildren().size() != 3;
            int count = 0;
            for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(top))
                count += element.HasChildren();
            wrong += count != 6;
        }
    });
    EXPECT_EQ(wrong, 0);
}

// The element b has more attributes than AttributeMap scans, so a lookup uses its index.
TEST(QueryThreadTest, ManyThreadsReadCopyAndWriteAParsedDocument)
{
    std::string attributes;
    for (int i = 0; i < 40; ++i)
        attributes += " n" + std::to_string(i) + "='v" + std::to_string(i) + "'";
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    const std::unique_ptr<DOM> document =
        parser.ParseXmlString("<a>x<b" + attributes + "/>&amp;<c>y</c>&undeclared;</a>", "id");
    AddError(*document->GetElement("c"));
    const std::list<VString> errors = document->GetErrors();
    ASSERT_EQ(errors.size(), 2u);
    const VString text = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
    std::atomic<int> wrong{0};
    OnThreads([&](int) {
        for (int i = 0; i < 50; ++i) {
            const DOMElement& b = *document->GetElement("b");
            for (int k = 0; k < 40; ++k)
                wrong += b.GetAttribute(NumberedName("n", k)) != NumberedName("v", k);
            wrong += b.HasAttribute("none") || b.GetAttributes().size() != 40 || b.GetStartLine() != 1;
            wrong += XMLDomFormatter::RenderAsXMLString(*document, nullptr, true) != text;
            wrong += document->GetErrors() != errors || document->GetDiagnostics().size() != 2;
            wrong += document->GetParseDiagnostics().size() != 1 || document->GetMetadataForErrors().size() != 2;
            wrong += b.HasErrors() || !document->GetElement("c")->HasErrors() || document->HasWarnings();
            const DOMElement copy(document->GetRoot());
            wrong += copy != document->GetRoot() || !copy.HasErrors();
            DOM other;
            other.DeepCopy(*document);
            wrong += other != *document || other.GetErrors() != errors;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(QueryThreadTest, ManyThreadsReadFieldNamesOfAnUnchangingDocument)
{
    Tree tree("a(b)");
    tree.document.AddDataSourceRename("source", "new");
    tree[2].SetAttribute("k", "[source].[field]");
    const DOMElement& element = tree[2];
    std::atomic<int> wrong{0};
    OnThreads([&](int) {
        QualifiedNameCache cache;
        for (int i = 0; i < Rounds; ++i)
            wrong += element.GetFieldName("k", cache) != FieldName("new", "field");
    });
    EXPECT_EQ(wrong, 0);
}

// The first thread adds renames. The others must see each name either before or after its rename.
TEST(RenamesThreadTest, RenamesAreAddedWhileOthersLookThemUp)
{
    DOM document;
    const DOMElement& element = document.GetRoot().AddNewChild("a", nullptr);
    std::atomic<int> wrong{0};
    OnThreads([&](int thread) {
        for (int i = 0; i < Rounds; ++i) {
            const VString from = NumberedName("old", i);
            const VString to = NumberedName("new", i);
            if (thread == 0) {
                document.AddCaptionRename(from, to);
                document.AddDataSourceRename(from, to);
                document.AddDataConnectionRename(from, to);
                document.AddMapSourceRename(from, to);
                document.AddFieldRename(FieldName(to, "x"), FieldName(to, "y"));
                document.SetProtectedDataSourceName(from);
                document.SetPathRenames(PathRenames());
                continue;
            }
            for (const VString& name : {document.GetCaptionRenameIfItExists(from),
                     document.RenameDataSource(from),
                     element.RenameDataConnection(from),
                     element.RenameMapSource(from)})
                wrong += name != from && name != to;
            const VString old = document.UnRenameDataSource(to);
            wrong += old != from && old != to;
            const FieldName field = element.RenameField(FieldName(from, "x"));
            wrong += field != FieldName(from, "x") && field != FieldName(to, "x") && field != FieldName(to, "y");
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(document.RenameDataSource("old7"), VString("new7"));
    EXPECT_EQ(document.RenameField(FieldName("old7", "x")), FieldName("new7", "y"));
}

TEST(RenamesThreadTest, ManyThreadsAddRenames)
{
    DOM document;
    OnThreads([&document](int thread) {
        for (int i = thread * Rounds; i < (thread + 1) * Rounds; ++i)
            document.AddMapSourceRename(NumberedName("old", i), NumberedName("new", i));
    });
    for (int i = 0; i < ThreadCount * Rounds; ++i)
        ASSERT_EQ(document.RenameMapSource(NumberedName("old", i)), NumberedName("new", i));
}

// Each round uses a new document, so that several threads build the index of the errors at once.
TEST(DiagnosticsThreadTest, ManyThreadsQueryErrorsAtOnce)
{
    std::atomic<int> wrong{0};
    for (int round = 0; round < 20; ++round) {
        const Tree tree("a(b(cd)e(fg)h)");
        AddError(tree[4]);
        AddError(tree[6]);
        OnThreads([&](int) {
            for (int i = 0; i < 20; ++i) {
                wrong += !tree.document.HasErrors();
                wrong += !tree[2].HasErrors() || !tree[4].HasUnreportedErrors() || !tree[5].HasErrors() ||
                    !tree[6].HasErrors();
                wrong += tree[3].HasErrors() || tree[7].HasErrors() || tree[8].HasErrors() ||
                    tree[2].HasCancelErrors() || tree[2].HasWarnings();
                wrong += tree.document.GetErrors().size() != 2;
            }
        });
    }
    EXPECT_EQ(wrong, 0);
}

TEST(DiagnosticsThreadTest, ErrorsAreRecordedWhileOthersQuery)
{
    const Tree tree("a(b(cd)e(fg)h)");
    std::atomic<int> wrong{0};
    OnThreads([&](int thread) {
        for (int i = 0; i < Rounds; ++i) {
            if (thread == 0)
                AddError(tree[4]);
            else
                wrong += tree[5].HasErrors() || (tree[4].HasErrors() && !tree[2].HasErrors());
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(tree.document.GetErrors().size(), static_cast<std::size_t>(Rounds));
}
