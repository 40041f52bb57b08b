// Counts the allocations of a traversal.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

#include "vancorexml/main/parser/DOMElementTraversal.h"

namespace {

std::size_t allocations = 0;

void* Allocate(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

TEST(TraversalMemoryTest, RangeForAllocatesEachStackOnce)
{
    DOMElement root("r");
    DOMElement& wide = root.AddNewChild("a", nullptr);
    for (int i = 0; i < 120; ++i)
        wide.AddNewChild("b", nullptr);
    std::size_t elements = 0;
    const std::size_t before = allocations;
    for (const DOMElement& element : DOMElementTraversal::PreorderTraversal(root))
        elements += element.GetName().length() == 1;
    // The traversal and the copy that begin() returns each allocate a generator and its stack.
    EXPECT_EQ(allocations - before, 4u);
    EXPECT_EQ(elements, 122u);
}

}  // namespace
