#include "vancorexml/main/parser/ElementPages.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <new>

#include "vancorexml/main/parser/AddressSanitizer.h"

namespace {

// The first page is small, so that a small document takes little memory. Later pages are so large that
// common allocators merge a freed page with its free neighbours.
constexpr std::size_t FirstCapacity = HasAddressSanitizer ? 1 : 4;
constexpr std::size_t MaxCapacity = HasAddressSanitizer ? 1 : 1024;

// Directly in front of each element is a pointer to its page.
constexpr std::size_t PagePointerSize = sizeof(void*);

// The bytes in front of an element without a page: a null page pointer, padded so that the element is aligned.
constexpr std::size_t StandaloneHeaderSize = std::max<std::size_t>(__STDCPP_DEFAULT_NEW_ALIGNMENT__, PagePointerSize);

}  // namespace

struct ElementPages::Page {
    // The number of living elements plus the number of slots that are not allocated yet.
    std::atomic<std::size_t> references;

    unsigned char* Slots() noexcept { return reinterpret_cast<unsigned char*>(this + 1); }
    static void ReleaseReferences(Page* page, std::size_t count) noexcept
    {
        // Acquire and release: all writes of other threads to the page happen before it is freed.
        if (page->references.fetch_sub(count, std::memory_order_acq_rel) == count)
            ::operator delete(page);
    }
};

void* ElementPages::Allocate()
{
    static_assert(sizeof(Page) % alignof(Page*) == 0);
    if (m_free == 0) {
        const std::size_t capacity = std::clamp(2 * m_capacity, FirstCapacity, MaxCapacity);
        void* const memory = ::operator new(sizeof(Page) + capacity * m_slotSize);
        m_page = new (memory) Page{capacity};
        m_free = capacity;
        m_capacity = capacity;
    }
    unsigned char* const slot = m_page->Slots() + (m_capacity - m_free--) * m_slotSize;
    new (slot) Page*(m_page);
    return slot + PagePointerSize;
}

void ElementPages::Release() noexcept
{
    if (m_free != 0)
        Page::ReleaseReferences(m_page, m_free);
    m_free = 0;
    m_capacity = 0;
}

void* ElementPages::AllocateStandalone(std::size_t size)
{
    unsigned char* const element =
        static_cast<unsigned char*>(::operator new(StandaloneHeaderSize + size)) + StandaloneHeaderSize;
    new (element - PagePointerSize) Page*(nullptr);
    return element;
}

void ElementPages::Free(void* place) noexcept
{
    unsigned char* const bytes = static_cast<unsigned char*>(place);
    if (Page* const page = *reinterpret_cast<Page**>(bytes - PagePointerSize))
        Page::ReleaseReferences(page, 1);
    else
        ::operator delete(bytes - StandaloneHeaderSize);
}
