#include <cerrno>
#include <system_error>

#include "vansys/VSharedMutex.h"

namespace {

void Check(int error)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category());
}

}  // namespace

void VSharedMutex::lock()
{
    Check(pthread_rwlock_wrlock(&m_lock));
}

void VSharedMutex::unlock() noexcept
{
    pthread_rwlock_unlock(&m_lock);
}

void VSharedMutex::lock_shared()
{
    int error = 0;
    // Repeats while too many threads hold the lock.
    do {
        error = pthread_rwlock_rdlock(&m_lock);
    } while (error == EAGAIN);
    Check(error);
}

void VSharedMutex::unlock_shared() noexcept
{
    pthread_rwlock_unlock(&m_lock);
}
