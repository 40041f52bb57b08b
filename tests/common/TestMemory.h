// Counts the memory of a test program, and makes allocations fail. A program that links TestMemory.cpp replaces the
// global operator new, through which our library gives memory to Xerces. On Linux it also replaces malloc, which Qt and
// ICU call, except in builds with a sanitizer, which replaces malloc itself.
#pragma once

#include <cstddef>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#  define REPLACES_MALLOC
#endif

// The memory in use. On Windows, bytes and blocks are those of malloc in all DLLs.
struct LiveMemory {
    std::size_t bytes = 0;         // of operator new
    std::size_t blocks = 0;        // of operator new
    std::size_t mallocBlocks = 0;  // of malloc, which includes those of operator new; 0 if malloc is not replaced

    bool operator==(const LiveMemory&) const = default;
};

// On Windows, the cost is linear in the number of blocks.
LiveMemory CountLiveMemory() noexcept;

namespace AllocationFaults {

#ifdef REPLACES_MALLOC
constexpr bool CanFailMalloc = true;
#else
constexpr bool CanFailMalloc = false;
#endif

enum class Kind {
    New,     // only operator new fails
    Malloc,  // every allocation may fail; requires CanFailMalloc
};

// Makes an allocation of this thread fail: the first one if `number` is 0. With `forever`, all that follow fail too.
void Begin(Kind kind, long number, bool forever = true) noexcept;
// Lets allocations succeed again. Returns true if one failed.
bool End() noexcept;

}  // namespace AllocationFaults
