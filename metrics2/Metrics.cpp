#include "metrics2/Metrics.h"

#include <atomic>
#include <chrono>
#include <mutex>

#include "vancoreplatform/StaticObject.h"

namespace Metrics {

namespace {

std::atomic<std::uint64_t> s_enabledBits{0};

struct SinkHolder {
    std::mutex mutex;
    std::function<void(const ScopeRecord&)> sink;  // guarded by mutex
};

SinkHolder& GetSinkHolder()
{
    return GetStaticObject<SinkHolder>();
}

std::uint64_t Now() noexcept
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

}  // namespace

void SetSink(std::function<void(const ScopeRecord&)> sink, std::uint64_t bits)
{
    SinkHolder& holder = GetSinkHolder();
    const std::lock_guard lock(holder.mutex);
    holder.sink = std::move(sink);
    s_enabledBits = holder.sink ? bits : 0;
}

bool TestBitsAndContext(std::uint64_t bits) noexcept
{
    return (s_enabledBits.load(std::memory_order_relaxed) & bits) != 0;
}

Scope::Scope(const char* name, std::uint64_t bits) : m_open(TestBitsAndContext(bits))
{
    m_record.name = name;
    if (m_open)
        m_start = Now();
}

Scope::~Scope()
{
    if (!m_open)
        return;
    m_record.nanoseconds = Now() - m_start;
    SinkHolder& holder = GetSinkHolder();
    const std::lock_guard lock(holder.mutex);
    if (holder.sink)
        holder.sink(m_record);
}

void Scope::Record(const char* key, const VString& value)
{
    if (m_open)
        m_record.values.emplace_back(key, value);
}

void Scope::Record(const char* key, std::uint64_t value)
{
    if (m_open)
        m_record.values.emplace_back(key, VString::number(value));
}

}  // namespace Metrics
