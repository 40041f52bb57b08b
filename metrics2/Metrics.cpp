#include "metrics2/Metrics.h"

#include <atomic>
#include <chrono>

#include "vancoreplatform/SinkSlot.h"
#include "vancoreplatform/StaticObject.h"

namespace Metrics {

namespace {

std::atomic<std::uint64_t> s_enabledBits{0};

SinkSlot<Sink>& GetSlot()
{
    return GetStaticObject<SinkSlot<Sink>>();
}

std::uint64_t Now() noexcept
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceStart).count());
}

}  // namespace

Sink::~Sink() = default;

std::shared_ptr<Sink> SetSink(std::shared_ptr<Sink> sink, std::uint64_t bits)
{
    const SinkLock lock;  // so that the bits are those of the sink
    s_enabledBits = sink ? bits : 0;
    return GetSlot().Exchange(std::move(sink));
}

bool TestBitsAndContext(std::uint64_t bits) noexcept
{
    return (s_enabledBits.load(std::memory_order_relaxed) & bits) != 0;
}

Scope::Scope(const char* name, std::uint64_t bits) : m_open(TestBitsAndContext(bits))
{
    m_record.name = name;
    if (m_open)
        m_record.start = Now();
}

Scope::~Scope()
{
    if (!m_open)
        return;
    m_record.nanoseconds = Now() - m_record.start;
    GetSlot().Pass([this](Sink& sink) { sink.Finish(m_record); });
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
