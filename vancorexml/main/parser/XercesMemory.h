// The memory of a reader of Xerces.
#pragma once

#include <xercesc/framework/MemoryManager.hpp>

#include "vancorexml/main/parser/SmallBlocks.h"

// Allocates the memory of a reader from a pool of small blocks.
//
// Ownership: must outlive the reader and everything that the reader allocated.
//
// Threads: one at a time.
class XercesMemory final : public xercesc::MemoryManager {
public:
    // Throws xercesc::OutOfMemoryException.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override { m_blocks.Free(block); }
    // The global memory manager, because exceptions may outlive this object.
    xercesc::MemoryManager* getExceptionMemoryManager() override;

private:
    SmallBlocks m_blocks;
};
