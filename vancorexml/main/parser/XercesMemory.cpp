#include "vancorexml/main/parser/XercesMemory.h"

#include <cstring>
#include <new>
#include <utility>

#include <xercesc/util/PlatformUtils.hpp>

#include "vancoreplatform/CallStack.h"

void* XercesMemory::allocate(XMLSize_t size)
{
    if (CallStack::GetAddress() < m_lowestAddress)
        CheckStack();
    try {
        void* const block = m_blocks.Allocate(size);
        if (m_content == Content::Zero)
            std::memset(block, 0, size);
        return block;
    } catch (const std::bad_alloc&) {
        throw XercesOutOfMemory();
    }
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
