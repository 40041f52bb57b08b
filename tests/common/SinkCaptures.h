// Collects what the library reports to sinks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "art-cpp/Activity.h"
#include "metrics2/Metrics.h"

namespace testsupport {

// Collects the metrics scopes of all threads that finish while it lives, innermost first.
class MetricsCapture {
public:
    explicit MetricsCapture(std::uint64_t bits = Metrics::XmlCategory) { Metrics::SetSink(m_sink, bits); }
    ~MetricsCapture() { Metrics::SetSink(nullptr); }
    MetricsCapture(const MetricsCapture&) = delete;
    MetricsCapture& operator=(const MetricsCapture&) = delete;

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const Metrics::ScopeRecord& record : records)
            names.emplace_back(record.name);
        return names;
    }

private:
    struct Sink : Metrics::Sink {
        void Finish(const Metrics::ScopeRecord& record) override { records.push_back(record); }
        std::vector<Metrics::ScopeRecord> records;
    };

    std::shared_ptr<Sink> m_sink = std::make_shared<Sink>();

public:
    const std::vector<Metrics::ScopeRecord>& records = m_sink->records;
};

// Collects the activities of all threads that finish while it lives, innermost first.
class ActivityCapture {
public:
    ActivityCapture() { art::SetActivitySink(m_sink); }
    ~ActivityCapture() { art::SetActivitySink(nullptr); }
    ActivityCapture(const ActivityCapture&) = delete;
    ActivityCapture& operator=(const ActivityCapture&) = delete;

private:
    struct Sink : art::ActivitySink {
        void Finish(const art::ActivityRecord& record) override { records.push_back(record); }
        std::vector<art::ActivityRecord> records;
    };

    std::shared_ptr<Sink> m_sink = std::make_shared<Sink>();

public:
    const std::vector<art::ActivityRecord>& records = m_sink->records;
};

}  // namespace testsupport
