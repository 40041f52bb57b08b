// Mutexes for objects of which a process makes many.
#pragma once

#include <mutex>

#ifdef __MINGW32__

#  include "vansys/Export.h"

// The mutexes of mingw-w64 allocate memory when they are locked first, and never free it. To allocate it, they take
// a lock that all mutexes of the process share: with Wine 8, the first lock of a std::shared_mutex took 0.3 ms. This
// mutex of the system needs neither memory nor a destructor.
class VANSYS_API VSharedMutex {
public:
    VSharedMutex() = default;
    VSharedMutex(const VSharedMutex&) = delete;
    VSharedMutex& operator=(const VSharedMutex&) = delete;

    void lock() noexcept;
    void unlock() noexcept;
    void lock_shared() noexcept;
    void unlock_shared() noexcept;

private:
    void* m_lock = nullptr;  // an SRWLOCK
};

using VMutex = VSharedMutex;

#else

#  include <shared_mutex>

using VMutex = std::mutex;
using VSharedMutex = std::shared_mutex;

#endif
