// One-time initialisation.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>

// Runs one initialisation, exactly once, however many threads call. The first caller runs its function; the
// others wait until it has returned. If the function throws, its caller gets the exception and the next call
// tries again. Costs one atomic load once the initialisation is done.
class InitOnce {
public:
    // std::call_once is not used: implemented with pthread_once, it can block for ever after a function has thrown.
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
