#include "art-cpp/Activity.h"

#include <chrono>

#include "vancoreplatform/SinkSlot.h"
#include "vancoreplatform/StaticObject.h"

namespace art {

namespace {

SinkSlot<ActivitySink>& GetSlot()
{
    return GetStaticObject<SinkSlot<ActivitySink>>();
}

std::uint64_t Now() noexcept
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

}  // namespace

ActivitySink::~ActivitySink() = default;

std::shared_ptr<ActivitySink> SetActivitySink(std::shared_ptr<ActivitySink> sink)
{
    return GetSlot().Exchange(std::move(sink));
}

Activity::Activity(const char* name) : m_open(GetSlot().HasSink())
{
    m_record.name = name;
    if (m_open)
        m_record.start = Now();
}

Activity::~Activity()
{
    if (!m_open)
        return;
    m_record.nanoseconds = Now() - m_record.start;
    GetSlot().Pass([this](ActivitySink& sink) { sink.Finish(m_record); });
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
