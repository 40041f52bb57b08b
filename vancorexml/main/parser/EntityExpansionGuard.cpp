#include "vancorexml/main/parser/EntityExpansionGuard.h"

#include <utility>

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/PlatformUtils.hpp>

void EntityExpansionGuard::Watch(std::function<void()> abandon)
{
    m_abandon = std::move(abandon);
    m_readers = 0;
    m_lastReader = nullptr;
    m_mustAbandon = false;
}

void EntityExpansionGuard::Release() noexcept
{
    m_abandon = nullptr;
    m_lastReader = nullptr;
    m_mustAbandon = false;
}

void* EntityExpansionGuard::allocate(XMLSize_t size)
{
    if (m_mustAbandon) {
        const std::function<void()> abandon = std::exchange(m_abandon, nullptr);
        Release();
        abandon();
    }
    void* const block = xercesc::XMLPlatformUtils::fgMemoryManager->allocate(size);
    if (m_abandon && size >= sizeof(xercesc::XMLReader)) {
        ++m_readers;
        m_lastReader = block;
    }
    return block;
}

void EntityExpansionGuard::deallocate(void* block)
{
    // Xerces would leak what it prepared for a reader whose making throws, so the parse is
    // abandoned at the first allocation after that reader is gone again.
    if (block && block == m_lastReader) {
        m_lastReader = nullptr;
        m_mustAbandon = m_readers > Limit + 1;
    }
    xercesc::XMLPlatformUtils::fgMemoryManager->deallocate(block);
}

xercesc::MemoryManager* EntityExpansionGuard::getExceptionMemoryManager()
{
    return xercesc::XMLPlatformUtils::fgMemoryManager;
}
