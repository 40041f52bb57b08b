#include "vancorexml/main/parser/SmallBlocks.h"

#include <limits>

SmallBlocks::~SmallBlocks()
{
    for (Links* next = m_blocks.next; next != &m_blocks;) {
        auto* const header = static_cast<Header*>(next);
        next = header->next;
        ::operator delete(header);
    }
}

void* SmallBlocks::AllocateFromHeap(std::size_t size)
{
    const std::size_t bytes = size <= LargestBlock ? (ListOf(size) + 1) * Step : size;
    if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Header))
        throw std::bad_alloc();
    auto* const header =
        new (::operator new(sizeof(Header) + bytes)) Header{{&m_blocks, m_blocks.next}, bytes, nullptr};
    header->next->previous = header;
    m_blocks.next = header;
    m_size += bytes;
    return header + 1;
}

void SmallBlocks::FreeToHeap(Header* header) noexcept
{
    header->previous->next = header->next;
    header->next->previous = header->previous;
    m_size -= header->size;
    ::operator delete(header);
}
