#include "vansys/MemoryScope.h"

#include <atomic>

#include "vansys/LogicException.h"

// An entry in the list of the thread that opened the scope. Only that thread removes it from the list. Another thread
// that destroys the scope only marks the entry and must not use it afterwards.
struct MemoryScope::Entry {
    const char* name;
    Entry* outer;
    std::atomic<bool> closed{false};

    static Entry* Innermost() noexcept;
};

namespace {

namespace Assertions {

constexpr AssertionSite ClosedByAnotherThread{
    "vansys\\MemoryScope", 60, "MemoryScope can only be used on single thread", 0x3C6E9D12};  // own code

}  // namespace Assertions

// A plain pointer has no destructor, so scopes also work while the process ends.
thread_local void* t_innermost = nullptr;

}  // namespace

// Removes the closed entries above the innermost open one and returns the open one, or null.
MemoryScope::Entry* MemoryScope::Entry::Innermost() noexcept
{
    auto* entry = static_cast<Entry*>(t_innermost);
    while (entry != nullptr && entry->closed.load(std::memory_order_acquire)) {
        Entry* const outer = entry->outer;
        delete entry;
        entry = outer;
    }
    t_innermost = entry;
    return entry;
}

MemoryScope::MemoryScope(const char* name)
    : m_thread(std::this_thread::get_id()),
      m_entry(new Entry{name, Entry::Innermost()})
{
    t_innermost = m_entry;
}

MemoryScope::~MemoryScope()
{
    if (m_entry == nullptr)
        return;
    m_entry->closed.store(true, std::memory_order_release);
    if (m_thread == std::this_thread::get_id())
        Entry::Innermost();
}

void MemoryScope::Close()
{
    if (m_entry == nullptr)
        return;
    if (m_thread != std::this_thread::get_id())
        ThrowLogicException(Assertions::ClosedByAnotherThread);
    m_entry->closed.store(true, std::memory_order_release);
    m_entry = nullptr;
    Entry::Innermost();
}

const char* MemoryScope::Current() noexcept
{
    const Entry* const entry = Entry::Innermost();
    return entry == nullptr ? nullptr : entry->name;
}
