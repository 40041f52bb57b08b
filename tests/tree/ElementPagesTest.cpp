#include "vancorexml/main/parser/ElementPages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "vancorexml/main/parser/DOMElement.h"

namespace {

// Allocates a place and fills it, so that overlaps and overruns cause failures.
void* AllocateAndFill(ElementPages& pages)
{
    void* const place = pages.Allocate();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % alignof(DOMElement), 0u);
    std::memset(place, 0xE5, sizeof(DOMElement));
    return place;
}

TEST(ElementPagesTest, ElementsMayDieBeforeTheirPages)
{
    for (std::size_t count = 0; count < 40; ++count) {
        ElementPages pages(sizeof(DOMElement));
        std::vector<void*> places;
        for (std::size_t i = 0; i < count; ++i)
            places.push_back(AllocateAndFill(pages));
        for (void* place : places)
            ElementPages::Free(place);
    }
}

TEST(ElementPagesTest, ElementsMayOutliveTheirPages)
{
    for (std::size_t count = 0; count < 40; ++count) {
        auto pages = std::make_unique<ElementPages>(sizeof(DOMElement));
        std::vector<void*> places;
        for (std::size_t i = 0; i < count; ++i)
            places.push_back(AllocateAndFill(*pages));
        pages.reset();
        while (!places.empty()) {
            ElementPages::Free(places.back());
            places.pop_back();
        }
    }
}

TEST(ElementPagesTest, AllocatesAgainAfterReleasingItsPage)
{
    for (std::size_t count = 0; count < 20; ++count) {
        ElementPages pages(sizeof(DOMElement));
        std::vector<void*> places;
        for (int round = 0; round < 3; ++round) {
            for (std::size_t i = 0; i < count; ++i)
                places.push_back(AllocateAndFill(pages));
            pages.Release();
            pages.Release();
        }
        for (void* place : places)
            ElementPages::Free(place);
    }
}

TEST(ElementPagesTest, AllocateStandaloneReturnsAlignedMemoryOfTheRequestedSize)
{
    for (const std::size_t size : {sizeof(DOMElement), std::size_t{1000}, std::size_t{1}}) {
        void* const place = ElementPages::AllocateStandalone(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0u);
        std::memset(place, 0xE5, size);
        ElementPages::Free(place);
    }
}

}  // namespace
