#include "art-cpp/Activity.h"

#include <atomic>
#include <mutex>

#include "vancoreplatform/StaticObject.h"

namespace art {

namespace {

std::atomic<bool> s_enabled{false};

struct SinkHolder {
    std::mutex mutex;
    std::function<void(const ActivityRecord&)> sink;  // guarded by mutex
};

SinkHolder& GetSinkHolder()
{
    return GetStaticObject<SinkHolder>();
}

}  // namespace

void SetActivitySink(std::function<void(const ActivityRecord&)> sink)
{
    SinkHolder& holder = GetSinkHolder();
    const std::lock_guard lock(holder.mutex);
    holder.sink = std::move(sink);
    s_enabled = static_cast<bool>(holder.sink);
}

Activity::Activity(const char* name) : m_open(s_enabled.load(std::memory_order_relaxed))
{
    m_record.name = name;
}

Activity::~Activity()
{
    if (!m_open)
        return;
    SinkHolder& holder = GetSinkHolder();
    const std::lock_guard lock(holder.mutex);
    if (holder.sink)
        holder.sink(m_record);
}

void Activity::Tag(const char* key, const VString& value)
{
    if (m_open)
        m_record.tags.emplace_back(key, value);
}

void Activity::Tag(const char* key, std::uint64_t value)
{
    if (m_open)
        m_record.tags.emplace_back(key, VString::number(value));
}

}  // namespace art
