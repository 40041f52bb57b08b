// Attribution of memory to a task.
#pragma once

#include <thread>

#include "vansys/Export.h"

// Marks the memory a thread takes while the scope lives as belonging to `name`. It must
// be closed by the thread that opened it: Close raises a LogicException (code
// 0x3C6E9D12) whose text is "MemoryScope can only be used on single thread" otherwise,
// and the scope stays open. Scopes close in any order; closing again does nothing.
// The destructor closes an open scope and raises nothing.
class VANSYS_API MemoryScope {
public:
    // `name` must outlive the scope.
    explicit MemoryScope(const char* name);
    ~MemoryScope();
    MemoryScope(const MemoryScope&) = delete;
    MemoryScope& operator=(const MemoryScope&) = delete;

    void Close();

    // The name of the calling thread's innermost open scope, null when there is none.
    static const char* Current() noexcept;

private:
    struct Entry;

    std::thread::id m_thread;
    Entry* m_entry;  // of the opening thread's list; null once closed
};
