// Tracing of the product's activities.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "art-cpp/Export.h"
#include "vancoreplatform/VString.h"

namespace art {

// A finished activity, with its tags in the order they were set.
struct ActivityRecord {
    const char* name = nullptr;  // lives as long as the library that opened the activity
    std::vector<std::pair<VString, VString>> tags;
    std::uint64_t start = 0;        // nanoseconds of std::chrono::steady_clock
    std::uint64_t nanoseconds = 0;  // the duration
};

// Receives the finished activities. An application derives its own class from this and passes it to SetActivitySink.
//
// Threads: called on the thread that finished the activity, so an inner activity comes before the one around it. The
// sinks for activities, metrics and the log are called one at a time, so they need no lock. Activities, scopes and
// messages of the sink itself are not reported. Exceptions that it throws are dropped. A sink must not wait for
// another thread that uses the library.
class ARTCPP_API ActivitySink {
public:
    virtual ~ActivitySink();
    // The record is valid only during the call.
    virtual void Finish(const ActivityRecord& record) = 0;
};

// Sets the sink and returns the previous one. Null, the default, turns tracing off. Shares ownership of the sink. When
// the function returns, the previous sink does not run on another thread. The sink is not destroyed when the process
// ends, and other threads may still call it then. So set null before anything is destroyed that the sink uses.
// Thread-safe; a sink may call it too.
ARTCPP_API std::shared_ptr<ActivitySink> SetActivitySink(std::shared_ptr<ActivitySink> sink);

// Traces one activity, from construction to destruction. Costs one atomic load if there is no sink.
class ARTCPP_API Activity {
public:
    // Borrows `name`, which must live as long as the sink uses it. Pass a literal.
    explicit Activity(const char* name);
    ~Activity();
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    void Tag(const char* key, const VString& value);
    void Tag(const char* key, std::uint64_t value);

private:
    ActivityRecord m_record;
    bool m_open;
};

}  // namespace art
