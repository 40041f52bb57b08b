// Operations on documents and trees that several threads may call at once. Run these tests under the
// thread sanitizer.
#include <atomic>
#include <thread>

#include "tests/tree/TreeTestSupport.h"

using namespace treetest;

namespace {

constexpr int ThreadCount = 4;

// Starts ThreadCount threads, which call `work` with the numbers from 0 to ThreadCount - 1. Waits for all of them.
void OnThreads(const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < ThreadCount; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

// Adds the element a with an error and a warning, and its child b with an error.
void Fill(DOM& document)
{
    DOMElement& a = document.GetRoot().AddNewChild("a", nullptr);
    AddError(a, "a");
    a.Warning("w", Info(1));
    AddError(a.AddNewChild("b", nullptr), "b");
}

struct ChangeRow {
    const char* name;
    std::function<void(DOM& document)> run;
};

// An operation that copies or moves something from `other` to `document`.
struct PairRow {
    const char* name;
    std::function<void(DOM& document, DOM& other)> run;
};

// Expects that `run` requests the write lock of `document`. The request raises an assertion, because
// the thread holds the read lock already.
void ExpectWriteLock(const DOM& document, const std::function<void()>& run)
{
    const VReadLocker reading(DOMTestAccess::Lock(document));
    try {
        run();
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetErrorInfo().GetCode(), 0x5D1E7A60u);
        return;
    }
    ADD_FAILURE() << "no write lock was taken";
}

class DocumentChangeThreadTest : public testing::TestWithParam<ChangeRow> {};
class DocumentPairThreadTest : public testing::TestWithParam<PairRow> {};

const PairRow PairRows[] = {
    {"DeepCopy", [](DOM& document, DOM& other) { document.DeepCopy(other); }},
    {"Copy",
        [](DOM& document, DOM& other) {
            DOMTestAccess::Copy(document, *other.GetDocumentRoot(), &document.GetRoot());
        }},
    {"Adopt",
        [](DOM& document, DOM& other) {
            DOMTestAccess::Adopt(document, *other.GetDocumentRoot(), &document.GetRoot());
        }},
    {"MoveAll", [](DOM& document, DOM& other) { DOMTestAccess::MoveAll(other, document); }},
};

const ChangeRow ChangeRows[] = {
    {"ProtectedDataSourceName", [](DOM& document) { document.SetProtectedDataSourceName("n"); }},
    {"CancelType", [](DOM& document) { document.SetDSValidationCancelType(1); }},
    {"PathRenames", [](DOM& document) { document.SetPathRenames(PathRenames()); }},
    {"CaptionRename", [](DOM& document) { document.AddCaptionRename("a", "b"); }},
    {"DataSourceRename", [](DOM& document) { document.AddDataSourceRename("a", "b"); }},
    {"DataConnectionRename", [](DOM& document) { document.AddDataConnectionRename("a", "b"); }},
    {"MapSourceRename", [](DOM& document) { document.AddMapSourceRename("a", "b"); }},
    {"FieldRename", [](DOM& document) { document.AddFieldRename(FieldName(), FieldName()); }},
    {"Error", [](DOM& document) { AddError(document.GetRoot(), "e"); }},
    {"PrefixError", [](DOM& document) { document.GetRoot().PrefixError("e", Info(1), false); }},
    {"Warning", [](DOM& document) { document.GetRoot().Warning("w", Info(1)); }},
    {"PrefixWarning", [](DOM& document) { document.GetRoot().PrefixWarning("w", Info(1)); }},
    {"ClearErrors", [](DOM& document) { document.ClearErrors(); }},
    {"ClearWarnings", [](DOM& document) { document.ClearWarnings(); }},
    {"MoveAllToItself", [](DOM& document) { DOMTestAccess::MoveAll(document, document); }},
};

}  // namespace

TEST_P(DocumentChangeThreadTest, TakesTheWriteLock)
{
    DOM document;
    ExpectWriteLock(document, [&] { GetParam().run(document); });
}

INSTANTIATE_TEST_SUITE_P(
    Of, DocumentChangeThreadTest, testing::ValuesIn(ChangeRows), [](const auto& row) { return row.param.name; });

