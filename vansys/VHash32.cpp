#include "vansys/VHash32.h"

#include <bit>

#include "vansys/SipHash.h"

namespace {

// Spreads every bit over the whole word.
constexpr std::uint32_t Mix(std::uint32_t hash) noexcept
{
    hash = (hash ^ hash >> 16) * 0x85EBCA6B;
    hash = (hash ^ hash >> 13) * 0xC2B2AE35;
    return hash ^ hash >> 16;
}

}  // namespace

std::uint32_t VHash32(const VString& text, std::uint32_t seed) noexcept
{
    std::uint32_t hash = seed;
    for (const char16_t unit : text)
        hash = std::rotl(hash ^ unit * 0xCC9E2D51, 13) * 5 + 0xE6546B64;
    return Mix(hash ^ static_cast<std::uint32_t>(text.length()));
}

std::uint64_t VSeededHash(const VString& text) noexcept
{
    static const SipKey key = SipKey::Draw();
    return SipHash<1, 3>::Hash(key, text.utf16(), static_cast<std::size_t>(text.length()) * sizeof(char16_t));
}
