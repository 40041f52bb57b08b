// Saves documents while system calls and allocations fail, and measures memory. FailingCalls.cpp and the allocation
// functions of this program replace those of the system.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>

#include <malloc.h>

#include "tests/common/FailingCall.h"
#include "tests/common/TestSupport.h"
#include "tests/common/ThreadStack.h"
#include "tests/common/UnnamedFiles.h"
#include "vancoreplatform/VIOException.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

// Sanitizers replace the allocation themselves and use more memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#  define IS_SANITIZED 1
#else
#  define IS_SANITIZED 0
#endif

#if !IS_SANITIZED

namespace {

// The number of allocations of this thread before one fails; negative means that none fails.
thread_local long allocationsLeft = -1;

bool FailsAllocation()
{
    if (allocationsLeft < 0 || allocationsLeft-- > 0)
        return false;
    errno = ENOMEM;
    return true;
}

}  // namespace

// Replaces the functions of the C library, because strings do not use operator new.
#  pragma GCC visibility push(default)
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    return FailsAllocation() ? nullptr : __libc_malloc(size);
}

void* realloc(void* memory, std::size_t size) noexcept
{
    return FailsAllocation() ? nullptr : __libc_realloc(memory, size);
}

}  // extern "C"
#  pragma GCC visibility pop

#endif

