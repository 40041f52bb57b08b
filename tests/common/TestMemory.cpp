#include "tests/common/TestMemory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#ifdef _WIN32
#  include <malloc.h>
#  include <windows.h>
#endif

namespace {

// The fault that this thread waits for.
struct Fault {
    bool isOn = false;
    AllocationFaults::Kind kind = AllocationFaults::Kind::New;
    long left = 0;  // the allocations before the fault
    bool forever = false;
    bool hasFailed = false;
};
thread_local Fault fault;

// True if the current allocation must fail.
bool Fails(AllocationFaults::Kind kind) noexcept
{
    if (!fault.isOn || fault.kind != kind || fault.left-- > 0)
        return false;
    if (fault.forever)
        fault.left = 0;
    else
        fault.isOn = false;
    fault.hasFailed = true;
    return true;
}

#ifdef _WIN32

// A DLL may free a block of this program, and this program may free a block of a DLL. So each block is one of malloc.
void* AllocateBlock(std::size_t size) noexcept
{
    return std::malloc(size);
}

void FreeBlock(void* memory) noexcept
{
    std::free(memory);
}

#else

std::atomic<std::size_t> liveBytes = 0;
std::atomic<std::size_t> liveBlocks = 0;
std::atomic<std::size_t> liveMallocBlocks = 0;

// A header before each block. Its alignment is the one that the block needs.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Head {
    std::size_t size;
};

void* AllocateBlock(std::size_t size) noexcept
{
    auto* const head = static_cast<Head*>(std::malloc(sizeof(Head) + size));
    if (!head)
        return nullptr;
    head->size = size;
    liveBytes += size;
    ++liveBlocks;
    return head + 1;
}

void FreeBlock(void* memory) noexcept
{
    if (!memory)
        return;
    Head* const head = static_cast<Head*>(memory) - 1;
    liveBytes -= head->size;
    --liveBlocks;
    std::free(head);
}

#endif

// Returns null if there is no memory.
void* Allocate(std::size_t size) noexcept
{
    return Fails(AllocationFaults::Kind::New) ? nullptr : AllocateBlock(size);
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* const memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return AllocateOrThrow(size);
}
// std::stable_sort calls this one, and frees the memory with an operator delete below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    FreeBlock(memory);
}
void operator delete[](void* memory) noexcept
{
    FreeBlock(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    FreeBlock(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    FreeBlock(memory);
}

#ifdef REPLACES_MALLOC

// The names under which glibc exports its own functions.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

template <typename Function, typename... Arguments>
void* Count(Function allocate, Arguments... arguments) noexcept
{
    void* const memory = Fails(AllocationFaults::Kind::Malloc) ? nullptr : allocate(arguments...);
    if (memory)
        ++liveMallocBlocks;
    else
        errno = ENOMEM;
    return memory;
}

}  // namespace

// Tests are compiled with hidden symbols, which would not replace those of the system.
#  pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) noexcept
{
    return Count(__libc_malloc, size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    return Count(__libc_calloc, count, size);
}

void* realloc(void* memory, std::size_t size) noexcept
{
    if (!memory)
        return malloc(size);
    if (!Fails(AllocationFaults::Kind::Malloc))
        return __libc_realloc(memory, size);
    errno = ENOMEM;
    return nullptr;
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return Count(__libc_memalign, alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return Count(__libc_memalign, alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    *memory = Count(__libc_memalign, alignment, size);
    return *memory ? 0 : ENOMEM;
}

void free(void* memory) noexcept
{
    if (!memory)
        return;
    --liveMallocBlocks;
    __libc_free(memory);
}

}  // extern "C"
#  pragma GCC visibility pop

#endif

#ifdef _WIN32

LiveMemory CountLiveMemory() noexcept
{
    LiveMemory live;
    PROCESS_HEAP_ENTRY block = {};
    while (HeapWalk(reinterpret_cast<HANDLE>(_get_heap_handle()), &block)) {
        if (block.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
            live.bytes += block.cbData;
            ++live.blocks;
        }
    }
    return live;
}

#else

LiveMemory CountLiveMemory() noexcept
{
    return {liveBytes, liveBlocks, liveMallocBlocks};
}

#endif

void AllocationFaults::Begin(Kind kind, long number, bool forever) noexcept
{
    fault = {true, kind, number, forever, false};
}

bool AllocationFaults::End() noexcept
{
    fault.isOn = false;
    return fault.hasFailed;
}
