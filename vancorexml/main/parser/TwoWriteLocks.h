// The write locks of two documents.
#pragma once

#include <functional>

#include "vansys/VReadWriteLock.h"

// Holds both while it lives, the one at the higher address taken first, so that two threads
// that lock the same two never wait for each other. Both may be one.
class TwoWriteLocks {
public:
    TwoWriteLocks(VReadWriteLock& a, VReadWriteLock& b) : m_first(IsHigher(a, b) ? a : b), m_second(IsHigher(a, b) ? b : a) {}

private:
    static bool IsHigher(const VReadWriteLock& a, const VReadWriteLock& b) { return std::greater<const VReadWriteLock*>()(&a, &b); }

    VWriteLocker m_first;
    VWriteLocker m_second;
};
