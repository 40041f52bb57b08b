// Things that are made once in a process.
#pragma once

#include <mutex>
#include <utility>

// Runs what it is first given, once, whatever number of threads ask; the others wait
// until it has run. When it throws, the next call tries again.
class InitOnce {
public:
    template <typename Function>
    void operator()(Function&& initialise)
    {
        std::call_once(m_flag, std::forward<Function>(initialise));
    }

private:
    std::once_flag m_flag;
};
