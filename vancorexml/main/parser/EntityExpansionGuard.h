// Bounding the expansion of parameter entities.
#pragma once

#include <cstddef>
#include <functional>

#include <xercesc/framework/MemoryManager.hpp>

// Counts the parameter entities that a document type declaration expands. Xerces counts
// general entities only, and tells nobody when it expands a parameter entity: a few hundred
// bytes of nested ones keep it busy for hours. But each expansion gets a reader of its own,
// an object larger than anything else that a declaration needs, so the memory manager that
// Xerces is given can count them.
//
// Ownership: Xerces refers to it, so it must outlive the reader and what that allocated.
//
// Threads: one at a time.
class EntityExpansionGuard : public xercesc::MemoryManager {
public:
    // As many as Xerces allows of general entities.
    static constexpr std::size_t Limit = 50000;

    // Begins to count. Past the limit `abandon` is called from within the parse; it throws.
    void Watch(std::function<void()> abandon);
    // Ends counting.
    void Release() noexcept;

    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override;

private:
    std::function<void()> m_abandon;
    // Of the document itself and of the entities expanded in it.
    std::size_t m_readers = 0;
    void* m_lastReader = nullptr;
    // Past the limit and outside the making of a reader.
    bool m_mustAbandon = false;
};
