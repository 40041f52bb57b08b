// A cache of the strings made for repeated texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"

// Caches the strings that were made for texts. The hash of a text selects its only slot, so texts that
// share a slot evict each other. In return, every lookup examines exactly one slot, so texts chosen to
// collide cannot make lookups slow.
//
// With CachePolicy::OnSecondMiss a text is stored only after it misses the same slot twice in a row, so
// one-off texts do not evict repeated ones. While the hit rate is too low, lookups are suspended
// for `PauseLength` calls.
//
// Ownership: owns its strings, which share their buffers with the copies it returns. The number
// of slots grows with the number of misses, up to `limit`.
//
// Threads: one at a time.
class SharedTexts {
public:
    enum class CachePolicy { Always, OnSecondMiss };

    // `limit` is a power of two, at least 64 and at most 2^16.
    SharedTexts(std::size_t limit, CachePolicy policy) : m_limit(limit), m_policy(policy) {}

    // Returns the text as a string, which shares the buffer of the cached string if there is one.
    VString Get(std::u16string_view text)
    {
        if (m_pausedCalls != 0) {
            --m_pausedCalls;
            return VString(text.data(), text.size());
        }
        const Word hash = Hash(text);
        const auto tag = static_cast<std::uint32_t>(hash >> 32);
        if (!m_slots.empty()) {
            const Slot& slot = SlotOf(hash);
            if (slot.tag == tag && IsSame(slot.text.View(), text)) {
                ++m_hits;
                return slot.text;
            }
        }
        CountMiss();
        VString created(text.data(), text.size());
        Slot& slot = SlotOf(hash);
        if (std::exchange(slot.candidate, tag) == tag || m_policy == CachePolicy::Always) {
            slot.tag = tag;
            slot.text = created;
        }
        return created;
    }

    void Clear()
    {
        m_slots = std::vector<Slot>();
        m_hits = 0;
        m_misses = 0;
        m_pausedCalls = 0;
    }

private:
    using Word = std::uint64_t;
    // A lookup is much cheaper than making a string: one hit in five saves more than the five lookups cost.
    static constexpr std::size_t MissesBeforePause = 2000;
    static constexpr std::size_t MissesPerHit = 4;
    static constexpr std::size_t PauseLength = 16000;
    static constexpr std::size_t UnitsInWord = sizeof(Word) / sizeof(char16_t);

    struct Slot {
        // Upper hash halves: of the stored text, and of the last text that missed here.
        std::uint32_t tag = 0;
        std::uint32_t candidate = 0;
        VString text;
    };

    static Word ReadWord(const char16_t* units) noexcept
    {
        Word word = 0;
        std::memcpy(&word, units, sizeof word);
        return word;
    }

    // Reads a text of one to three units completely.
    static Word ReadShortText(std::u16string_view text) noexcept
    {
        return Word{text.front()} | Word{text[text.size() / 2]} << 16 | Word{text.back()} << 32;
    }

    // Most texts are short: a call of memcmp would cost more than the comparison itself.
    static bool IsSame(std::u16string_view a, std::u16string_view b) noexcept
    {
        const std::size_t size = a.size();
        if (size != b.size())
            return false;
        if (size < UnitsInWord)
            return size == 0 || ReadShortText(a) == ReadShortText(b);
        for (std::size_t position = 0; position + UnitsInWord < size; position += UnitsInWord) {
            if (ReadWord(a.data() + position) != ReadWord(b.data() + position))
                return false;
        }
        // The last word may overlap the word before it.
        return ReadWord(a.data() + size - UnitsInWord) == ReadWord(b.data() + size - UnitsInWord);
    }

    // The factor is 2^64 divided by the golden ratio. It is odd, so no information is lost. Each bit affects all
    // higher bits of the result.
    static Word Mix(Word hash, Word word) noexcept { return (hash ^ word) * 0x9E3779B97F4A7C15; }

    static Word Hash(std::u16string_view text) noexcept
    {
        const std::size_t size = text.size();
        // Multiplies the length. If the hash began with the plain length, the first word of a text could cancel
        // the length by XOR.
        Word hash = Mix(0, size);
        if (size < UnitsInWord)
            return size == 0 ? 0 : Mix(hash, ReadShortText(text));
        for (std::size_t position = 0; position + UnitsInWord < size; position += UnitsInWord)
            hash = Mix(hash, ReadWord(text.data() + position));
        hash = Mix(hash, ReadWord(text.data() + size - UnitsInWord));
        return Mix(hash, hash >> 32);  // so far, the last units affect the uppermost bits only
    }

    Slot& SlotOf(Word hash) noexcept { return m_slots[hash >> 44 & (m_slots.size() - 1)]; }

    void CountMiss()
    {
        if (2 * m_misses++ >= m_slots.size() && m_slots.size() < m_limit)
            Rehash();
        if (m_policy == CachePolicy::OnSecondMiss && m_misses > MissesBeforePause + MissesPerHit * m_hits) {
            m_hits = 0;
            m_misses = 0;
            m_pausedCalls = PauseLength;
        }
    }

    void Rehash()
    {
        std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(m_slots.empty() ? 64 : 2 * m_slots.size()));
        for (Slot& slot : old) {
            if (!slot.text.IsEmpty())
                SlotOf(Hash(slot.text.View())) = std::move(slot);
        }
    }

    std::size_t m_limit;
    CachePolicy m_policy;
    std::size_t m_hits = 0;
    std::size_t m_misses = 0;
    std::size_t m_pausedCalls = 0;  // calls of Get that still skip the lookup
    // Empty, or a power of two of slots.
    std::vector<Slot> m_slots;
};
