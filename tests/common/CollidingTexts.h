// Texts with the same hash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace testsupport {

// Returns `count` different names of the same length. The std::hash of GCC's standard library returns the same value
// for all of them. `Unit` is char, for names in ASCII, or char16_t.
//
// That hash mixes one block of eight bytes after the other into a state. For two blocks, a second pair with the same
// end state is easy to find: any first block, then the second block that leads back. Each further pair of blocks
// doubles the number of names.
template <typename Unit>
class CollidingTexts {
public:
    // The hashes are equal after the same `suffixBytes` bytes are appended to each text.
    static std::vector<std::basic_string<Unit>> Make(std::size_t count, std::size_t suffixBytes = 0)
    {
        std::size_t stages = 1;
        while (std::size_t{1} << stages < count)
            ++stages;
        CollidingTexts maker(stages * 2 * BlockBytes + suffixBytes);
        std::vector<std::basic_string<Unit>> texts{{}};
        for (std::size_t stage = 0; stage < stages; ++stage) {
            const auto [first, second] = maker.AddStage();
            std::vector<std::basic_string<Unit>> longer;
            for (const auto& text : texts) {
                longer.push_back(text + first);
                longer.push_back(text + second);
            }
            texts = std::move(longer);
        }
        texts.resize(count);
        return texts;
    }

private:
    using Word = std::uint64_t;
    using Text = std::basic_string<Unit>;
    static constexpr std::size_t BlockBytes = sizeof(Word);
    static constexpr std::size_t UnitsInBlock = BlockBytes / sizeof(Unit);
    static constexpr Word Factor = 0xC6A4A7935BD1E995;
    static constexpr Word Seed = 0xC70F6907;

    explicit CollidingTexts(std::size_t length) : m_state(Seed ^ length * Factor) {}

    // Returns the number whose product with Factor is 1.
    static Word Inverse()
    {
        Word inverse = Factor;
        for (int i = 0; i < 6; ++i)
            inverse *= 2 - Factor * inverse;
        return inverse;
    }
    static Word Shift(Word word) { return word ^ word >> 47; }
    static Word MixBlock(Word block) { return Shift(block * Factor) * Factor; }
    static Word UnmixBlock(Word mixed) { return Shift(mixed * Inverse()) * Inverse(); }

    static Word Load(const Text& text)
    {
        Word block = 0;
        std::memcpy(&block, text.data(), BlockBytes);
        return block;
    }
    static Text Store(Word block)
    {
        Text text(UnitsInBlock, 0);
        std::memcpy(text.data(), &block, BlockBytes);
        return text;
    }
    // True if the text may follow a letter in a name.
    static bool IsName(const Text& text)
    {
        for (const Unit unit : text) {
            const bool isLetter = (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
            const bool isOther = (unit >= '0' && unit <= '9') || unit == '-' || unit == '.' || unit == '_';
            // These ideographs are letters in names.
            bool isIdeograph = false;
            if constexpr (sizeof(Unit) > 1)
                isIdeograph = unit >= 0x4E00 && unit <= 0x9FA5;
            if (!isLetter && !isOther && !isIdeograph)
                return false;
        }
        return true;
    }
    Text RandomBlock()
    {
        Text text;
        for (std::size_t i = 0; i < UnitsInBlock; ++i)
            text += static_cast<Unit>('a' + m_random() % 26);
        return text;
    }

    // Returns two texts of two blocks that lead to the same state.
    std::pair<Text, Text> AddStage()
    {
        const Text start = RandomBlock();
        const Text end = RandomBlock();
        const Word between = (m_state ^ MixBlock(Load(start))) * Factor;
        for (;;) {
            const Text otherStart = RandomBlock();
            const Word otherBetween = (m_state ^ MixBlock(Load(otherStart))) * Factor;
            const Text otherEnd = Store(UnmixBlock(between ^ otherBetween ^ MixBlock(Load(end))));
            if (otherStart != start && IsName(otherEnd)) {
                m_state = (between ^ MixBlock(Load(end))) * Factor;
                return {start + end, otherStart + otherEnd};
            }
        }
    }

    Word m_state;
    std::mt19937_64 m_random{15};
};

}  // namespace testsupport
