// Exits with 0 while two threads work. The argument names the work.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <latch>
#include <memory>
#include <thread>

#if defined(_WIN32)
#  include <windows.h>
#endif

#include <boost/any.hpp>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoredata/VLocale.h"
#include "vancoreplatform/CoreThreadContext.h"
#include "vancoreplatform/VLog.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

struct WorkRow {
    const char* name;
    void (*run)();
};

void ParseTexts()
{
    DOMParser parser;
    parser.ParseXmlString("<a>x<b :c='d'/></a>", "id");
}

void ExplainFaults()
{
    CoreThreadContext::HasSessionId = [] { return true; };
    CoreThreadContext::SetGenericObject("locale", std::make_shared<VLocale>(VString("fr_FR")));
    DOMParser parser;
    parser.ParseXmlString("<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a>&e;</a>", "id");
    parser.ParseXmlString("<a><b></a>", "id");
}

void Validate()
{
    DOMParser parser;
    parser.AddXSDResourceId(QtVanResourceId::FileFormatKxcXsd);
    parser.ParseXmlString("<data-connection pool-size='eight' version='18.1'/>", "id");
}

void ReadDocuments()
{
    static const std::unique_ptr<DOM>& document =
        *new std::unique_ptr<DOM>(DOMParser().ParseXmlString("<a><b c='d'>x</b></a>", "id"));
    DOM copy;
    copy.DeepCopy(*document);
    copy.GetRoot().Error("message", VError::ErrorInfo(), false, false);
    XMLDomFormatter::RenderAsXMLString(copy, nullptr, true);
}

struct CountingSink : VLog::Sink, art::ActivitySink, Metrics::Sink {
    void Write(const VLog::Record&) override { ++count; }
    void Finish(const art::ActivityRecord&) override { ++count; }
    void Finish(const Metrics::ScopeRecord&) override { ++count; }
    std::size_t count = 0;
};

// The process exits without setting the sinks back.
void ReportToSinks()
{
    [[maybe_unused]] static const bool isSet = [] {
        const auto sink = std::make_shared<CountingSink>();
        VLog::SetSink(sink);
        art::SetActivitySink(sink);
        Metrics::SetSink(sink);
        return true;
    }();
    ParseTexts();
    LogMessage(VLog::Info, "parsed");
}

const WorkRow WorkRows[] = {
    {"ParseTexts", ParseTexts},
    {"ExplainFaults", ExplainFaults},
    {"Validate", Validate},
    {"ReadDocuments", ReadDocuments},
    {"ReportToSinks", ReportToSinks},
};

// ExitProcess locks the heap of the process before it stops the other threads. Wine 8 stops them without this lock. The
// last thread then frees memory, wakes a stopped thread that waited for the heap, and spins for ever if another one was
// stopped while it did the same. One exit of this program in about 800 hung. A C program without this library, which
// only allocates memory in 16 threads, hung in one exit of four.
void LockHeapWithWine()
{
#if defined(_WIN32)
    if (GetProcAddress(GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr)
        HeapLock(GetProcessHeap());
#endif
}

// The first exit handler is the last one to run. The static objects of functions have been destroyed before, and the
// threads run on for long enough to use them. The handlers before it may still wait for the other threads, which may
// need the heap.
void OnExit()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    LockHeapWithWine();
}

// Both threads work once before the exit, so each has loaded its schema.
[[noreturn]] void ExitDuring(void (*work)())
{
    static std::latch worked(3);
    for (int i = 0; i < 2; ++i) {
        std::thread([work] {
            work();
            // Without this wait, one thread can keep the other one from its first work for seconds: the locks of
            // mingw-w64 share a spin lock when they are first used.
            worked.arrive_and_wait();
            for (;;)
                work();
        }).detach();
    }
    worked.arrive_and_wait();
    std::exit(0);
}

}  // namespace

int main(int count, char** arguments)
{
    std::atexit(OnExit);
    for (const WorkRow& row : WorkRows) {
        if (count == 2 && std::strcmp(arguments[1], row.name) == 0)
            ExitDuring(row.run);
    }
    return 2;
}
