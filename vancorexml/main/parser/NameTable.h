// The strings of the names in a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SharedTexts.h"

// Interns names. Xerces reuses a few buffers for them, so the string last returned for an address
// is tried first; it is compared by content, never by address alone.
//
// Ownership: owns its strings, which share their buffers with the copies given out.
//
// Threads: one at a time.
class NameTable {
public:
    // Returns the NUL-terminated name as a string. The reference is valid until the next call.
    const VString& Get(const char16_t* name)
    {
        if (m_recent.empty())
            m_recent.resize(RecentNameCount);
        // The lowest four bits of an address are equal for all buffers, because the allocator aligns them.
        const auto address = reinterpret_cast<std::uintptr_t>(name);
        VString& last = m_recent[(address >> 4 ^ address >> 12) % RecentNameCount];
        if (!IsSame(last, name))
            last = m_names.Get(name);
        return last;
    }

    // For a name outside of Xerces' buffers. Looks it up by content.
    VString Get(std::u16string_view name) { return m_names.Get(name); }

    void Clear()
    {
        m_names.Clear();
        m_recent.clear();
    }

private:
    static constexpr std::size_t RecentNameCount = 256;
    // Several times the number of names in most vocabularies, so few names share a slot.
    static constexpr std::size_t NameLimit = 1 << 12;

    // `name` ends with a NUL and has no known length. `text` contains no NUL, so the comparison stops at the
    // NUL of `name` at the latest.
    static bool IsSame(const VString& text, const char16_t* name) noexcept
    {
        const std::u16string_view units = text.View();
        std::size_t i = 0;
        for (; i + 4 <= units.size(); i += 4) {
            if (name[i] != units[i] || name[i + 1] != units[i + 1] || name[i + 2] != units[i + 2] ||
                name[i + 3] != units[i + 3])
                return false;
        }
        while (i < units.size() && name[i] == units[i])
            ++i;
        return i == units.size() && name[i] == 0;
    }

    SharedTexts m_names{NameLimit, SharedTexts::CachePolicy::Always};
    // Empty until the first name of a parse.
    std::vector<VString> m_recent;
};