TEST_P(DocumentPairThreadTest, TakesBothWriteLocks)
{
    DOM document;
    DOM other;
    Fill(other);
    for (const DOM* locked : {&document, &other})
        ExpectWriteLock(*locked, [&] { GetParam().run(document, other); });
    EXPECT_FALSE(document.HasErrors());
    EXPECT_EQ(Strings(other.GetErrors()), (Texts{"a", "b"}));
}

// Half of the threads swap the documents; together they run 10,000 times. If operations locked in the order of their
// arguments, they would deadlock.
TEST_P(DocumentPairThreadTest, WorksInBothDirectionsAtOnce)
{
    DOM document;
    DOM other;
    Fill(document);
    Fill(other);
    OnThreads([&](int thread) {
        const bool isForward = thread % 2 == 0;
        for (int i = 0; i < 10000 / ThreadCount; ++i)
            GetParam().run(isForward ? document : other, isForward ? other : document);
    });
    EXPECT_EQ(document, other);
}

INSTANTIATE_TEST_SUITE_P(
    Of, DocumentPairThreadTest, testing::ValuesIn(PairRows), [](const auto& row) { return row.param.name; });

// The source has no diagnostics to copy. DeepCopy must lock it nevertheless.
TEST(DocumentThreadTest, DeepCopyTakesBothWriteLocksEvenWithoutDiagnostics)
{
    DOM document;
    DOM other;
    for (const DOM* locked : {&document, &other})
        ExpectWriteLock(*locked, [&] { document.DeepCopy(other); });
}

TEST(DocumentThreadTest, MoveBetweenDocumentsTakesBothWriteLocks)
{
    DOM document;
    DOM other;
    Fill(other);
    for (const DOM* locked : {&document, &other})
        ExpectWriteLock(*locked, [&] { other.GetDocumentRoot()->Move(document.GetRoot(), nullptr); });
    EXPECT_EQ(document.GetDocumentRoot(), nullptr);
    EXPECT_EQ(Strings(other.GetErrors()), (Texts{"a", "b"}));
}

