// Memory pages for elements.
#pragma once

#include <cstddef>

// Allocates elements of one size from pages that hold many elements. A parse or a copy makes many elements together,
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
    // The elements have `size` bytes, a multiple of the size of a pointer, and need no larger alignment than a pointer.
    explicit ElementPages(std::size_t size) noexcept : m_slotSize(sizeof(void*) + size) {}
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

    // The bytes of a slot: a pointer to its page and the element behind it. Free finds the page by the pointer.
    const std::size_t m_slotSize;
    Page* m_page = nullptr;
    std::size_t m_free = 0;  // the slots of the page that are left
    std::size_t m_capacity = 0;
};
