// Tracing of the product's activities.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "art-cpp/Export.h"
#include "vancoreplatform/VString.h"

namespace art {

// A finished activity, with its tags in the order they were set.
struct ActivityRecord {
    const char* name = nullptr;
    std::vector<std::pair<VString, VString>> tags;
};

// Sets the function that receives every finished activity, on the thread that finished it. An empty function turns
// tracing off; tracing is off by default. The sink is called under a lock and must neither throw nor open an
// activity. The previous sink does not run any more when this function returns. Thread-safe.
ARTCPP_API void SetActivitySink(std::function<void(const ActivityRecord&)> sink);

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
