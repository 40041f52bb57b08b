#include "vancorexml/main/parser/SmallBlocks.h"

#include <limits>
#include <utility>

SmallBlocks::~SmallBlocks()
{
    for (Kept& kept : m_kept) {
        while (kept.first)
            ::operator delete(std::exchange(kept.first, kept.first->next));
    }
}

void* SmallBlocks::AllocateAnew(std::size_t size)
{
    const std::size_t list = size <= Largest ? ListOf(size) : Lists;
    const std::size_t bytes = size <= Largest ? (list + 1) * sizeof(Head) : size;
    if (bytes > std::numeric_limits<std::size_t>::max() - sizeof(Head))
        throw std::bad_alloc();
    return new (::operator new(sizeof(Head) + bytes)) Head{list, nullptr} + 1;
}
