#include "vancorexml/main/parser/XercesMemory.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

void* XercesMemory::allocate(XMLSize_t size)
{
    try {
        return m_blocks.Allocate(size);
    } catch (const std::bad_alloc&) {
        throw xercesc::OutOfMemoryException();
    }
}

xercesc::MemoryManager* XercesMemory::getExceptionMemoryManager()
{
    return xercesc::XMLPlatformUtils::fgMemoryManager;
}
