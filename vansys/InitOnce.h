// One-time initialisation.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>

#include "vansys/VMutex.h"

// Runs an initialisation exactly once, even if many threads call. The first caller runs its function; the others
// wait until it has returned. If the function throws, its caller gets the exception and the next call runs its
// own function. Costs one atomic load after the initialisation.
class InitOnce {
public:
    // Does not use std::call_once: if that is implemented with pthread_once, it can block for ever after a function
    // has thrown.
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
    VMutex m_mutex;
    std::atomic<bool> m_done{false};
};
