// A read/write lock that its holder may take again.
#pragma once

#include <shared_mutex>

#include "vansys/Export.h"

// Many readers or one writer. The thread that holds it takes it again in the same
// mode without waiting, also while a writer waits, and reads while it holds the
// write. Each take needs its release by the same thread, in any order of modes; other
// threads stay out until the last. A release without a take does nothing.
//
// Taking the write while holding only the read cannot succeed; it raises a
// LogicException (code 0x5D1E7A60, text "no write lock under a read lock") instead
// of waiting for ever.
//
// A lock belongs to no thread: any thread may take it. It must not die while held.
class VANSYS_API VReadWriteLock {
public:
    // `options` is kept for the callers of the product; only 0 is defined.
    explicit VReadWriteLock(int options);
    ~VReadWriteLock();
    VReadWriteLock(const VReadWriteLock&) = delete;
    VReadWriteLock& operator=(const VReadWriteLock&) = delete;

    void LockForRead();
    void UnlockRead() noexcept;
    void LockForWrite();
    void UnlockWrite() noexcept;

private:
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
