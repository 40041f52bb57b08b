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
// Cost: constant when the pool has a block of the size.
class SmallBlocks {
public:
    SmallBlocks() = default;
    SmallBlocks(const SmallBlocks&) = delete;
    SmallBlocks& operator=(const SmallBlocks&) = delete;
    ~SmallBlocks();

    // Aligned to __STDCPP_DEFAULT_NEW_ALIGNMENT__. Throws std::bad_alloc.
    void* Allocate(std::size_t size)
    {
        if (size <= Largest) {
            Kept& kept = m_kept[ListOf(size)];
            if (Head* const head = kept.first) {
                kept.first = head->next;
                --kept.count;
                return head + 1;
            }
        }
        return AllocateAnew(size);
    }

    // Does nothing for null.
    void Free(void* block) noexcept
    {
        if (!block)
            return;
        Head* const head = static_cast<Head*>(block) - 1;
        if (!HasAddressSanitizer && head->list < Lists && m_kept[head->list].count < MostKept) {
            Kept& kept = m_kept[head->list];
            head->next = kept.first;
            kept.first = head;
            ++kept.count;
        } else {
            ::operator delete(head);
        }
    }

private:
    // Before each block.
    struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Head {
        std::size_t list;  // the free list of the block's size; Lists for a block too large for the pool
        Head* next;        // the next block of the free list
    };
    // A free list. Blocks of the first list are as large as one head, of the second as two, and so on.
    struct Kept {
        Head* first = nullptr;
        std::size_t count = 0;
    };

    static constexpr std::size_t Lists = 8;
    static constexpr std::size_t Largest = Lists * sizeof(Head);
    // In each list.
    static constexpr std::size_t MostKept = 64;

    static std::size_t ListOf(std::size_t size) noexcept { return size != 0 ? (size - 1) / sizeof(Head) : 0; }
    static void* AllocateAnew(std::size_t size);

    std::array<Kept, Lists> m_kept;
};
