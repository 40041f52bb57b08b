// The memory of the elements that a parse makes.
#pragma once

#include <cstddef>

// Allocates elements from pages that hold many of them, because a parse makes the elements of a
// document together and they are usually destroyed together.
//
// Ownership: a page is freed when its last element dies, whichever document owns that element by
// then, and this object has released the page. So an element that outlives its document keeps at
// most one page. Freed places are not reused: use pages for elements that are made together, not
// for elements that are made and freed one by one. The object may die before the elements.
//
// Threads: places are handed out by one thread; elements may be freed by any.
class ElementPages {
public:
    ElementPages();
    // The first page has `first` places, and each further page twice as many, up to `max`.
    ElementPages(std::size_t first, std::size_t max) noexcept : m_firstCapacity(first), m_maxCapacity(max) {}
    ElementPages(const ElementPages&) = delete;
    ElementPages& operator=(const ElementPages&) = delete;
    ~ElementPages() { Release(); }

    void* Allocate();
    // Releases the page with its unused places; the next page has the size of a first one again.
    void Release() noexcept;

    // Allocates a place of `size` bytes that belongs to no page, aligned to
    // __STDCPP_DEFAULT_NEW_ALIGNMENT__.
    static void* AllocateStandalone(std::size_t size);
    // Frees a place from Allocate or AllocateStandalone.
    static void Free(void* place) noexcept;

private:
    struct Page;
    struct Slot;

    std::size_t m_firstCapacity;
    std::size_t m_maxCapacity;
    Page* m_page = nullptr;
    std::size_t m_used = 0;
    std::size_t m_capacity = 0;
};
