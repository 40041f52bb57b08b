// The mutex of VReadWriteLock.
#pragma once

#if defined(_MSC_VER)
#  include <shared_mutex>
#elif !defined(_WIN32)
#  include <pthread.h>
#endif

#include "vansys/Export.h"

#if defined(_MSC_VER)

using VSharedMutex = std::shared_mutex;

#else

// A mutex for many readers or one writer, with the interface of std::shared_mutex.
//
// Ownership: cannot be copied. It must not be destroyed while a thread holds it.
//
// With the standard header, g++ takes much longer for DOM.h (see docs/design.md). On mingw-w64, the
// standard mutexes also allocate memory when they are locked first, and never free it. To allocate it, they take a lock
// that all mutexes of the process share: with Wine 8, the first lock took 0.3 ms. The mutex of Windows needs neither
// memory nor a destructor.
class VANSYS_API VSharedMutex {
public:
    VSharedMutex() = default;
    VSharedMutex(const VSharedMutex&) = delete;
    VSharedMutex& operator=(const VSharedMutex&) = delete;

    // May throw std::system_error, except on Windows.
    void lock();
    void unlock() noexcept;
    void lock_shared();
    void unlock_shared() noexcept;

private:
#  if defined(_WIN32)
    void* m_lock = nullptr;  // an SRWLOCK
#  else
    pthread_rwlock_t m_lock = PTHREAD_RWLOCK_INITIALIZER;
#  endif
};

#endif