TEST(DocumentThreadTest, SettingsAndRenamesCanBeReadWhileTheyChange)
{
    DOM source(true);
    source.AddCaptionRename("c", "c2");
    source.AddDataSourceRename("d", "d2");
    source.AddDataConnectionRename("e", "e2");
    source.AddMapSourceRename("m", "m2");
    DOM document;
    document.DeepCopy(source);
    std::atomic<int> wrong{0};
    OnThreads([&](int thread) {
        for (int i = 0; i < 300; ++i) {
            if (thread == 0) {
                document.DeepCopy(source);
                document.SetDSValidationCancelType(0);
                continue;
            }
            wrong += !document.GetRestrictExternalPaths() || document.GetDSValidationCancelType() != 0;
            wrong += document.GetCaptionRenameIfItExists("c") != VString("c2") ||
                document.RenameDataSource("d") != VString("d2");
            wrong +=
                document.RenameDataConnection("e") != VString("e2") || document.RenameMapSource("m") != VString("m2");
            wrong += document.UnRenameDataSource("d2") != VString("d");
            wrong += document.RenameField(FieldName::ParseGlobal("[x].[a]")) != FieldName::ParseGlobal("[x].[a]");
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(DocumentThreadTest, DiagnosticsCanBeQueriedWhileTheyChange)
{
    DOM document;
    DOMElement& element = document.GetRoot().AddNewChild("a", nullptr);
    const DOMElement& sibling = document.GetRoot().AddNewChild("s", nullptr);
    std::atomic<int> wrong{0};
    OnThreads([&](int thread) {
        for (int i = 0; i < 300; ++i) {
            if (thread == 0) {
                element.Error("e", Info(1), true, false);
                element.PrefixError("e", Info(1), true);
                element.Warning("w", Info(1));
                element.PrefixWarning("w", Info(1));
                element.ClearErrors();
                element.ClearWarnings();
                continue;
            }
            element.HasErrors();
            wrong += element.HasUnreportedErrors() || element.HasCancelErrors() || sibling.HasErrors() ||
                sibling.HasWarnings() || !sibling.HasOnlyCancelErrors();
            wrong += document.GetErrors().size() > 2 || document.GetWarnings().size() > 2;
            wrong += document.GetMetadataForErrors().size() > 2 || document.GetMetadataForWarnings().size() > 2;
            wrong += document.GetConcatenatedErrors().length() > 3 || document.GetConcatenatedWarnings().length() > 3;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(DocumentThreadTest, ManyThreadsCanReportErrors)
{
    DOM document;
    const DOMElement& child = document.GetRoot().AddNewChild("a", nullptr);
    OnThreads([&](int) {
        for (int i = 0; i < 500; ++i) {
            AddError(child, "e");
            EXPECT_TRUE(child.HasErrors());
            EXPECT_FALSE(child.HasCancelErrors());
        }
    });
    EXPECT_EQ(document.GetErrors().size(), 500u * ThreadCount);
}

// The threads with even numbers record diagnostics for an element of their own. The others read and copy the tree.
TEST(DocumentThreadTest, DiagnosticsAreWrittenOnSeveralThreadsWhileOthersCopyTheTree)
{
    DOM document;
    for (const char* const name : {"a", "b"})
        document.GetRoot().AddNewChild("top", nullptr).AddNewChild(name, nullptr);
    std::atomic<int> wrong{0};
    OnThreads([&](int thread) {
        const VString name = thread == 0 ? "a" : "b";
        DOMElement& own = *document.GetElement(name);
        for (int i = 0; i < 200; ++i) {
            if (thread % 2 == 0) {
                own.ClearErrors();
                own.ClearWarnings();
                AddError(own, name);
                own.PrefixError("p", Info(1), true);
                own.Warning(name, Info(2));
                own.PrefixWarning("p", Info(2));
                wrong += !own.HasErrors() || !own.HasWarnings();
            } else {
                const DOMElement copy(document.GetRoot());
                wrong += copy != document.GetRoot();
                DOM other;
                other.DeepCopy(document);
                wrong += other.GetErrors().size() > 4 || other.GetWarnings().size() > 4;
                for (const DOMDiagnostic& diagnostic : document.GetDiagnostics())
                    wrong += diagnostic.element->GetName() != "a" && diagnostic.element->GetName() != "b";
            }
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Strings(document.GetErrors()), (Texts{"p", "a", "p", "b"}));
    EXPECT_EQ(Strings(document.GetWarnings()), (Texts{"p", "a", "p", "b"}));
}

TEST(ElementThreadTest, ManyReadersCanCopyElements)
{
    DOM document;
    Fill(document);
    std::atomic<int> wrong{0};
    OnThreads([&](int) {
        for (int i = 0; i < 200; ++i) {
            const DOMElement copy(*document.GetDocumentRoot());
            wrong += copy != *document.GetDocumentRoot();
            wrong += !copy.HasErrors() || ErrorsOf(copy) != Texts{"a", "b"};
            wrong += document.GetErrors().size() != 2;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 2u);
}

// Each thread uses its own documents.
TEST(ElementThreadTest, ElementsAreDetachedOnManyThreads)
{
    OnThreads([](int) {
        for (int i = 0; i < 200; ++i) {
            auto document = std::make_unique<DOM>();
            Fill(*document);
            DOM to;
            std::unique_ptr<DOMElement> low = document->GetDocumentRoot()->RemoveChild("b");
            const std::unique_ptr<DOMElement> top = document->GetRoot().RemoveChild("a");
            DOMElement free("f");
            free.AppendChild(std::make_unique<DOMElement>(*low));
            to.GetRoot().AppendChild(std::move(low));
            document.reset();
            EXPECT_EQ(top->GetDOMManager(), nullptr);
            EXPECT_EQ(Strings(to.GetErrors()), (Texts{"b"}));
        }
    });
}

// If two documents shared a lock, the other thread would wait forever.
TEST(ElementThreadTest, DocumentWorksWhileAllLocksOfAnotherAreHeld)
{
    DOM other;
    Fill(other);
    const DOMElement copy(*other.GetDocumentRoot());
    const VWriteLocker writing(DOMTestAccess::Lock(other));
    const std::lock_guard<VMutex> linking(DOMTestAccess::LinkedElementsMutex(other));
    std::thread([] {
        DOM document;
        Fill(document);
        const std::unique_ptr<DOMElement> removed = document.GetDocumentRoot()->RemoveChild("b");
        const DOMElement copyOfA(*document.GetDocumentRoot());
        EXPECT_TRUE(document.GetDocumentRoot()->HasErrors());
        DOM target;
        target.DeepCopy(document);
        target.GetRoot().AppendChild(document.GetRoot().RemoveChild("a"));
        EXPECT_EQ(Strings(target.GetErrors()), (Texts{"a", "a"}));
    }).join();
}

// The document keeps the records of elements that moved into a tree without a document.
TEST(ElementThreadTest, DocumentAndMovedElementsWithRecordsDieConcurrently)
{
    for (int i = 0; i < 300; ++i) {
        auto document = std::make_unique<DOM>();
        Fill(*document);
        auto free = std::make_unique<DOMElement>("free");
        free->AppendChild(document->GetRoot().RemoveChild("a"));
        EXPECT_EQ(DOMTestAccess::ErrorEntries(*document), 2u);
        std::thread other([&free] { free.reset(); });
        document.reset();
        other.join();
    }
}

TEST(ElementThreadTest, RemovedChildrenDieWhileOthersAreRemoved)
{
    DOM document;
    DOMElement& parent = document.GetRoot().AddNewChild("parent", nullptr);
    for (int i = 0; i < 1000; ++i)
        AddError(parent.AddNewChild("child", nullptr), "e");
    std::vector<std::unique_ptr<DOMElement>> removed;
    for (int i = 0; i < 500; ++i)
        removed.push_back(parent.RemoveChild("child"));
    std::thread other([&removed] { removed.clear(); });
    std::vector<std::unique_ptr<DOMElement>> others;
    for (int i = 0; i < 500; ++i)
        others.push_back(parent.RemoveChild("child"));
    other.join();
    EXPECT_EQ(DOMTestAccess::ErrorEntries(document), 500u);
}

// DeepCopy destroys elements that have records in a third document, while another thread locks that document.
TEST(ElementThreadTest, DeepCopyMayDestroyElementsWithRecordsInAThirdDocument)
{
    DOM source;
    for (int i = 0; i < 300; ++i) {
        DOM first;
        DOM third;
        Fill(third);
        DOMElement free("free");
        free.AppendChild(third.GetRoot().RemoveChild("a"));
        first.GetRoot().AppendChild(free.RemoveChild("a"));
        std::thread other([&] { first.DeepCopy(source); });
        third.DeepCopy(source);
        other.join();
        EXPECT_FALSE(third.HasErrors());
    }
}

TEST(ElementThreadTest, RemovedChildAndItsMovedParentDieConcurrently)
{
    for (int i = 0; i < 300; ++i) {
        DOM document;
        Fill(document);
        std::unique_ptr<DOMElement> removed = document.GetDocumentRoot()->RemoveChild("b");
        DOM to;
        to.GetRoot().AppendChild(document.GetRoot().RemoveChild("a"));
        std::thread other([&to] { to.GetRoot().RemoveChildren().clear(); });
        removed.reset();
        other.join();
        EXPECT_FALSE(document.HasErrors());
    }
}

// A concurrent query must not restore index entries of a copy that was destroyed.
TEST(ElementThreadTest, CopiesDieWhileAnotherThreadQueries)
{
    DOM document;
    DOMElement& top = document.GetRoot().AddNewChild("top", nullptr);
    Fill(document);
    std::atomic<bool> stops{false};
    std::thread querying([&] {
        while (!stops)
            EXPECT_FALSE(top.HasErrors());
    });
    for (int i = 0; i < 2000; ++i)
        const DOMElement copy(*document.GetRoot().GetChild("a"));
    stops = true;
    querying.join();
    EXPECT_TRUE(document.GetElement("b")->HasErrors());
    EXPECT_EQ(DOMTestAccess::Intervals(document), 3u);  // "Document", a and b
}

TEST(ElementThreadTest, DocumentAndMovedParentOfARemovedChildDieConcurrently)
{
    for (int i = 0; i < 300; ++i) {
        auto document = std::make_unique<DOM>();
        Fill(*document);
        const std::unique_ptr<DOMElement> removed = document->GetDocumentRoot()->RemoveChild("b");
        DOM to;
        to.GetRoot().AppendChild(document->GetRoot().RemoveChild("a"));
        std::thread other([&to] { to.GetRoot().RemoveChildren().clear(); });
        document.reset();
        other.join();
        EXPECT_EQ(removed->GetDOMManager(), nullptr);
        EXPECT_EQ(removed->GetParent(), nullptr);
    }
}
