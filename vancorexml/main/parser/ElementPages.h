// Memory pages for elements.
#pragma once

#include <cstddef>

// Allocates elements from pages that hold many elements. A parse or a copy makes many elements together,
// and they are usually destroyed together.
//
// Ownership: this object may die before the elements. A page is freed when this object has released it
// and its last element has died, whichever document owns that element by then. So an element that
// outlives its document keeps at most one page. The place of a dead element is not reused: use pages for
// elements that are made together, not for elements that are made and freed one by one.
//
// Threads: one thread at a time may allocate. Any thread may free.
class ElementPages {
public:
    ElementPages();
    // The first page has `first` places, and each further page twice as many, up to `max`.
    ElementPages(std::size_t first, std::size_t max) noexcept : m_firstCapacity(first), m_maxCapacity(max) {}
    ElementPages(const ElementPages&) = delete;
    ElementPages& operator=(const ElementPages&) = delete;
    ~ElementPages() { Release(); }

    // Allocates the place of one element.
    void* Allocate();
    // Releases the current page with its unused places. The next page has the size of a first page again.
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
