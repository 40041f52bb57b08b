#include "vansys/VReadWriteLock.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr char File[] = "vansys\\VReadWriteLock";
constexpr AssertionSite UnknownOptions{File, 103, "options == 0", 0x6B20F4D1};                     // own code
constexpr AssertionSite WriteUnderRead{File, 131, "no write lock under a read lock", 0x5D1E7A60};  // own code

}  // namespace Assertions

// The number of times that one thread has locked one VReadWriteLock, for each mode. The first call locks the
// mutex, shared for a read and exclusive for a write. The last unlock releases the mutex. The calls between them
// only change the counts.
struct Holding {
    int reads = 0;
    int writes = 0;
    bool exclusive = false;
};

using HoldingMap = std::unordered_map<const VReadWriteLock*, Holding>;

struct Slot {
    const VReadWriteLock* lock = nullptr;  // null when the slot is free
    Holding holding;
};

// The holdings of a thread: a few slots for the locks that operations usually take together, and a map for the rest.
// Has no destructor on purpose: static documents are destroyed while the process ends, after the thread's objects.
struct Holdings {
    Slot slots[4];
    HoldingMap* more = nullptr;  // owned; deleted with the thread's last holding
};

constinit thread_local Holdings t_holdings;

Slot* FindSlot(const VReadWriteLock* lock) noexcept
{
    for (Slot& slot : t_holdings.slots) {
        if (slot.lock == lock)
            return &slot;
    }
    return nullptr;
}

Holding* FindHolding(const VReadWriteLock* lock) noexcept
{
    if (Slot* const slot = FindSlot(lock))
        return &slot->holding;
    if (t_holdings.more == nullptr)
        return nullptr;
    const auto found = t_holdings.more->find(lock);
    return found == t_holdings.more->end() ? nullptr : &found->second;
}

bool HoldsNothing() noexcept
{
    const auto isFree = [](const Slot& slot) { return slot.lock == nullptr; };
    return t_holdings.more->empty() && std::all_of(std::begin(t_holdings.slots), std::end(t_holdings.slots), isFree);
}

void RemoveHolding(const VReadWriteLock* lock) noexcept
{
    if (Slot* const slot = FindSlot(lock)) {
        *slot = Slot();
    } else {
        t_holdings.more->erase(lock);
    }
    if (t_holdings.more == nullptr || !HoldsNothing())
        return;
    delete t_holdings.more;
    t_holdings.more = nullptr;
}

Holding& AddHolding(const VReadWriteLock* lock, bool exclusive)
{
    if (Slot* const slot = FindSlot(nullptr)) {
        *slot = Slot{lock, {0, 0, exclusive}};
        return slot->holding;
    }
    if (t_holdings.more == nullptr)
        t_holdings.more = new HoldingMap;
    return t_holdings.more->emplace(lock, Holding{0, 0, exclusive}).first->second;
}

// Adds the holding and calls `lockFunction`. When either fails, nothing is recorded.
template <typename LockFunction>
Holding& LockFirst(const VReadWriteLock* lock, bool exclusive, LockFunction lockFunction)
{
    Holding& holding = AddHolding(lock, exclusive);
    try {
        lockFunction();
    } catch (...) {
        RemoveHolding(lock);
        throw;
    }
    return holding;
}

}  // namespace

VReadWriteLock::VReadWriteLock(int options)
{
    if (options != 0)
        ThrowLogicException(Assertions::UnknownOptions);
}

void VReadWriteLock::LockForRead()
{
    Holding* holding = FindHolding(this);
    if (holding == nullptr)
        holding = &LockFirst(this, false, [this] { m_lock.lock_shared(); });
    ++holding->reads;
}

void VReadWriteLock::UnlockRead() noexcept
{
    Holding* const holding = FindHolding(this);
    if (holding == nullptr || holding->reads == 0)
        return;
    --holding->reads;
    if (holding->reads + holding->writes == 0)
        Unlock(holding->exclusive);
}

void VReadWriteLock::LockForWrite()
{
    Holding* holding = FindHolding(this);
    if (holding != nullptr && !holding->exclusive)
        ThrowLogicException(Assertions::WriteUnderRead);
    if (holding == nullptr)
        holding = &LockFirst(this, true, [this] { m_lock.lock(); });
    ++holding->writes;
}

void VReadWriteLock::UnlockWrite() noexcept
{
    Holding* const holding = FindHolding(this);
    if (holding == nullptr || holding->writes == 0)
        return;
    --holding->writes;
    if (holding->reads + holding->writes == 0)
        Unlock(holding->exclusive);
}

void VReadWriteLock::Unlock(bool exclusive) noexcept
{
    RemoveHolding(this);
    if (exclusive) {
        m_lock.unlock();
    } else {
        m_lock.unlock_shared();
    }
}
