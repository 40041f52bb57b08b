#include "vancoreplatform/SinkSlot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"
#include "vancoreplatform/VLog.h"

namespace {

// Receives everything. Its counters have no lock: the library calls all sinks one at a time.
struct AllSinks : VLog::Sink, art::ActivitySink, Metrics::Sink {
    void Write(const VLog::Record& record) override { Add(record.message.toStdString()); }
    void Finish(const art::ActivityRecord& record) override { Add(record.name); }
    void Finish(const Metrics::ScopeRecord& record) override { Add(record.name); }

    virtual void Add(const std::string& name) { names.push_back(name); }

    std::vector<std::string> names;
};

// Sets the same sink for the log, activities and metrics while it lives.
class Observation {
public:
    explicit Observation(const std::shared_ptr<AllSinks>& sink)
    {
        VLog::SetSink(sink);
        art::SetActivitySink(sink);
        Metrics::SetSink(sink);
    }
    ~Observation()
    {
        VLog::SetSink(nullptr);
        art::SetActivitySink(nullptr);
        Metrics::SetSink(nullptr);
    }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;
};

void ReportAll()
{
    const Metrics::Scope scope("scope");
    const art::Activity activity("activity");
    LogMessage(VLog::Info, "message");
}

}  // namespace

TEST(SinkSlotTest, OneObjectCanReceiveEverything)
{
    const auto sink = std::make_shared<AllSinks>();
    {
        const Observation observation(sink);
        ReportAll();
    }
    ReportAll();
    EXPECT_EQ(sink->names, (std::vector<std::string>{"message", "activity", "scope"}));
    EXPECT_EQ(sink.use_count(), 1);
}

TEST(SinkSlotTest, TheWorkOfASinkIsNotReportedToIt)
{
    struct BusySink : AllSinks {
        void Add(const std::string& name) override
        {
            AllSinks::Add(name);
            ReportAll();
        }
    };
    const auto sink = std::make_shared<BusySink>();
    const Observation observation(sink);
    ReportAll();
    EXPECT_EQ(sink->names, (std::vector<std::string>{"message", "activity", "scope"}));
}

TEST(SinkSlotTest, ExceptionsOfASinkAreDropped)
{
    struct FailingSink : AllSinks {
        void Add(const std::string& name) override
        {
            AllSinks::Add(name);
            throw std::runtime_error("the sink failed");
        }
    };
    const auto sink = std::make_shared<FailingSink>();
    const Observation observation(sink);
    EXPECT_NO_THROW(ReportAll());
    EXPECT_EQ(sink->names.size(), 3u);
}

TEST(SinkSlotTest, ASinkCanRemoveItself)
{
    struct ShySink : AllSinks {
        void Add(const std::string& name) override
        {
            Metrics::SetSink(nullptr);
            AllSinks::Add(name);
        }
    };
    std::weak_ptr<ShySink> observer;
    {
        const auto sink = std::make_shared<ShySink>();
        observer = sink;
        Metrics::SetSink(sink);
    }
    EXPECT_FALSE(observer.expired());
    const auto report = [] { const Metrics::Scope scope("once"); };
    report();
    report();
    EXPECT_TRUE(observer.expired());
}

TEST(SinkSlotThreadTest, SinksOfAllKindsAreCalledOneAtATime)
{
    const auto sink = std::make_shared<AllSinks>();
    {
        const Observation observation(sink);
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int round = 0; round < 200; ++round)
                    ReportAll();
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(sink->names.size(), 2400u);
}

TEST(SinkSlotThreadTest, APreviousSinkDoesNotRunAnyMore)
{
    struct GuardedSink : AllSinks {
        void Add(const std::string&) override { EXPECT_TRUE(isSet.load()); }
        std::atomic<bool> isSet{true};
    };
    std::atomic<bool> isDone{false};
    std::thread worker([&isDone] {
        while (!isDone.load())
            const Metrics::Scope scope("work");
    });
    for (int round = 0; round < 500; ++round) {
        const auto sink = std::make_shared<GuardedSink>();
        Metrics::SetSink(sink);
        EXPECT_EQ(Metrics::SetSink(nullptr), sink);
        sink->isSet = false;
    }
    isDone = true;
    worker.join();
}
