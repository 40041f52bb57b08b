// Copies blocks of UTF-16 code units and finds the units that must not be copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__) || defined(_M_X64)
#  include <emmintrin.h>
#  define VANCOREXML_HAS_SSE2 1
#else
#  define VANCOREXML_HAS_SSE2 0
#endif

namespace TextBlocks {

// The number of units in a block.
constexpr std::size_t BlockUnits = 16;

// The ways to copy units. An escaped unit must not be a control character or one of "&'<>.
enum class Copy { Unchanged, Escaped };

// True if the unit is copied as a `Unit`. As a byte, only ASCII is. No unit from 0x80 to 0xD7FF needs an escape; all
// higher ones are left to the caller, because some of them do.
template <Copy How, typename Unit>
constexpr bool IsPlain(char16_t unit) noexcept
{
    const bool fits = sizeof(Unit) > 1 || unit < 0x80;
    if (How == Copy::Unchanged)
        return fits;
    return (fits & (unit >= 0x20) & (unit < 0xD800) & (unit != u'"') & ((unit & 0xFFFE) != u'&') &
               ((unit & 0xFFFD) != u'<')) != 0;
}

// Both classes have the same operations. `Unit` is char for ASCII and char16_t for UTF-16. A class may say that a NUL,
// or a unit from 0x8000 on, is not plain although it is.

// For every processor. The compiler vectorises the first loop, because its count is fixed.
class Portable {
public:
    // Copies BlockUnits units. Returns a mask with a bit for each unit that is not plain, the lowest bit for the first
    // unit; the copies of these units and of all later ones have no meaning.
    template <Copy How, typename Unit>
    static unsigned CopyBlock(const char16_t* from, Unit* to) noexcept
    {
        char16_t units[BlockUnits];
        std::memcpy(units, from, sizeof units);
        std::uint16_t special = 0;
        for (std::size_t i = 0; i < BlockUnits; ++i) {
            special |= static_cast<std::uint16_t>(!IsPlain<How, Unit>(units[i]));
            to[i] = static_cast<Unit>(units[i]);
        }
        unsigned mask = 0;
        for (std::size_t i = 0; special != 0 && i < BlockUnits; ++i)
            mask |= static_cast<unsigned>(!IsPlain<How, Unit>(units[i])) << i;
        return mask;
    }
    // Copies fewer than BlockUnits units, if all of them are plain. May return false also if they are. Writes nothing
    // behind them.
    template <Copy How, typename Unit>
    static bool CopyShort(const char16_t*, std::size_t, Unit*) noexcept
    {
        return false;
    }
};

#if VANCOREXML_HAS_SSE2

// With SSE2, which every x86-64 processor has.
class Sse2 {
public:
    template <Copy How, typename Unit>
    static unsigned CopyBlock(const char16_t* from, Unit* to) noexcept
    {
        const __m128i low = Load(from);
        const __m128i high = Load(from + 8);
        const __m128i bytes = _mm_packus_epi16(low, high);
        if constexpr (sizeof(Unit) == 1) {
            Store(to, bytes);
        } else {
            Store(to, low);
            Store(to + 8, high);
        }
        return FindSpecial<How, Unit>(bytes);
    }
    // Copies the first and the last 8 or 4 units, which may overlap.
    template <Copy How, typename Unit>
    static bool CopyShort(const char16_t* from, std::size_t count, Unit* to) noexcept
    {
        if (count >= 8) {
            const __m128i first = Load(from);
            const __m128i last = Load(from + count - 8);
            const __m128i bytes = _mm_packus_epi16(first, last);
            if (FindSpecial<How, Unit>(bytes) != 0)
                return false;
            if constexpr (sizeof(Unit) == 1) {
                StoreHalf(to, bytes);
                StoreHalf(to + count - 8, _mm_unpackhi_epi64(bytes, bytes));
            } else {
                Store(to, first);
                Store(to + count - 8, last);
            }
            return true;
        }
        if (count < 4)
            return false;
        const __m128i first = LoadHalf(from);
        const __m128i last = LoadHalf(from + count - 4);
        const __m128i units = _mm_unpacklo_epi64(first, last);
        const __m128i bytes = _mm_packus_epi16(units, units);
        if (FindSpecial<How, Unit>(bytes) != 0)
            return false;
        if constexpr (sizeof(Unit) == 1) {
            StoreQuarter(to, bytes);
            StoreQuarter(to + count - 4, _mm_srli_epi64(bytes, 32));
        } else {
            StoreHalf(to, first);
            StoreHalf(to + count - 4, last);
        }
        return true;
    }

private:
    static __m128i Load(const char16_t* from) noexcept
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    static __m128i LoadHalf(const char16_t* from) noexcept
    {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    }
    template <typename Unit>
    static void Store(Unit* to, __m128i value) noexcept
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
    }
    template <typename Unit>
    static void StoreHalf(Unit* to, __m128i value) noexcept
    {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), value);
    }
    static void StoreQuarter(char* to, __m128i value) noexcept
    {
        const int quarter = _mm_cvtsi128_si32(value);
        std::memcpy(to, &quarter, sizeof quarter);
    }
    // `bytes` are units that were packed with saturation: 0 stands for every unit from 0x8000 on, and 0xFF for every
    // other unit above 0xFF.
    template <Copy How, typename Unit>
    static unsigned FindSpecial(__m128i bytes) noexcept
    {
        if constexpr (How == Copy::Unchanged && sizeof(Unit) > 1) {
            return 0;
        } else if constexpr (How == Copy::Unchanged) {
            return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmplt_epi8(bytes, _mm_set1_epi8(1))));
        } else {
            __m128i special;
            if constexpr (sizeof(Unit) == 1)
                special = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
            else
                special = _mm_cmpeq_epi8(bytes, _mm_min_epu8(bytes, _mm_set1_epi8(0x1F)));
            const __m128i quote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
            const __m128i ampersandOrApostrophe =
                _mm_cmpeq_epi8(_mm_and_si128(bytes, _mm_set1_epi8(static_cast<char>(0xFE))), _mm_set1_epi8('&'));
            const __m128i lessOrGreater =
                _mm_cmpeq_epi8(_mm_and_si128(bytes, _mm_set1_epi8(static_cast<char>(0xFD))), _mm_set1_epi8('<'));
            special = _mm_or_si128(_mm_or_si128(special, quote), _mm_or_si128(ampersandOrApostrophe, lessOrGreater));
            return static_cast<unsigned>(_mm_movemask_epi8(special));
        }
    }
};

using Fastest = Sse2;

#else

using Fastest = Portable;

#endif

}  // namespace TextBlocks
