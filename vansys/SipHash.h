// A keyed hash of bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>

// The 128-bit key of a SipHash.
struct SipKey {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    // Returns a random key.
    static SipKey Draw()
    {
        std::random_device random;
        const auto draw = [&random] { return static_cast<std::uint64_t>(random()) << 32 | random(); };
        const std::uint64_t low = draw();
        return {low, draw()};
    }
};

// SipHash by J.-P. Aumasson and D. J. Bernstein, with `CompressionRounds` rounds for every eight bytes and
// `FinalRounds` rounds at the end. Nobody can construct collisions without the key. Linear in the number of
// bytes.
template <int CompressionRounds, int FinalRounds>
class SipHash {
public:
    static std::uint64_t Hash(const SipKey& key, const void* bytes, std::size_t length) noexcept
    {
        SipHash state(key);
        const auto* data = static_cast<const unsigned char*>(bytes);
        const std::size_t whole = length / 8 * 8;
        for (std::size_t position = 0; position < whole; position += 8)
            state.Compress(Load(data + position, 8));
        state.Compress(Load(data + whole, length - whole) | static_cast<std::uint64_t>(length) << 56);
        return state.Finish();
    }

private:
    explicit SipHash(const SipKey& key) noexcept
        : m_v0(key.low ^ 0x736F6D6570736575),
          m_v1(key.high ^ 0x646F72616E646F6D),
          m_v2(key.low ^ 0x6C7967656E657261),
          m_v3(key.high ^ 0x7465646279746573)
    {}

    // Reads up to eight bytes as a little-endian number.
    static std::uint64_t Load(const unsigned char* bytes, std::size_t count) noexcept
    {
        std::uint64_t word = 0;
        if constexpr (std::endian::native == std::endian::little) {
            if (count > 0) {
                std::memcpy(&word, bytes, count);
            }
        } else {
            for (std::size_t i = 0; i < count; ++i)
                word |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
        }
        return word;
    }

    void Round() noexcept
    {
        m_v0 += m_v1;
        m_v1 = std::rotl(m_v1, 13) ^ m_v0;
        m_v0 = std::rotl(m_v0, 32);
        m_v2 += m_v3;
        m_v3 = std::rotl(m_v3, 16) ^ m_v2;
        m_v0 += m_v3;
        m_v3 = std::rotl(m_v3, 21) ^ m_v0;
        m_v2 += m_v1;
        m_v1 = std::rotl(m_v1, 17) ^ m_v2;
        m_v2 = std::rotl(m_v2, 32);
    }

    void Compress(std::uint64_t word) noexcept
    {
        m_v3 ^= word;
        for (int i = 0; i < CompressionRounds; ++i)
            Round();
        m_v0 ^= word;
    }

    std::uint64_t Finish() noexcept
    {
        m_v2 ^= 0xFF;
        for (int i = 0; i < FinalRounds; ++i)
            Round();
        return m_v0 ^ m_v1 ^ m_v2 ^ m_v3;
    }

    std::uint64_t m_v0;
    std::uint64_t m_v1;
    std::uint64_t m_v2;
    std::uint64_t m_v3;
};
