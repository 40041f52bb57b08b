// The memory of a reader of Xerces.
#pragma once

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
    void deallocate(void* block) override { m_blocks.Free(block); }
    // The global memory manager, because exceptions may outlive this object.
    xercesc::MemoryManager* getExceptionMemoryManager() override;

    // From this call to IgnoreStack, an allocation ends the recursion of Xerces before the call stack of the thread
    // overflows: it calls `report`, which should throw, once, or throws XercesOutOfMemory if `report` is empty or
    // returns. Xerces allocates memory at each level of every recursion whose depth depends on a document.
    void WatchStack(std::function<void()> report);
    void IgnoreStack() noexcept;

    // Returns the size in bytes of all blocks, see SmallBlocks.
    std::size_t Size() const noexcept { return m_blocks.Size(); }

private:
    void CheckStack();

    SmallBlocks m_blocks;
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
