// A recursive read/write lock.
#pragma once

#include "vansys/Export.h"
#include "vansys/VSharedMutex.h"

// A lock for many readers or one writer. Any thread may lock it. It must not be destroyed while a thread holds it.
//
// The holder can lock again in the same mode without waiting, even while a writer waits. The holder of the write
// lock can also lock for reading. Pair every lock with an unlock of the same mode on the same thread, in any order.
// Other threads wait until the last unlock. An unlock without a lock does nothing.
//
// A thread that holds only the read lock cannot lock for writing, because it would wait for itself. LockForWrite
// then raises a LogicException (code 0x5D1E7A60, text "no write lock under a read lock").
//
// The cost of locking and unlocking does not depend on the number of locks that the thread holds. Locking may
// throw std::bad_alloc or std::system_error; the lock is then unchanged.
class VANSYS_API VReadWriteLock {
public:
    // `options` must be 0, because no option is defined. Otherwise the constructor raises a LogicException
    // (code 0x6B20F4D1, text "options == 0").
    explicit VReadWriteLock(int options);
    ~VReadWriteLock() = default;
    VReadWriteLock(const VReadWriteLock&) = delete;
    VReadWriteLock& operator=(const VReadWriteLock&) = delete;

    void LockForRead();
    void UnlockRead() noexcept;
    void LockForWrite();
    void UnlockWrite() noexcept;

private:
    void Unlock(bool exclusive) noexcept;

    VSharedMutex m_lock;
};

// Holds the read lock while it lives.
class VReadLocker {
public:
    explicit VReadLocker(VReadWriteLock& lock) : m_lock(lock) { m_lock.LockForRead(); }
    ~VReadLocker() { m_lock.UnlockRead(); }
    VReadLocker(const VReadLocker&) = delete;
    VReadLocker& operator=(const VReadLocker&) = delete;

private:
    VReadWriteLock& m_lock;
};

// Holds the write lock while it lives.
class VWriteLocker {
public:
    explicit VWriteLocker(VReadWriteLock& lock) : m_lock(lock) { m_lock.LockForWrite(); }
    ~VWriteLocker() { m_lock.UnlockWrite(); }
    VWriteLocker(const VWriteLocker&) = delete;
    VWriteLocker& operator=(const VWriteLocker&) = delete;

private:
    VReadWriteLock& m_lock;
};