namespace {

using testsupport::TemporaryFolder;

// Returns a document that is saved with more than six writes.
std::unique_ptr<DOM> LargeDocument()
{
    auto document = std::make_unique<DOM>();
    DOMElement& root = document->GetRoot().AddNewChild("root", nullptr);
    for (int i = 0; i < 200; ++i)
        root.AddNewChild("a", nullptr).AddNewChild("b", nullptr).SetText(VString(std::string(5000, 'x').c_str()));
    return document;
}

class SaveFaultTest : public testing::Test {
protected:
    void Save(const DOM& document) const { XMLDomFormatter::SaveAsXMLFile(document, VPath(file), nullptr, true); }
    QStringList Names() const
    {
        return QDir(folder.Path(".").ToQString()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    void ExpectOldFileAlone() const
    {
        EXPECT_TRUE(TemporaryFolder::Read(file) == "old");
        EXPECT_EQ(Names(), QStringList("a.xml"));
    }

    TemporaryFolder folder;
    const VString file = folder.Write("a.xml", "old");
};

TEST_F(SaveFaultTest, FailingCallThrowsAndKeepsTheOldFile)
{
    const std::unique_ptr<DOM> document = LargeDocument();
    // Only one call fails: later calls succeed, so the writer must remember the failure. Two calls create a file: if
    // the first one, for a file without a name, fails, the second one creates a file with a name.
    std::vector<Fault> faults{{"create", 0, ENOSPC, 2},
        {"write", 0, ENOSPC},
        {"write", 1, EIO},
        {"write", 5, ENOSPC},
        {"write", 6, EDQUOT},
        {"chmod", 0, EIO},
        {"flush", 0, EIO},
        {"rename", 0, EACCES}};
    if (testsupport::HasUnnamedFiles(folder))
        faults.push_back({"link", 0, ENOSPC});
    else
        faults.push_back({"close", 0, EDQUOT});
    for (const Fault& fault : faults) {
        folder.Write("a.xml", "old");
        try {
            const Failing failing(fault);
            Save(*document);
            ADD_FAILURE() << fault << ": no exception";
        } catch (const VIO::Exception& exception) {
            EXPECT_EQ(exception.what(), "Cannot write \"" + file.toStdString() + "\": " + std::strerror(fault.error))
                << fault;
        }
        ExpectOldFileAlone();
    }
}

// The writes of a document end between elements and inside of end tags, which ~Indenter writes.
TEST_F(SaveFaultTest, EachFailingWriteThrows)
{
    DOM document;
    DOMElement* last = &document.GetRoot();
    for (int depth = 0; depth < 600; ++depth)
        last = &last->AddNewChild("element-with-a-long-name", nullptr);
    Save(document);
    const std::size_t size = TemporaryFolder::Read(file).size();
    ASSERT_GT(size, 5u * 0x20000);
    folder.Write("a.xml", "old");
    const int writes = static_cast<int>(size / 0x20000) + 1;
    for (int after = 0; after < writes; ++after) {
        const Failing failing({"write", after, ENOSPC});
        EXPECT_THROW(Save(document), VIO::Exception) << after;
        unsetenv("FAILING_CALL");
        ExpectOldFileAlone();
    }
}

#if !IS_SANITIZED

TEST_F(SaveFaultTest, EachFailingAllocationThrowsAndKeepsTheOldFile)
{
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("root", nullptr);
    root.AddNewChild("a", nullptr).SetAttributes({{"x", "1"}, {"y", "<"}});
    root.AddNewChild("b", nullptr).AddNewChild("c", nullptr).SetText("a text of more than thirty-two units & a <");
    Save(document);
    const std::string expected = TemporaryFolder::Read(file);
    int failures = 0;
    // Only one allocation fails: later ones succeed, so the writer must remember the failure.
    for (bool hasFailed = true; hasFailed; ++failures) {
        ASSERT_LT(failures, 10000);
        folder.Write("a.xml", "old");
        allocationsLeft = failures;
        bool isSaved = true;
        try {
            Save(document);
        } catch (const std::bad_alloc&) {
            isSaved = false;
        }
        hasFailed = allocationsLeft < 0;
        allocationsLeft = -1;
        EXPECT_EQ(TemporaryFolder::Read(file), isSaved ? expected : "old") << failures;
        EXPECT_EQ(Names(), QStringList("a.xml"));
    }
    EXPECT_GT(failures, 20);
}

#endif

TEST_F(SaveFaultTest, DepthNeedsNoStack)
{
    DOM document;
    DOMElement* last = &document.GetRoot();
    for (int depth = 0; depth < 5000; ++depth)
        last = &last->AddNewChild("e", nullptr);
    testsupport::RunWithStack(128 * 1024, [&] { Save(document); });
    // Each level but the innermost is "<e>" and "</e>" on lines of their own.
    EXPECT_EQ(TemporaryFolder::Read(file).size(), 41u + 4999u * (4 + 5) + 2 * 2 * (4998u * 4999u / 2) + 2 * 4999u + 6);
}

#if !IS_SANITIZED

// Returns a value of /proc/self/status in KB; 0 if there is none.
long ReadStatus(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long value = 0;
        if (word == name + ":" && status >> value)
            return value;
    }
    return 0;
}

// Returns how far the resident memory of the process grows while `run` runs, in KB; -1 if it cannot be measured.
long MeasureGrowth(const std::function<void()>& run)
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // sets the peak to the current value
    const long before = ReadStatus("VmHWM");
    if (before == 0 || before > ReadStatus("VmRSS") + 500)
        return -1;
    run();
    return ReadStatus("VmHWM") - before;
}

TEST_F(SaveFaultTest, MemoryDoesNotGrowWithTheText)
{
    // 40 MB each: one long text of each kind, and many short ones. All contain characters that are escaped.
    DOM document;
    DOMElement& root = document.GetRoot().AddNewChild("root", nullptr);
    VString longText;
    for (int i = 0; i < 2000000; ++i)
        longText += "text & more";
    root.AddNewChild("content", nullptr).SetText(longText);
    root.AddNewChild("cdata", nullptr).SetText("<" + longText);
    root.AddNewChild("encoded", nullptr).SetText(longText, true);
    for (int i = 0; i < 200000; ++i)
        root.AddNewChild("short", nullptr).SetText(longText.left(100));
    DOM small;
    small.GetRoot().AddNewChild("root", nullptr).SetText("&");
    Save(small);

    const long growth = MeasureGrowth([&] { Save(document); });
    if (growth < 0)
        GTEST_SKIP() << "the peak of the memory cannot be measured here";
    EXPECT_LT(growth, 1024) << "KB";
    EXPECT_GT(MeasureGrowth([&] { XMLDomFormatter::RenderAsXMLString(document, nullptr, true); }), 100000) << "KB";
}

#endif

}  // namespace
