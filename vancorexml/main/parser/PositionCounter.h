// Lines and columns of a text.
#pragma once

#include <cstddef>
#include <string_view>

#include "vancorexml/main/parser/SourcePosition.h"

// Converts offsets in a UTF-8 text to positions. A line ends at "\n", "\r" or "\r\n", and in XML 1.1 also at U+0085,
// "\r" with U+0085, and U+2028. A byte that is not part of a UTF-8 character counts as one column.
//
// Ownership: refers to the text, which must outlive it.
//
// Threads: one at a time.
class PositionCounter {
public:
    explicit PositionCounter(std::string_view text, bool isVersion11 = false) noexcept
        : m_text(text),
          m_isVersion11(isVersion11)
    {}

    // Returns the position of the byte `offset`. Linear in the bytes since the previous call, or since the start of
    // the text if `offset` is smaller than in the previous call.
    SourcePosition At(std::size_t offset) noexcept;
    // Returns the offset of the previous call; 0 before the first.
    std::size_t GetOffset() const noexcept { return m_offset; }

private:
    bool EndsLine(std::string_view text) const noexcept;

    std::string_view m_text;
    bool m_isVersion11;
    std::size_t m_offset = 0;
    SourcePosition m_position{1, 1};
};
