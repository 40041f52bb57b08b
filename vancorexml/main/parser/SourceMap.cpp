#include "vancorexml/main/parser/SourceMap.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// Counts the lines and columns of a UTF-8 text as the scanner of Xerces counts them in UTF-16.
class PositionCounter {
public:
    // XML 1.1 has two more line ends: U+0085 and U+2028.
    PositionCounter(std::string_view text, bool hasMoreLineEnds) : m_text(text), m_hasMoreLineEnds(hasMoreLineEnds)
    {
        if (text.starts_with("\xEF\xBB\xBF"))
            m_offset = 3;
    }

    void MoveTo(std::size_t offset)
    {
        while (m_offset < offset)
            Step();
    }

    SourceMap::Position Get() const noexcept { return m_position; }

private:
    // Advances over one character.
    void Step()
    {
        const auto byte = static_cast<unsigned char>(m_text[m_offset]);
        const bool isNextLine = m_hasMoreLineEnds && m_text.substr(m_offset).starts_with("\xC2\x85");
        const bool isLineSeparator = m_hasMoreLineEnds && m_text.substr(m_offset).starts_with("\xE2\x80\xA8");
        const bool endsReturn = m_afterReturn && (byte == '\n' || isNextLine);
        const std::size_t length = CharacterLength(byte);
        m_afterReturn = byte == '\r';
        m_offset += length;
        if (endsReturn)
            return;
        if (byte == '\n' || byte == '\r' || isNextLine || isLineSeparator)
            m_position = {m_position.line + 1, 1};
        else
            m_position.column += length == 4 ? 2 : 1;
    }

    // Returns the length in bytes; 1 for a byte that begins no valid character.
    std::size_t CharacterLength(unsigned char byte) const
    {
        const std::size_t length = byte < 0xC2 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 1;
        const std::string_view tail = m_text.substr(m_offset, length).substr(1);
        const bool isWhole = tail.size() + 1 == length &&
            std::all_of(tail.begin(), tail.end(), [](char unit) { return (unit & 0xC0) == 0x80; });
        return isWhole ? length : 1;
    }

    const std::string_view m_text;
    const bool m_hasMoreLineEnds;
    bool m_afterReturn = false;
    std::size_t m_offset = 0;
    SourceMap::Position m_position{1, 1};
};

bool IsVersion11(std::string_view text)
{
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    return text.starts_with("<?xml") && text.substr(0, text.find("?>")).find("1.1") != std::string_view::npos;
}

}  // namespace

SourceMap::SourceMap(std::shared_ptr<const std::string> text, std::size_t start, std::vector<Insertion> insertions)
    : m_text(std::move(text)),
      m_start(start),
      m_insertions(std::move(insertions))
{}

void SourceMap::Resolve()
{
    const std::string_view skipped = std::string_view(*m_text).substr(0, m_start);
    PositionCounter skippedCounter(skipped, false);
    skippedCounter.MoveTo(skipped.size());
    m_skipped = {skippedCounter.Get().line - 1, skippedCounter.Get().column - 1};

    const std::string_view read = std::string_view(*m_text).substr(m_start);
    PositionCounter counter(read, IsVersion11(read));
    m_shifts.reserve(m_insertions.size());
    for (const Insertion& insertion : m_insertions) {
        counter.MoveTo(insertion.offset - m_start);
        Shift shift{counter.Get(), 0, insertion.length};
        if (!m_shifts.empty() && m_shifts.back().start.line == shift.start.line)
            shift.before = m_shifts.back().before + m_shifts.back().length;
        m_shifts.push_back(shift);
    }
    m_insertions = {};
    m_text.reset();
}

SourceMap::Position SourceMap::Map(Position scanned)
{
    if (scanned.line == 0)
        return scanned;
    if (m_text)
        Resolve();
    Position mapped = scanned;
    const auto isBefore = [](const Position& position, const Shift& shift) {
        return position.line != shift.start.line ? position.line < shift.start.line
                                                 : position.column < shift.start.column;
    };
    const auto next = std::upper_bound(m_shifts.begin(), m_shifts.end(), scanned, isBefore);
    if (next != m_shifts.begin() && std::prev(next)->start.line == scanned.line) {
        const Shift& last = *std::prev(next);
        mapped.column -= last.before + std::min(last.length, scanned.column - last.start.column);
    }
    if (scanned.line == 1)
        mapped.column += m_skipped.column;
    mapped.line += m_skipped.line;
    return mapped;
}
