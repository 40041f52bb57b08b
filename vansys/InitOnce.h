// Things that are made once in a process.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>

// Runs what it is first given, once, whatever number of threads ask; the others wait
// until it has run. When it throws, the next call tries again.
class InitOnce {
public:
    // Not std::call_once: where that stands on pthread_once, a function that throws can
    // leave the next caller waiting for ever.
    template <typename Function>
    void operator()(Function&& initialise)
    {
        if (m_done.load(std::memory_order_acquire))
            return;
        const std::lock_guard lock(m_mutex);
        if (m_done.load(std::memory_order_relaxed))
            return;
        std::forward<Function>(initialise)();
        m_done.store(true, std::memory_order_release);
    }

private:
    std::mutex m_mutex;
    std::atomic<bool> m_done{false};
};
