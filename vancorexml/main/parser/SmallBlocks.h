// The memory of a reader of Xerces: a pool that knows all of its blocks.
#pragma once

#include <array>
#include <cstddef>
#include <new>

#include "vancorexml/main/parser/AddressSanitizer.h"

// A pool of small blocks. A validation allocates and frees half a dozen of them for every element,
// which costs a general allocator more time than all other work of the library on the element.
//
// Ownership: only the pool that allocated a block may free it. The pool keeps less than sixty
// kilobytes of freed blocks. Its destructor frees them and all blocks that are still in use.
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
                list.first = header->nextFree;
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
        if (!HasAddressSanitizer && header->size <= LargestBlock) {
            FreeList& list = m_freeLists[ListOf(header->size)];
            if (list.count < MaxFreeBlocks) {
                header->nextFree = list.first;
                list.first = header;
                ++list.count;
                return;
            }
        }
        FreeToHeap(header);
    }

    // Returns the size in bytes of all blocks, without their headers: those in use and the free ones that the pool
    // keeps.
    std::size_t Size() const noexcept { return m_size; }

private:
    // The neighbours in the ring of all blocks.
    struct Links {
        Links* previous;
        Links* next;
    };
    // Stored before each block.
    struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Header : Links {
        std::size_t size;  // of the block
        Header* nextFree;  // the next block of the free list
    };
    // A list of free blocks of one size. The size is one Step in the first list, two in the second, and so on.
    struct FreeList {
        Header* first = nullptr;
        std::size_t count = 0;
    };

    static constexpr std::size_t ListCount = 8;
    static constexpr std::size_t Step = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
    static constexpr std::size_t LargestBlock = ListCount * Step;
    static constexpr std::size_t MaxFreeBlocks = 64;  // in each list

    static std::size_t ListOf(std::size_t size) noexcept { return size != 0 ? (size - 1) / Step : 0; }
    void* AllocateFromHeap(std::size_t size);
    void FreeToHeap(Header* header) noexcept;

    std::array<FreeList, ListCount> m_freeLists;
    // Belongs to the ring, but to no block. A Header would be wrong here: Xerces aligns its own objects, which contain
    // a pool, to eight bytes only.
    Links m_blocks{&m_blocks, &m_blocks};
    std::size_t m_size = 0;
};
