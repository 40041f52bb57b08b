// One copy of each text that comes again and again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vansys/SipHash.h"
#include "vansys/VHash32.h"

// Maps texts to strings that are made once and then shared: an open-addressing table under
// a hash that is keyed per process, so that texts cannot be chosen to collide.
//
// Ownership: owns its strings, which share their buffers with the copies given out. At
// `limit` entries it starts afresh, so it never outgrows what is worth keeping.
//
// Threads: one at a time.
class SharedTexts {
public:
    explicit SharedTexts(std::size_t limit) : m_limit(limit) {}

    // The string for the key, which `make` makes when the key is not there. The reference
    // is valid until the next call.
    template <typename Make>
    const VString& Get(std::u16string_view key, Make&& make)
    {
        if (m_entries.size() * 2 >= m_slots.size())
            Grow();
        const std::uint64_t hash = Hash(key);
        std::uint32_t& slot = FindSlot(key, hash);
        if (slot == 0) {
            VString text = make();
            m_entries.push_back({hash, VString(key.data(), key.size()), std::move(text)});
            slot = static_cast<std::uint32_t>(m_entries.size());
        }
        return m_entries[slot - 1].text;
    }

    // The string that is the key itself.
    const VString& Get(std::u16string_view key)
    {
        return Get(key, [key] { return VString(key.data(), key.size()); });
    }

    void Clear()
    {
        m_entries.clear();
        m_slots.clear();
    }

private:
    struct Entry {
        std::uint64_t hash;
        VString key;
        VString text;
    };

    static std::uint64_t Hash(std::u16string_view key) noexcept
    {
        static const SipKey secret{VSeededHash(u"low"), VSeededHash(u"high")};
        return SipHash<1, 1>::Hash(secret, key.data(), key.size() * sizeof(char16_t));
    }

    // The slot of the key: where it is, or the empty one where it belongs.
    std::uint32_t& FindSlot(std::u16string_view key, std::uint64_t hash) noexcept
    {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            const std::uint32_t number = m_slots[i];
            if (number == 0 || (m_entries[number - 1].hash == hash && m_entries[number - 1].key.View() == key))
                return m_slots[i];
        }
    }

    void Grow()
    {
        if (m_entries.size() >= m_limit)
            m_entries.clear();
        const std::size_t size = m_entries.empty() ? SmallestSize : m_slots.size() * 2;
        m_slots.assign(size, 0);
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            FindSlot(m_entries[i].key.View(), m_entries[i].hash) = static_cast<std::uint32_t>(i + 1);
    }

    static constexpr std::size_t SmallestSize = 64;

    std::size_t m_limit;
    std::vector<Entry> m_entries;
    // Number of the entry, from 1; 0 is empty. A power of two, at most half of it taken.
    std::vector<std::uint32_t> m_slots;
};
