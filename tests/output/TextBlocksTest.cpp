#include "vancorexml/main/parser/TextBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace TextBlocks;

// Random code units: letters, and code units near the limits at which a block must not be copied.
std::vector<char16_t> RandomUnits(std::mt19937& random, std::size_t count)
{
    static constexpr char16_t near[] = {0, 0x1F, 0x22, 0x26, 0x27, 0x3C, 0x3E, 0x7F, 0x80, 0xFF, 0x100, 0x7FFF, 0x8000};
    std::vector<char16_t> units(count);
    const auto rarity = 1 + random() % 40;
    for (char16_t& unit : units) {
        unit = static_cast<char16_t>('a' + random() % 26);
        if (random() % rarity == 0)
            unit = static_cast<char16_t>(near[random() % std::size(near)] + random() % 3 - 1);
        else if (random() % (4 * rarity) == 0)
            unit = static_cast<char16_t>(random());
    }
    return units;
}

template <typename Blocks, Copy How, typename Unit>
void ExpectPlainUnitsAreCopied()
{
    std::mt19937 random(7);
    for (int run = 0; run < 10000; ++run) {
        const std::vector<char16_t> units = RandomUnits(random, BlockUnits);
        Unit copy[BlockUnits];
        const unsigned special = Blocks::template CopyBlock<How>(units.data(), copy);
        for (std::size_t i = 0; i < BlockUnits; ++i) {
            const bool isPlain = IsPlain<How, Unit>(units[i]);
            const bool isCopied = (special >> i & 1) == 0;
            if (units[i] != 0 && units[i] < 0x8000) {
                ASSERT_EQ(isCopied, isPlain) << std::hex << static_cast<unsigned>(units[i]);
            } else {
                ASSERT_TRUE(isPlain || !isCopied) << std::hex << static_cast<unsigned>(units[i]);
            }
            if (special == 0) {
                ASSERT_EQ(copy[i], static_cast<Unit>(units[i]));
            }
        }
    }
}

template <typename Blocks, Copy How, typename Unit>
void ExpectShortTextsAreCopied()
{
    std::mt19937 random(8);
    for (int run = 0; run < 10000; ++run) {
        const std::vector<char16_t> units = RandomUnits(random, random() % BlockUnits);
        std::vector<Unit> copy(units.size() + 1, Unit{'!'});
        if (!Blocks::template CopyShort<How>(units.data(), units.size(), copy.data()))
            continue;
        for (std::size_t i = 0; i < units.size(); ++i) {
            ASSERT_TRUE((IsPlain<How, Unit>(units[i]))) << std::hex << static_cast<unsigned>(units[i]);
            ASSERT_EQ(copy[i], static_cast<Unit>(units[i]));
        }
        ASSERT_EQ(copy.back(), Unit{'!'});
    }
}

template <typename Blocks>
void ExpectRightCopies()
{
    ExpectPlainUnitsAreCopied<Blocks, Copy::Escaped, char>();
    ExpectPlainUnitsAreCopied<Blocks, Copy::Escaped, char16_t>();
    ExpectPlainUnitsAreCopied<Blocks, Copy::Unchanged, char>();
    ExpectPlainUnitsAreCopied<Blocks, Copy::Unchanged, char16_t>();
    ExpectShortTextsAreCopied<Blocks, Copy::Escaped, char>();
    ExpectShortTextsAreCopied<Blocks, Copy::Escaped, char16_t>();
    ExpectShortTextsAreCopied<Blocks, Copy::Unchanged, char>();
    ExpectShortTextsAreCopied<Blocks, Copy::Unchanged, char16_t>();
}

TEST(TextBlocksTest, PortableBlocksCopyPlainUnitsOnly)
{
    ExpectRightCopies<Portable>();
}

TEST(TextBlocksTest, FastestBlocksCopyPlainUnitsOnly)
{
    ExpectRightCopies<Fastest>();
}

TEST(TextBlocksTest, PlainUnitsNeedNoEscape)
{
    for (const char16_t unit : u"\t\n\r\x01\"&'<>\xD800\xDFFF\xFFFE") {
        EXPECT_FALSE((IsPlain<Copy::Escaped, char>(unit)));
        EXPECT_FALSE((IsPlain<Copy::Escaped, char16_t>(unit)));
    }
    for (const char16_t unit : {u' ', u'!', u'=', u'?', u'~', u'\x7F'}) {
        EXPECT_TRUE((IsPlain<Copy::Escaped, char>(unit)));
        EXPECT_TRUE((IsPlain<Copy::Escaped, char16_t>(unit)));
    }
    EXPECT_FALSE((IsPlain<Copy::Unchanged, char>(u'\x80')));
    EXPECT_TRUE((IsPlain<Copy::Escaped, char16_t>(u'\x80')));
}

}  // namespace
