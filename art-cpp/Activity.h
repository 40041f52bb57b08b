// Tracing of what the product is doing.
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

// Receives every finished activity, on the thread that finished it; an empty function
// turns tracing off again, as it is at first. The sink is called under a lock: it runs no
// more when this returns, and must neither throw nor open an activity.
ARTCPP_API void SetActivitySink(std::function<void(const ActivityRecord&)> sink);

// One activity, from construction to destruction. Costs one load while there is no sink.
class ARTCPP_API Activity {
public:
    // `name` must outlive the sink's use of it: a literal.
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
