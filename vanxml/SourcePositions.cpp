#include "vanxml/SourcePositions.h"

#include <algorithm>
#include <optional>

#include "vancoreplatform/VFormatString.h"

namespace {

constexpr std::string_view declarationStart = " xmlns:IllegalColon='";
constexpr std::string_view attributePrefix = "IllegalColon";

// Counts lines and columns over UTF-8 as the scanner does over UTF-16.
class PositionCounter {
public:
    // XML 1.1 has two line ends more.
    explicit PositionCounter(bool hasMoreLineEnds) : m_hasMoreLineEnds(hasMoreLineEnds) {}

    // Takes the byte at `offset`; bytes are to be taken one after the other.
    void Step(std::string_view text, std::size_t offset)
    {
        const auto byte = static_cast<unsigned char>(text[offset]);
        if (byte >= 0x80 && byte < 0xC0)
            return;  // inside a character
        const bool isNextLine = m_hasMoreLineEnds && text.compare(offset, 2, "\xC2\x85") == 0;
        const bool isLineSeparator = m_hasMoreLineEnds && text.compare(offset, 3, "\xE2\x80\xA8") == 0;
        const bool endsReturn = m_afterReturn && (byte == '\n' || isNextLine);
        m_afterReturn = byte == '\r';
        if (endsReturn)
            return;
        if (byte == '\n' || byte == '\r' || isNextLine || isLineSeparator)
            m_position = {m_position.line + 1, 1};
        else
            m_position.column += byte >= 0xF0 ? 2 : 1;
    }

    void Take(std::string_view text)
    {
        for (std::size_t i = 0; i < text.size(); ++i)
            Step(text, i);
    }

    SourcePositions::Position Get() const { return m_position; }

private:
    const bool m_hasMoreLineEnds;
    bool m_afterReturn = false;
    SourcePositions::Position m_position{1, 1};
};

bool IsVersion11(std::string_view text)
{
    if (text.compare(0, 5, "<?xml") != 0)
        return false;
    return text.substr(0, text.find("?>")).find("1.1") != std::string_view::npos;
}

// A position as "(3,14)" within a message, and where that ends.
struct WrittenPosition {
    SourcePositions::Position position;
    int end = 0;
};

std::optional<long long> ReadNumber(const VString& text, int& at)
{
    const int start = at;
    long long value = 0;
    for (; at < text.length() && at - start < 18 && text[at] >= u'0' && text[at] <= u'9'; ++at)
        value = value * 10 + (text[at] - u'0');
    return at > start ? std::optional<long long>(value) : std::nullopt;
}

std::optional<WrittenPosition> ReadPosition(const VString& text, int at)
{
    const auto expect = [&](char16_t unit) { return at < text.length() && text[at++] == unit; };
    if (!expect(u'('))
        return std::nullopt;
    const std::optional<long long> line = ReadNumber(text, at);
    if (!line || !expect(u','))
        return std::nullopt;
    const std::optional<long long> column = ReadNumber(text, at);
    if (!column || !expect(u')'))
        return std::nullopt;
    return WrittenPosition{{*line, *column}, at};
}

// The index in `message` where its position begins; -1 when it has no position.
int FindPosition(const VString& message, const VString& id)
{
    for (const char* kind : {"Warning(", "Error(", "Fatal Error("}) {
        if (message.startsWith(kind))
            return message.endsWith("(id: " + id + ")") ? message.indexOf(u'(') : -1;
    }
    // A refused entity: a text in the user's language, the position, the quoted name.
    if (!message.endsWith("'"))
        return -1;
    const int quote = static_cast<int>(message.View().rfind(u") '"));
    return quote < 0 ? -1 : static_cast<int>(message.View().rfind(u'(', static_cast<std::size_t>(quote)));
}

}  // namespace

SourcePositions::SourcePositions(std::string_view skipped, std::string_view given, std::string_view scanned)
{
    PositionCounter counter(false);
    counter.Take(skipped);
    m_skippedLines = counter.Get().line - 1;
    m_skippedColumns = counter.Get().column - 1;
    if (given.size() != scanned.size())
        FindInsertions(given, scanned);
}

// The declaration comes first, behind the name of the first element; everything else that was
// inserted is a prefix before a colon. A prefix differs from the text at once, its "I" being
// no colon, while the declaration may begin like the attribute in whose place it stands.
void SourcePositions::FindInsertions(std::string_view given, std::string_view scanned)
{
    const auto end = given.begin() + static_cast<std::ptrdiff_t>(std::min(given.size(), scanned.size()));
    const auto common =
        static_cast<std::size_t>(std::mismatch(given.begin(), end, scanned.begin()).first - given.begin());
    const std::size_t declaration = scanned.rfind(declarationStart, common);
    if (declaration == std::string_view::npos)
        return;
    const std::size_t quote = scanned.find('\'', declaration + declarationStart.size());
    if (quote == std::string_view::npos)
        return;

    PositionCounter counter(IsVersion11(scanned));
    counter.Take(scanned.substr(0, declaration));
    const auto insert = [&](std::size_t at, std::size_t length) {
        Insert(counter.Get(), static_cast<long long>(length));
        counter.Take(scanned.substr(at, length));
    };
    insert(declaration, quote + 1 - declaration);
    std::size_t to = quote + 1;
    for (std::size_t from = declaration; from < given.size() && to < scanned.size(); ++from, ++to) {
        if (given[from] != scanned[to]) {
            if (given[from] != ':' || scanned.compare(to, attributePrefix.size(), attributePrefix) != 0)
                return;
            insert(to, attributePrefix.size());
            to += attributePrefix.size();
        }
        counter.Step(scanned, to);
    }
}

void SourcePositions::Insert(Position start, long long length)
{
    const bool sameLine = !m_insertions.empty() && m_insertions.back().start.line == start.line;
    m_insertions.push_back({start, length, sameLine ? m_insertions.back().before + m_insertions.back().length : 0});
}

SourcePositions::Position SourcePositions::Map(Position scanned) const
{
    Position mapped = scanned;
    const auto isBefore = [](const Position& position, const Insertion& insertion) {
        return position.line != insertion.start.line ? position.line < insertion.start.line
                                                     : position.column < insertion.start.column;
    };
    const auto next = std::upper_bound(m_insertions.begin(), m_insertions.end(), scanned, isBefore);
    if (next != m_insertions.begin() && std::prev(next)->start.line == scanned.line) {
        const Insertion& last = *std::prev(next);
        mapped.column -= last.before + std::min(last.length, scanned.column - last.start.column);
    }
    if (scanned.line == 1)
        mapped.column += m_skippedColumns;
    mapped.line += m_skippedLines;
    return mapped;
}

VString SourcePositions::MapMessage(const VString& message, const VString& id) const
{
    const int start = FindPosition(message, id);
    if (start < 0)
        return message;
    const std::optional<WrittenPosition> written = ReadPosition(message, start);
    if (!written)
        return message;
    const Position mapped = Map(written->position);
    const VString position = VFormatString("(%1,%2)")
                                 .arg(static_cast<std::int64_t>(mapped.line))
                                 .arg(static_cast<std::int64_t>(mapped.column));
    return message.left(start) + position + message.mid(written->end);
}
