// A read/write lock that its holder may take again.
#pragma once

#include <shared_mutex>

#include "vansys/Export.h"

// Many readers or one writer. The thread that holds it takes it again in the same
// mode without waiting, also while a writer waits, and reads while it holds the
// write. Pair every take with a release on the same thread, in any order of modes; other
// threads wait until the last one. A release without a take does nothing.
//
// A take or release costs the same however many locks the thread holds. A take that fails,
// with std::bad_alloc or the system's std::system_error, changes nothing.
//
// Taking the write while holding only the read cannot succeed; it raises a
// LogicException (code 0x5D1E7A60, text "no write lock under a read lock") instead
// of waiting for ever.
//
// A lock belongs to no thread: any thread may take it. It must not die while held.
class VANSYS_API VReadWriteLock {
public:
    // `options` must be 0: no option is defined. Raises a LogicException (code 0x6B20F4D1,
    // text "options == 0") otherwise.
    explicit VReadWriteLock(int options);
    ~VReadWriteLock();
    VReadWriteLock(const VReadWriteLock&) = delete;
    VReadWriteLock& operator=(const VReadWriteLock&) = delete;

    void LockForRead();
    void UnlockRead() noexcept;
    void LockForWrite();
    void UnlockWrite() noexcept;

private:
    void Unlock(bool exclusive) noexcept;

    std::shared_mutex m_lock;
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
