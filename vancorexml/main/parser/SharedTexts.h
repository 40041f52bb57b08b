// One copy of each text that comes again and again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"

// Remembers the strings that were made for texts, each in the one slot that the hash of its
// text names, until another text takes that slot. So a text is not always made once only, but
// a lookup looks at one slot whatever the texts are, and nobody can choose them to collide
// at a cost.
//
// Ownership: owns its strings, which share their buffers with the copies given out. Has at
// most `limit` slots, fewer for as long as few texts come.
//
// Threads: one at a time.
class SharedTexts {
public:
    // `limit` is a power of two, at least 64.
    explicit SharedTexts(std::size_t limit) : m_limit(limit) {}

    // The string for the key, which `make` makes when the key is not there. The reference
    // is valid until the next call.
    template <typename Make>
    const VString& Get(std::u16string_view key, Make&& make)
    {
        const std::uint64_t hash = Hash(key);
        Slot* slot = Find(hash);
        if (slot && IsSame(slot->key.View(), key))
            return slot->text;
        if (2 * m_misses++ >= m_slots.size() && m_slots.size() < m_limit)
            Grow();
        slot = Find(hash);
        slot->text = make();
        slot->key = IsSame(slot->text.View(), key) ? slot->text : VString(key.data(), key.size());
        return slot->text;
    }

    // The string that is the key itself.
    const VString& Get(std::u16string_view key)
    {
        return Get(key, [key] { return VString(key.data(), key.size()); });
    }

    void Clear()
    {
        m_slots.clear();
        m_misses = 0;
    }

private:
    // In an empty slot both texts are empty.
    struct Slot {
        VString key;
        VString text;
    };

    static bool IsSame(std::u16string_view a, std::u16string_view b) noexcept
    {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
    }

    static std::uint64_t Hash(std::u16string_view key) noexcept
    {
        // The golden ratio: an odd factor that spreads every bit upwards.
        constexpr std::uint64_t Factor = 0x9E3779B97F4A7C15;
        constexpr std::size_t UnitsInWord = sizeof(std::uint64_t) / sizeof(char16_t);
        std::uint64_t hash = key.size();
        if (key.size() < UnitsInWord) {
            for (const char16_t unit : key)
                hash = (hash << 16) + unit;
            return hash * Factor;
        }
        // The last word may overlap the one before.
        for (std::size_t position = 0;; position += UnitsInWord) {
            const bool isLast = position + UnitsInWord >= key.size();
            std::uint64_t word;
            std::memcpy(&word, key.data() + (isLast ? key.size() - UnitsInWord : position), sizeof word);
            hash = (hash ^ word) * Factor;
            hash ^= hash >> 32;
            if (isLast)
                return hash * Factor;
        }
    }

    Slot* Find(std::uint64_t hash) noexcept
    {
        // The upper bits are the ones that every unit has reached.
        return m_slots.empty() ? nullptr : &m_slots[(hash >> 32) & (m_slots.size() - 1)];
    }

    void Grow()
    {
        std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(m_slots.empty() ? 64 : 2 * m_slots.size()));
        for (Slot& slot : old)
            *Find(Hash(slot.key.View())) = std::move(slot);
    }

    std::size_t m_limit;
    std::size_t m_misses = 0;
    // None or a power of two.
    std::vector<Slot> m_slots;
};
