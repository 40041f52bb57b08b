// A pool for the small allocations of a parse.
#pragma once

#include <array>
#include <cstddef>
#include <new>

#include "vancorexml/main/parser/AddressSanitizer.h"

// A pool of small blocks. A validation allocates and frees half a dozen of them for every element,
// which costs a general allocator more time than all other work of the library on the element.
//
// Ownership: only the pool that allocated a block may free it. The pool keeps less than fifty
// kilobytes of freed blocks, and frees them when it dies.
//
// Threads: one at a time.
//
// Cost: constant if the pool has a free block of the size, otherwise that of a general allocation.
class SmallBlocks {
public:
    SmallBlocks() = default;
    SmallBlocks(const SmallBlocks&) = delete;
    SmallBlocks& operator=(const SmallBlocks&) = delete;
    ~SmallBlocks();

    // Aligned to __STDCPP_DEFAULT_NEW_ALIGNMENT__. Throws std::bad_alloc.
    void* Allocate(std::size_t size)
    {
        if (size <= LargestBlock) {
            FreeList& list = m_freeLists[ListOf(size)];
            if (Header* const header = list.first) {
                list.first = header->next;
                --list.count;
                return header + 1;
            }
        }
        return AllocateFromHeap(size);
    }

    // Does nothing for null.
    void Free(void* block) noexcept
    {
        if (!block)
            return;
        Header* const header = static_cast<Header*>(block) - 1;
        if (!HasAddressSanitizer && header->list < ListCount && m_freeLists[header->list].count < MaxFreeBlocks) {
            FreeList& list = m_freeLists[header->list];
            header->next = list.first;
            list.first = header;
            ++list.count;
        } else {
            ::operator delete(header);
        }
    }

private:
    // Stored before each block.
    struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Header {
        std::size_t list;  // the free list of the block's size; ListCount for a block too large for the pool
        Header* next;      // the next block of the free list
    };
    // A list of free blocks of one size. The size is one Header in the first list, two in the second, and so on.
    struct FreeList {
        Header* first = nullptr;
        std::size_t count = 0;
    };

    static constexpr std::size_t ListCount = 8;
    static constexpr std::size_t LargestBlock = ListCount * sizeof(Header);
    static constexpr std::size_t MaxFreeBlocks = 64;  // in each list

    static std::size_t ListOf(std::size_t size) noexcept { return size != 0 ? (size - 1) / sizeof(Header) : 0; }
    static void* AllocateFromHeap(std::size_t size);

    std::array<FreeList, ListCount> m_freeLists;
};
