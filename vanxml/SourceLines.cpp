#include "vanxml/SourceLines.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "vancoreplatform/Encoding.h"
#include "vanxml/SourceDocument.h"

namespace {

// The number of code units that an excerpt contains on each side of its place.
constexpr std::uint64_t reach = 100;

// The number of bytes that are read at once.
constexpr std::size_t chunkSize = 1 << 16;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::size_t CharacterLength(char firstByte)
{
    const auto byte = static_cast<unsigned char>(firstByte);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// Returns the positions of the diagnostics that are about the source; others become unknown.
std::vector<SourcePosition> PlacesIn(const std::vector<ParseDiagnostic>& diagnostics, const VString& name)
{
    std::vector<SourcePosition> places;
    for (const ParseDiagnostic& each : diagnostics) {
        const bool isInSource = each.sourceId.IsEmpty() || each.sourceId == name;
        places.push_back(isInSource ? each.start : SourcePosition());
    }
    return places;
}

}  // namespace

SourceLines::SourceLines(const std::vector<SourcePosition>& places, SourcePosition start) : m_count(places.size())
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto [line, column] = places[i];
        if (line == 0)
            continue;
        const std::uint64_t from = column > reach ? column - reach : 1;
        m_parts.push_back({line, from, column + reach, i, false, {}});
        if (line > 1)
            m_parts.push_back({line - 1, from, column + reach, i, true, {}});
    }
    std::sort(m_parts.begin(), m_parts.end(), [](const Part& a, const Part& b) {
        return std::tie(a.line, a.from, a.place) < std::tie(b.line, b.from, b.place);
    });
    while (m_line < start.line)
        EndLine();
    while (m_column < start.column)
        AddCharacter(" ", 1);
}

void SourceLines::Add(std::string_view bytes)
{
    if (IsComplete())
        return;
    if (!m_rest.empty()) {
        m_rest += bytes;
        const std::string joined = std::exchange(m_rest, std::string());
        m_rest = joined.substr(ReadCharacters(joined, false));
    } else {
        m_rest = bytes.substr(ReadCharacters(bytes, false));
    }
}

std::vector<std::optional<SourceExcerpt>> SourceLines::Finish()
{
    ReadCharacters(m_rest, true);
    CloseParts();
    std::vector<std::optional<SourceExcerpt>> excerpts(m_count);
    for (Part& part : m_parts) {
        if (part.hasLine && !part.isBefore)
            excerpts[part.place].emplace().line = std::move(part.found);
    }
    for (Part& part : m_parts) {
        const bool isPresent = part.from == 1 || !part.found.text.empty();
        if (part.isBefore && isPresent && excerpts[part.place])
            excerpts[part.place]->before = std::move(part.found);
    }
    return excerpts;
}

std::size_t SourceLines::ReadCharacters(std::string_view bytes, bool isLast)
{
    std::size_t position = 0;
    while (position < bytes.size() && !IsComplete()) {
        const std::size_t valid = position + FindInvalidUtf8(bytes.data() + position, bytes.size() - position);
        while (position < valid && !IsComplete()) {
            const std::size_t length = CharacterLength(bytes[position]);
            AddCharacter(bytes.substr(position, length), length == 4 ? 2 : 1);
            position += length;
        }
        if (IsComplete())
            break;
        const bool mayBeIncomplete = !isLast && bytes.size() - position < 4;
        if (mayBeIncomplete)
            return position;
        if (position < bytes.size())
            AddCharacter(bytes.substr(position++, 1), 1);
    }
    return bytes.size();
}

void SourceLines::AddCharacter(std::string_view bytes, unsigned units)
{
    const bool isBehindCarriageReturn = std::exchange(m_isBehindCarriageReturn, bytes.front() == '\r');
    if (bytes.front() == '\n' || bytes.front() == '\r') {
        if (bytes.front() == '\r' || !isBehindCarriageReturn)
            EndLine();
        return;
    }
    if (std::exchange(m_mayHaveMark, false) && bytes == byteOrderMark)
        return;
    for (; m_next < m_parts.size(); ++m_next) {
        Part& part = m_parts[m_next];
        if (part.line != m_line || part.from > m_column)
            break;
        part.found.firstColumn = m_column;
        part.hasLine = true;
        m_open.push_back(m_next);
    }
    if (!m_open.empty()) {
        const auto close = [&](std::size_t index) {
            Part& part = m_parts[index];
            part.found.isContinued = m_column >= part.to;
            if (!part.found.isContinued)
                part.found.text += bytes;
            return part.found.isContinued;
        };
        m_open.erase(std::remove_if(m_open.begin(), m_open.end(), close), m_open.end());
    }
    m_column += units;
}

void SourceLines::EndLine()
{
    CloseParts();
    ++m_line;
    m_column = 1;
    m_mayHaveMark = false;
}

// The columns of the other parts of this line are behind its end.
void SourceLines::CloseParts()
{
    m_open.clear();
    for (; m_next < m_parts.size() && m_parts[m_next].line <= m_line; ++m_next) {
        Part& part = m_parts[m_next];
        part.hasLine = part.line == m_line;
        part.found.firstColumn = std::min(part.from, m_column);
    }
}

std::vector<std::optional<SourceExcerpt>> FindExcerpts(
    const std::vector<ParseDiagnostic>& diagnostics, const VString& name, std::string_view text)
{
    SourceLines lines(PlacesIn(diagnostics, name));
    for (; !text.empty() && !lines.IsComplete(); text.remove_prefix(std::min(text.size(), chunkSize)))
        lines.Add(text.substr(0, chunkSize));
    return lines.Finish();
}

std::vector<std::optional<SourceExcerpt>> FindExcerpts(
    const std::vector<ParseDiagnostic>& diagnostics, SourceDocument& document)
{
    // The source begins behind the white space that the parser skips.
    SourceLines lines(PlacesIn(diagnostics, document.Name()), document.Start());
    document.Source().ResetToStart();
    std::string chunk;
    while (!lines.IsComplete() && document.Source().GetBytes(chunk, static_cast<unsigned>(chunkSize)))
        lines.Add(chunk);
    return lines.Finish();
}
