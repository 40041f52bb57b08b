#include "vancorexml/main/parser/SmallBlocks.h"

#include <limits>
#include <utility>

SmallBlocks::~SmallBlocks()
{
    for (FreeList& list : m_freeLists) {
        while (list.first)
            ::operator delete(std::exchange(list.first, list.first->next));
    }
}

void* SmallBlocks::AllocateFromHeap(std::size_t size)
{
    const std::size_t list = size <= LargestBlock ? ListOf(size) : ListCount;
    const std::size_t bytes = size <= LargestBlock ? (list + 1) * sizeof(Header) : size;
    if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Header))
        throw std::bad_alloc();
    return new (::operator new(sizeof(Header) + bytes)) Header{list, nullptr} + 1;
}
