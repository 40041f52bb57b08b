#include "vancorexml/main/parser/SourceTags.h"

#include <utility>

namespace {

constexpr std::string_view WhiteSpace = " \t\r\n";

// Returns the first line of the text, without white space around it.
std::string_view FirstLine(std::string_view text) noexcept
{
    const std::size_t start = text.find_first_not_of(WhiteSpace);
    if (start == std::string_view::npos)
        return {};
    const std::string_view line = text.substr(start, text.find_first_of("\r\n", start) - start);
    return line.substr(0, line.find_last_not_of(WhiteSpace) + 1);
}

}  // namespace

SourceTags::SourceTags(std::string_view text, TextVisitor visit)
    : m_text(text),
      m_visit(std::move(visit)),
      m_reader(text),
      m_start(text),
      m_part(text)
{
    Read();
}

void SourceTags::Read()
{
    m_firstText = {};
    m_hasTag = false;
    while (!m_hasTag && m_reader.Next(m_tag)) {
        const bool isText = m_tag.kind == XMLToken::Kind::Text || m_tag.kind == XMLToken::Kind::CData;
        m_hasTag = m_tag.kind == XMLToken::Kind::StartTag || m_tag.kind == XMLToken::Kind::EndTag;
        if (isText && m_firstText.empty())
            m_firstText = FirstLine(m_tag.text);
        if (m_visit && m_tag.kind == XMLToken::Kind::Text)
            m_visit(m_tag.text);
    }
    const std::string_view first = !m_firstText.empty() ? m_firstText : m_tag.text;
    m_start.At(m_hasTag || !m_firstText.empty() ? m_reader.OffsetOf(first) : m_text.size());
    m_part = m_start;
}

SourceRange SourceTags::GetRange() noexcept
{
    return GetRange(m_hasTag ? m_tag.text : m_text.substr(m_text.size()));
}

SourceRange SourceTags::GetRange(std::string_view part) noexcept
{
    const std::size_t start = m_reader.OffsetOf(part);
    if (start < m_part.GetOffset())
        m_part = m_start;
    SourceRange range;
    range.start = m_part.At(start);
    PositionCounter end = m_part;
    range.end = end.At(start + part.size());
    return range;
}

std::optional<SourceRange> SourceTags::GetTextRange() noexcept
{
    return m_firstText.empty() ? std::nullopt : std::optional(GetRange(m_firstText));
}
