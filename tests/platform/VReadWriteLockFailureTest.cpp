// This test replaces the system functions behind VSharedMutex, so it is a separate program.
#include "vansys/VReadWriteLock.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <cstddef>
#include <deque>
#include <system_error>
#include <thread>

#include "vansys/LogicException.h"

namespace {

bool s_fails = false;

int LockUnlessItFails(const char* function, pthread_rwlock_t* lock)
{
    if (s_fails)
        return EDEADLK;
    return reinterpret_cast<int (*)(pthread_rwlock_t*)>(dlsym(RTLD_NEXT, function))(lock);
}

// Makes every lock operation of the system fail while it lives.
class FailingLocks {
public:
    FailingLocks() { s_fails = true; }
    ~FailingLocks() { s_fails = false; }
};

}  // namespace

extern "C" int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept
{
    return LockUnlessItFails("pthread_rwlock_rdlock", lock);
}

extern "C" int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept
{
    return LockUnlessItFails("pthread_rwlock_wrlock", lock);
}

TEST(VReadWriteLockFailureTest, AFailedReadLockIsNotCounted)
{
    VReadWriteLock lock(0);
    {
        const FailingLocks failure;
        EXPECT_THROW(lock.LockForRead(), std::system_error);
    }
    EXPECT_NO_THROW(lock.LockForWrite()) << "the failed read is still counted";
    lock.UnlockWrite();
}

TEST(VReadWriteLockFailureTest, AFailedWriteLockIsNotCounted)
{
    VReadWriteLock lock(0);
    {
        const FailingLocks failure;
        EXPECT_THROW(lock.LockForWrite(), std::system_error);
    }
    const VReadLocker reader(lock);
    EXPECT_THROW(lock.LockForWrite(), LogicException) << "the failed write is still counted";
}

TEST(VReadWriteLockFailureTest, AFailedLockLeavesOtherLocksHeld)
{
    std::deque<VReadWriteLock> locks;
    for (std::size_t i = 0; i < 6; ++i)
        locks.emplace_back(0);
    for (std::size_t i = 0; i < 5; ++i)
        locks[i].LockForWrite();
    {
        const FailingLocks failure;
        EXPECT_THROW(locks[5].LockForRead(), std::system_error);
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_NO_THROW(locks[i].LockForWrite()) << "lock " << i << " is held already";
    }
    for (std::size_t i = 0; i < 5; ++i) {
        locks[i].UnlockWrite();
        locks[i].UnlockWrite();
    }
    std::thread([&locks] {
        for (VReadWriteLock& lock : locks)
            const VWriteLocker there(lock);
    }).join();
}
