// The write locks of two documents.
#pragma once

#include <functional>

#include "vansys/VReadWriteLock.h"

// Holds both locks while it lives. Takes the lock at the higher address first, so that two threads
// that take the same two locks cannot deadlock. `a` and `b` may be the same lock.
class TwoWriteLocks {
public:
    TwoWriteLocks(VReadWriteLock& a, VReadWriteLock& b)
        : m_first(IsHigher(a, b) ? a : b),
          m_second(IsHigher(a, b) ? b : a)
    {}

private:
    static bool IsHigher(const VReadWriteLock& a, const VReadWriteLock& b)
    {
        return std::greater<const VReadWriteLock*>()(&a, &b);
    }

    VWriteLocker m_first;
    VWriteLocker m_second;
};
