// The strings of the names in a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SharedTexts.h"

// Gives each name as a string, mostly one that was made before. A parser keeps its names in
// few places, an element's in its declaration and an attribute's where the attributes of the
// element before stood, so what was last found at an address is tried first; only its text
// counts.
//
// Ownership: owns its strings, which share their buffers with the copies given out.
//
// Threads: one at a time.
class NameTable {
public:
    // The name at that address, up to its NUL. The reference is valid until the next call.
    const VString& Get(const char16_t* name)
    {
        if (m_last.empty())
            m_last.resize(Places);
        // Addresses are multiples of the allocator's unit.
        const auto address = reinterpret_cast<std::uintptr_t>(name);
        VString& last = m_last[(address >> 4 ^ address >> 12) % Places];
        if (!IsSame(last, name))
            last = m_names.Get(name);
        return last;
    }

    // A name that stands nowhere.
    VString Get(std::u16string_view name) { return m_names.Get(name); }

    void Clear()
    {
        m_names.Clear();
        m_last.clear();
    }

private:
    static constexpr std::size_t Places = 256;
    // Some times the names that most vocabularies have, so that few share a slot.
    static constexpr std::size_t NameLimit = 1 << 12;

    // Reads no further than the NUL, which no known name has within.
    static bool IsSame(const VString& text, const char16_t* name) noexcept
    {
        const std::u16string_view units = text.View();
        std::size_t i = 0;
        for (; i + 4 <= units.size(); i += 4)
            if (name[i] != units[i] || name[i + 1] != units[i + 1] || name[i + 2] != units[i + 2] || name[i + 3] != units[i + 3])
                return false;
        while (i < units.size() && name[i] == units[i])
            ++i;
        return i == units.size() && name[i] == 0;
    }

    SharedTexts m_names{NameLimit, SharedTexts::Repeats::Surely};
    // None before the first name: there are parsers that read many small documents.
    std::vector<VString> m_last;
};
