#include "vancorexml/main/parser/PositionCounter.h"

#include <algorithm>

// True if the text begins with the last character of a line end. The further bytes of this character do not count as
// columns.
bool PositionCounter::EndsLine(std::string_view text) const noexcept
{
    if (m_isVersion11 && (text.starts_with("\xC2\x85") || text.starts_with("\xE2\x80\xA8")))
        return true;
    const std::string_view next = text.substr(1);
    const bool isPair = next.starts_with('\n') || (m_isVersion11 && next.starts_with("\xC2\x85"));
    return text.starts_with('\n') || (text.starts_with('\r') && !isPair);
}

SourcePosition PositionCounter::At(std::size_t offset) noexcept
{
    if (offset < m_offset)
        *this = PositionCounter(m_text, m_isVersion11);
    const std::size_t end = std::min(offset, m_text.size());
    for (; m_offset < end; ++m_offset) {
        const auto byte = static_cast<unsigned char>(m_text[m_offset]);
        if (EndsLine(m_text.substr(m_offset))) {
            ++m_position.line;
            m_position.column = 1;
        } else if (byte < 0x80 || byte >= 0xC0) {
            m_position.column += byte >= 0xF0 && byte < 0xF8 ? 2 : 1;
        }
    }
    return m_position;
}
