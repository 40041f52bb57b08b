// The memory of the elements that a parse makes.
#pragma once

#include <cstddef>

// Hands out places for elements, many from one allocation, because a document has many
// elements, makes them together and destroys them together.
//
// Ownership: a page is freed with the last of its elements, wherever that has gone to
// meanwhile, once the object has left it; so an element that outlives its document keeps at
// most one page. What is freed within a page is not used again: this is for elements that are
// made at once, not for those that come and go. The object itself may die before the elements.
//
// Threads: places are handed out by one thread; elements may be freed by any.
class ElementPages {
public:
    ElementPages();
    // The first page has that many places, each that follows twice as many up to `most`.
    ElementPages(std::size_t first, std::size_t most) noexcept : m_first(first), m_most(most) {}
    ElementPages(const ElementPages&) = delete;
    ElementPages& operator=(const ElementPages&) = delete;
    ~ElementPages() { Leave(); }

    void* Allocate();
    // Gives back the places that are left; the next page is a first one again.
    void Leave() noexcept;

    // A place of that many bytes that belongs to no page, aligned for whatever is not aligned
    // beyond the usual.
    static void* AllocateAlone(std::size_t size);
    // For either.
    static void Free(void* place) noexcept;

private:
    struct Page;
    struct Place;

    std::size_t m_first;
    std::size_t m_most;
    Page* m_page = nullptr;
    std::size_t m_used = 0;
    std::size_t m_capacity = 0;
};
