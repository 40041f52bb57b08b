#include "vancorexml/main/parser/EntityExpansionGuard.h"

#include <algorithm>
#include <new>
#include <utility>

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "vancoreplatform/VFormatString.h"

namespace {

// A block holds an object and, before it, a word or two of Xerces' own.
bool IsReader(std::size_t size) noexcept
{
    constexpr std::size_t MostBefore = 64;
    return size >= sizeof(xercesc::XMLReader) && size <= sizeof(xercesc::XMLReader) + MostBefore;
}

}  // namespace

void EntityExpansionGuard::Watch(std::function<void(const VString&)> abandon)
{
    Release();
    m_abandon = std::move(abandon);
    m_isInProlog = true;
    m_readers = 0;
    m_longest = 0;
    m_text = 0;
}

void EntityExpansionGuard::Release() noexcept
{
    m_abandon = nullptr;
    m_lastReader = nullptr;
    m_mustAbandon = false;
}

void EntityExpansionGuard::Declare(std::size_t length) noexcept
{
    m_longest = std::max(m_longest, length);
}

void EntityExpansionGuard::Expand(std::size_t length)
{
    // Its reader was counted with the longest.
    m_text += length;
    m_text -= m_longest;
    if (IsExceeded())
        Abandon();
}

void EntityExpansionGuard::Default(std::size_t length)
{
    // An attribute takes memory also when it says nothing.
    constexpr std::size_t AttributeWorth = 16;
    m_text += length + AttributeWorth;
    if (IsExceeded())
        Abandon();
}

void EntityExpansionGuard::Abandon()
{
    const auto abandon = std::exchange(m_abandon, nullptr);
    const bool isText = m_text > TextLimit;
    Release();
    if (abandon)
        abandon(isText ? VFormatString("'%1' characters of entities").arg(std::uint64_t{TextLimit}) : VFormatString("'%1' entity expansions").arg(std::uint64_t{Limit}));
}

void* EntityExpansionGuard::allocate(XMLSize_t size)
{
    if (m_mustAbandon)
        Abandon();
    void* block = nullptr;
    try {
        block = m_blocks.Allocate(size);
    } catch (...) {
        throw xercesc::OutOfMemoryException();
    }
    if (IsReader(size) && m_abandon) {
        m_readers += m_isInProlog;
        m_text += m_longest;
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
        m_mustAbandon = IsExceeded();
    }
    m_blocks.Free(block);
}

xercesc::MemoryManager* EntityExpansionGuard::getExceptionMemoryManager()
{
    return xercesc::XMLPlatformUtils::fgMemoryManager;
}
