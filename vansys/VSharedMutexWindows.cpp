#include "vansys/VSharedMutex.h"

#include <windows.h>

namespace {

SRWLOCK* ToSystemLock(void** lock) noexcept
{
    static_assert(sizeof(SRWLOCK) == sizeof(void*));
    return reinterpret_cast<SRWLOCK*>(lock);  // the system defines that a null pointer is an open lock
}

}  // namespace

void VSharedMutex::lock()
{
    AcquireSRWLockExclusive(ToSystemLock(&m_lock));
}

void VSharedMutex::unlock() noexcept
{
    ReleaseSRWLockExclusive(ToSystemLock(&m_lock));
}

void VSharedMutex::lock_shared()
{
    AcquireSRWLockShared(ToSystemLock(&m_lock));
}

void VSharedMutex::unlock_shared() noexcept
{
    ReleaseSRWLockShared(ToSystemLock(&m_lock));
}
