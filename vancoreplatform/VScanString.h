// A cursor over a text.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#include "vancoreplatform/VCType.h"
#include "vancoreplatform/VString.h"

// A cursor that moves forward through a text. It borrows the text, which must outlive the cursor and stay
// unchanged.
class VScanString {
public:
    explicit VScanString(const VString& text) noexcept : VScanString(text.View()) {}
    explicit VScanString(std::u16string_view text) noexcept : m_position(text.data()), m_end(text.data() + text.size())
    {}

    // Skips white space, as VCType::isSpace defines it. Linear in the number of skipped units.
    void skipWhitespace() noexcept
    {
        while (m_position != m_end && VCType::isSpace(*m_position)) {
            ++m_position;
            // Indentation is mostly blanks, so skip four at once.
            while (static_cast<std::size_t>(m_end - m_position) >= 4 &&
                std::memcmp(m_position, u"    ", 4 * sizeof(char16_t)) == 0)
                m_position += 4;
        }
    }
    bool IsAtEnd() const noexcept { return m_position == m_end; }

private:
    const char16_t* m_position;
    const char16_t* m_end;
};
