#include "vancorexml/main/parser/ElementPages.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <new>

#include "vancorexml/main/parser/DOMElement.h"

namespace {

#ifdef __SANITIZE_ADDRESS__
// Every element apart, so that the use of one that is freed is seen.
constexpr std::size_t FirstCapacity = 1;
constexpr std::size_t MaxCapacity = 1;
#else
// A small document takes little. The pages of a large one are so large that common allocators
// merge, when one is freed, what was freed around it, while that is still in the cache.
constexpr std::size_t FirstCapacity = 4;
constexpr std::size_t MaxCapacity = 1024;
#endif

}  // namespace

// Where an element stands; the word before it tells Free whose it is.
struct ElementPages::Place {
    Page* page;   // null for a place of its own
    alignas(DOMElement) unsigned char element[sizeof(DOMElement)];

    static Place* Of(void* element) noexcept { return reinterpret_cast<Place*>(static_cast<unsigned char*>(element) - offsetof(Place, element)); }
};

struct ElementPages::Page {
    // Of elements, and of places that are still to be handed out.
    std::atomic<std::size_t> alive;

    Place* Places() noexcept { return reinterpret_cast<Place*>(this + 1); }
    static void Drop(Page* page, std::size_t count) noexcept
    {
        // What other threads did to the page happens before it is freed.
        if (page->alive.fetch_sub(count, std::memory_order_acq_rel) == count)
            ::operator delete(page);
    }
};

void* ElementPages::Allocate()
{
    if (m_used == m_capacity) {
        const std::size_t capacity = std::clamp(2 * m_capacity, FirstCapacity, MaxCapacity);
        void* const memory = ::operator new(sizeof(Page) + capacity * sizeof(Place));
        m_page = new (memory) Page{capacity};
        m_used = 0;
        m_capacity = capacity;
    }
    Place* const place = m_page->Places() + m_used++;
    place->page = m_page;
    return place->element;
}

void ElementPages::Leave() noexcept
{
    if (m_used != m_capacity)
        Page::Drop(m_page, m_capacity - m_used);
}

void* ElementPages::AllocateAlone(std::size_t size)
{
    auto* const place = static_cast<Place*>(::operator new(offsetof(Place, element) + size));
    place->page = nullptr;
    return place->element;
}

void ElementPages::Free(void* element) noexcept
{
    Place* const place = Place::Of(element);
    if (place->page)
        Page::Drop(place->page, 1);
    else
        ::operator delete(place);
}
