// Bounding the expansion of entities.
#pragma once

#include <cstddef>
#include <functional>

#include <xercesc/framework/MemoryManager.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SmallBlocks.h"

// Counts the parameter entities that a document type declaration expands, and the text of all
// the entities that a document expands. Xerces counts the general entities only, and no text:
// a few hundred bytes of nested parameter entities keep it busy for hours, and a megabyte
// that is used again and again becomes gigabytes. Nor does it tell when it expands a
// parameter entity or one in an attribute. But each expansion gets a reader of its own, an
// object larger than anything else that a declaration needs, so the memory manager that
// Xerces is given can count them.
//
// Ownership: Xerces refers to it, so it must outlive the reader and what that allocated.
//
// Threads: one at a time.
class EntityExpansionGuard : public xercesc::MemoryManager {
public:
    // As many expansions as Xerces allows of general entities.
    static constexpr std::size_t Limit = 50000;
    // Two thousand UTF-16 code units for each of them.
    static constexpr std::size_t TextLimit = 2000 * Limit;

    // Begins to count. Past a limit `abandon` is called from within the parse, with what the
    // document has too much of; it throws.
    void Watch(std::function<void(const VString& excess)> abandon);
    // Ends counting.
    void Release() noexcept;
    // The declarations are over: Xerces counts the expansions that follow itself.
    void EndProlog() noexcept { m_isInProlog = false; }

    // An entity with that many code units is declared. Where it is not known which entity is
    // expanded it is taken for the longest.
    void Declare(std::size_t length) noexcept;
    // The entity whose expansion began last has that many code units.
    void Expand(std::size_t length);
    // A declaration adds an attribute that is not there, with that many code units of name and
    // value.
    void Default(std::size_t length);

    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;
    xercesc::MemoryManager* getExceptionMemoryManager() override;

private:
    bool IsExceeded() const noexcept { return m_readers > Limit + 1 || m_text > TextLimit; }
    void Abandon();

    SmallBlocks m_blocks;
    std::function<void(const VString&)> m_abandon;
    bool m_isInProlog = true;
    // Of the document itself and of the entities expanded in its declarations.
    std::size_t m_readers = 0;
    void* m_lastReader = nullptr;
    // Of the longest entity declared, and of all that were expanded.
    std::size_t m_longest = 0;
    std::size_t m_text = 0;
    // Past a limit and outside the making of a reader.
    bool m_mustAbandon = false;
};
