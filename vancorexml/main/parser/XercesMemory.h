// The memory of a reader of Xerces.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "vancorexml/main/parser/SmallBlocks.h"

// An allocation of Xerces failed. Xerces catches the first base class, and callers of the library the second one.
class XercesOutOfMemory final : public xercesc::OutOfMemoryException, public std::bad_alloc {};

// Allocates the memory of a reader from a pool of small blocks.
//
// Ownership: must outlive the reader and everything that the reader allocated. The destructor also frees the memory
// that Xerces has lost.
//
// Threads: one at a time.
class XercesMemory final : public xercesc::MemoryManager {
public:
    enum class Content { Unset, Zero };  // of the new blocks

    explicit XercesMemory(Content content = Content::Unset) noexcept : m_content(content) {}

    // Throws XercesOutOfMemory; see also WatchStack.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override
    {
        if (!m_reserve.TakeBack(block))
            m_blocks.Free(block);
    }
    // The global memory manager, because exceptions may outlive this object.
    xercesc::MemoryManager* getExceptionMemoryManager() override;

    // Sets memory aside for the destructors of content models: they allocate, and would end the process if they got no
    // memory. Call this before Xerces makes a content model. Throws XercesOutOfMemory.
    //
    // The reserve is for models with less than about a thousand parts. Longer ones may still end the process.
    void KeepReserve();
    // From now on, Xerces only destroys its objects.
    void BeginDestruction() noexcept { m_isDestroying = true; }

    // From this call to IgnoreStack, an allocation ends the recursion of Xerces before the call stack of the thread
    // overflows: it calls `report`, which should throw, once, or throws XercesOutOfMemory if `report` is empty or
    // returns. Xerces allocates memory at each level of every recursion whose depth depends on a document.
    void WatchStack(std::function<void()> report);
    void IgnoreStack() noexcept;

    // Returns the size in bytes of all blocks, see SmallBlocks.
    std::size_t Size() const noexcept { return m_blocks.Size(); }

private:
    // A few blocks that are lent when the heap has no memory.
    class Reserve {
    public:
        static constexpr std::size_t BlockCount = 4;
        static constexpr std::size_t BlockSize = 8192;

        // `memory` has BlockCount blocks.
        void Fill(void* memory) noexcept { m_memory = static_cast<std::byte*>(memory); }
        bool IsFilled() const noexcept { return m_memory != nullptr; }
        // Returns null if the reserve is empty, or if all blocks from `first` on are lent.
        void* Lend(std::size_t first, std::size_t size) noexcept;
        // Returns whether the block belongs to the reserve.
        bool TakeBack(void* block) noexcept
        {
            const std::uintptr_t offset =
                reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(m_memory);
            if (!m_memory || offset >= BlockCount * BlockSize)
                return false;
            m_isLent[offset / BlockSize] = false;
            return true;
        }

    private:
        std::byte* m_memory = nullptr;
        std::array<bool, BlockCount> m_isLent{};
    };

    void CheckStack();
    void* AllocateFromReserve(std::size_t size) noexcept;

    SmallBlocks m_blocks;
    Reserve m_reserve;
    bool m_isDestroying = false;
    Content m_content;
    std::function<void()> m_report;
    // A frame below this address needs a check of the stack.
    std::uintptr_t m_lowestAddress = 0;
};

// Watches the call stack during its life. The memory must outlive the guard.
class XercesStackGuard {
public:
    explicit XercesStackGuard(XercesMemory& memory, std::function<void()> report = {}) : m_memory(memory)
    {
        m_memory.WatchStack(std::move(report));
    }
    ~XercesStackGuard() { m_memory.IgnoreStack(); }
    XercesStackGuard(const XercesStackGuard&) = delete;
    XercesStackGuard& operator=(const XercesStackGuard&) = delete;

private:
    XercesMemory& m_memory;
};
