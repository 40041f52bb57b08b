// Attribution of memory to tasks.
#pragma once

#include <thread>

#include "vansys/Export.h"

// While the scope is open, it attributes the memory that its thread allocates to the task `name`.
//
// The thread that opened a scope must close it. On another thread, Close raises a LogicException (code
// 0x3C6E9D12, text "MemoryScope can only be used on single thread") and the scope stays open. Scopes may be
// closed in any order. Closing a scope again does nothing. The destructor closes an open scope, on any thread,
// and raises nothing.
class VANSYS_API MemoryScope {
public:
    // `name` must outlive the scope.
    explicit MemoryScope(const char* name);
    ~MemoryScope();
    MemoryScope(const MemoryScope&) = delete;
    MemoryScope& operator=(const MemoryScope&) = delete;

    void Close();

    // Returns the name of the calling thread's innermost open scope, or null if there is none.
    static const char* Current() noexcept;

private:
    struct Entry;

    std::thread::id m_thread;
    Entry* m_entry;  // in the list of the opening thread; null once closed
};
