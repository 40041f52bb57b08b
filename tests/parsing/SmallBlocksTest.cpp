#include "vancorexml/main/parser/SmallBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <utility>
#include <vector>

namespace {

bool IsAligned(const void* block)
{
    return reinterpret_cast<std::uintptr_t>(block) % __STDCPP_DEFAULT_NEW_ALIGNMENT__ == 0;
}

// With the address sanitizer, freed blocks are not reused.
TEST(SmallBlocksTest, FreedBlockIsReusedForItsSizeClass)
{
    SmallBlocks blocks;
    void* const first = blocks.Allocate(20);
    void* const second = blocks.Allocate(20);
    EXPECT_NE(first, second);
    blocks.Free(first);
    void* const larger = blocks.Allocate(40);
    EXPECT_NE(larger, first);
    void* const again = blocks.Allocate(32);
    EXPECT_EQ(again == first, !HasAddressSanitizer);
    blocks.Free(again);
    blocks.Free(second);
    blocks.Free(larger);
}

// Allocates and frees blocks of every size in random order, more of them than the pool keeps. No block may overlap
// another.
TEST(SmallBlocksTest, BlocksInUseKeepTheirContent)
{
    SmallBlocks blocks;
    std::mt19937 random(1);
    std::vector<std::pair<unsigned char*, std::size_t>> used;
    for (int i = 0; i < 50000; ++i) {
        if (used.size() < 1000 && random() % 5 < 3) {
            const std::size_t size = random() % 200;
            auto* const block = static_cast<unsigned char*>(blocks.Allocate(size));
            ASSERT_TRUE(IsAligned(block)) << size;
            std::fill_n(block, size, static_cast<unsigned char>(size));
            used.emplace_back(block, size);
        } else if (!used.empty()) {
            std::swap(used[random() % used.size()], used.back());
            const auto [block, size] = used.back();
            used.pop_back();
            ASSERT_TRUE(std::all_of(block, block + size, [expected = size](unsigned char byte) {
                return byte == expected;
            })) << size;
            blocks.Free(block);
        }
    }
    for (const auto& [block, size] : used)
        blocks.Free(block);
}

TEST(SmallBlocksTest, FreeAcceptsNull)
{
    SmallBlocks().Free(nullptr);
}

TEST(SmallBlocksTest, SizesThatOverflowThrowBadAlloc)
{
    SmallBlocks blocks;
    for (std::size_t less = 0; less < 16; ++less)
        EXPECT_THROW(blocks.Allocate(std::numeric_limits<std::size_t>::max() - less), std::bad_alloc) << less;
}

}  // namespace
