#include "vancorexml/main/parser/XercesMemory.h"

#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include <xercesc/util/PlatformUtils.hpp>

#include "vancoreplatform/CallStack.h"

void* XercesMemory::allocate(XMLSize_t size)
{
    if (CallStack::GetAddress() < m_lowestAddress)
        CheckStack();
    void* block = nullptr;
    try {
        block = m_blocks.Allocate(size);
    } catch (const std::bad_alloc&) {
    }
    // The reserve depends on the exceptions that are handled, so this stands behind the handler.
    if (!block)
        block = AllocateFromReserve(size);
    if (!block)
        throw XercesOutOfMemory();
    if (m_content == Content::Zero)
        std::memset(block, 0, size);
    return block;
}

void* XercesMemory::AllocateFromReserve(std::size_t size) noexcept
{
    // Half of the blocks are only for destructors that run because of an exception, whatever took the others. A
    // vector of Xerces that grows needs two.
    const bool mustNotThrow = m_isDestroying || std::uncaught_exceptions() > 0 || std::current_exception();
    return m_reserve.Lend(mustNotThrow ? 0 : Reserve::BlockCount / 2, size);
}

void XercesMemory::KeepReserve()
{
    if (!m_reserve.IsFilled())
        m_reserve.Fill(allocate(Reserve::BlockCount * Reserve::BlockSize));
}

void* XercesMemory::Reserve::Lend(std::size_t first, std::size_t size) noexcept
{
    if (!m_memory || size > BlockSize)
        return nullptr;
    for (std::size_t i = first; i < BlockCount; ++i) {
        if (!m_isLent[i]) {
            m_isLent[i] = true;
            return m_memory + i * BlockSize;
        }
    }
    return nullptr;
}

xercesc::MemoryManager* XercesMemory::getExceptionMemoryManager()
{
    return xercesc::XMLPlatformUtils::fgMemoryManager;
}

void XercesMemory::WatchStack(std::function<void()> report)
{
    // Most parses need less stack, so they need not ask the system for the size of the stack.
    constexpr std::uintptr_t UsualDepth = 49'152;
    m_report = std::move(report);
    m_lowestAddress = CallStack::GetAddress() - UsualDepth;
}

void XercesMemory::IgnoreStack() noexcept
{
    m_lowestAddress = 0;
    m_report = nullptr;
}

void XercesMemory::CheckStack()
{
    m_lowestAddress = CallStack::FindLowestAddress();
    if (CallStack::GetAddress() >= m_lowestAddress)
        return;
    // The report may allocate, and so may the functions that the exception leaves.
    m_lowestAddress = 0;
    if (m_report)
        m_report();
    throw XercesOutOfMemory();
}
