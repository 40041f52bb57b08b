// Holds the sink that an application has set, and calls it.
#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "vancoreplatform/Export.h"

// The lock under which all sinks run: those for the log, for activities and for metrics. So at most one sink runs at a
// time, and one object can be the sink for several of them without a lock of its own. The lock exists until the process
// has ended.
//
// Threads: a thread that owns the lock can acquire it again; only the outermost object releases it.
class VANCOREPLATFORM_API SinkLock {
public:
    SinkLock();
    ~SinkLock();
    SinkLock(const SinkLock&) = delete;
    SinkLock& operator=(const SinkLock&) = delete;

    // True if the calling thread owns the lock, so that a sink is running on it or being set.
    static bool IsMine() noexcept;

private:
    bool m_isOutermost;
};

// Invariant: m_hasSink is true if and only if m_sink is not null, whenever nobody owns the SinkLock.
//
// Threads: thread-safe.
template <typename Sink>
class SinkSlot {
public:
    // Costs one atomic load.
    bool HasSink() const noexcept { return m_hasSink.load(std::memory_order_relaxed); }

    // Sets the sink and returns the previous one. That does not run any more on another thread.
    std::shared_ptr<Sink> Exchange(std::shared_ptr<Sink> sink)
    {
        const SinkLock lock;
        m_hasSink.store(sink != nullptr, std::memory_order_relaxed);
        m_sink.swap(sink);
        return sink;
    }

    // Calls `call` with the sink. Drops the exceptions of the sink. Returns false if there is no sink. Does nothing and
    // returns true if a sink runs on this thread already: its own work is not reported to it.
    template <typename Call>
    bool Pass(const Call& call) noexcept
    {
        if (!HasSink())
            return false;
        if (SinkLock::IsMine())
            return true;
        const SinkLock lock;
        const std::shared_ptr<Sink> sink = m_sink;  // the sink may replace itself
        if (!sink)
            return false;
        try {
            call(*sink);
        } catch (...) {
            // The code that reports must not fail because of its observer.
        }
        return true;
    }

private:
    std::atomic<bool> m_hasSink{false};
    std::shared_ptr<Sink> m_sink;  // guarded by the SinkLock
};
