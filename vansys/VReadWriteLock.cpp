#include "vansys/VReadWriteLock.h"

#include "vansys/LogicException.h"

namespace {

// What the thread holds of one lock. The lock itself is taken with the first take, in its
// mode, and let go with the last release; what comes between only counts.
struct Holding {
    const VReadWriteLock* lock = nullptr;   // null when the place is free
    int reads = 0;
    int writes = 0;
    bool exclusive = false;
    Holding* next = nullptr;
};

// The holdings of a thread: a few places for the locks that operations usually take
// together, and a list behind them. There is no destructor on purpose: documents also die
// while the process ends, after the thread's objects.
struct Holdings {
    Holding places[4];
    Holding* more = nullptr;
};

constinit thread_local Holdings t_holdings;

Holding* FindHolding(const VReadWriteLock* lock) noexcept
{
    for (Holding& place : t_holdings.places) {
        if (place.lock == lock) return &place;
    }
    for (Holding* holding = t_holdings.more; holding != nullptr; holding = holding->next) {
        if (holding->lock == lock) return holding;
    }
    return nullptr;
}

Holding* AddHolding(const VReadWriteLock* lock, bool exclusive)
{
    Holding* holding = nullptr;
    for (Holding& place : t_holdings.places) {
        if (place.lock == nullptr) holding = &place;
    }
    if (holding == nullptr) {
        holding = new Holding;
        holding->next = t_holdings.more;
        t_holdings.more = holding;
    }
    holding->lock = lock;
    holding->exclusive = exclusive;
    return holding;
}

void RemoveHolding(Holding* holding) noexcept
{
    for (Holding** link = &t_holdings.more; *link != nullptr; link = &(*link)->next) {
        if (*link != holding) continue;
        *link = holding->next;
        delete holding;
        return;
    }
    *holding = Holding();
}

void ReleaseLast(Holding* holding, std::shared_mutex& mutex) noexcept
{
    if (holding->reads > 0 || holding->writes > 0) return;
    const bool exclusive = holding->exclusive;
    RemoveHolding(holding);
    if (exclusive) {
        mutex.unlock();
    } else {
        mutex.unlock_shared();
    }
}

}  // namespace

VReadWriteLock::VReadWriteLock(int /*options*/) {}

VReadWriteLock::~VReadWriteLock() = default;

void VReadWriteLock::LockForRead()
{
    Holding* holding = FindHolding(this);
    if (holding == nullptr) {
        holding = AddHolding(this, false);
        m_lock.lock_shared();
    }
    ++holding->reads;
}

void VReadWriteLock::UnlockRead() noexcept
{
    Holding* const holding = FindHolding(this);
    if (holding == nullptr || holding->reads == 0) return;
    --holding->reads;
    ReleaseLast(holding, m_lock);
}

void VReadWriteLock::LockForWrite()
{
    Holding* holding = FindHolding(this);
    if (holding != nullptr && !holding->exclusive) ThrowLogicException("vansys\\VReadWriteLock", __LINE__, "no write lock under a read lock", MakeLogicError(0x5D1E7A60));
    if (holding == nullptr) {
        holding = AddHolding(this, true);
        m_lock.lock();
    }
    ++holding->writes;
}

void VReadWriteLock::UnlockWrite() noexcept
{
    Holding* const holding = FindHolding(this);
    if (holding == nullptr || holding->writes == 0) return;
    --holding->writes;
    ReleaseLast(holding, m_lock);
}
