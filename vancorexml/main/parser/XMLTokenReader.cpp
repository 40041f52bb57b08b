#include "vancorexml/main/parser/XMLTokenReader.h"

#include <algorithm>

#include "vancorexml/main/parser/XMLUtils.h"

using XmlUtils::IsWhitespace;

namespace {

constexpr std::string_view NameEnd = " \t\r\n/>?=";

std::string_view ReadName(std::string_view text) noexcept
{
    return text.substr(0, text.find_first_of(NameEnd));
}

void SkipWhitespace(std::string_view& text) noexcept
{
    std::size_t count = 0;
    while (count < text.size() && IsWhitespace(text[count]))
        ++count;
    text.remove_prefix(count);
}

}  // namespace

// Returns the position behind the first terminator at or after `from`.
std::size_t XMLTokenReader::FindEnd(std::string_view terminator, std::size_t from) const noexcept
{
    const std::size_t found = m_text.find(terminator, std::min(from, m_text.size()));
    return found == std::string_view::npos ? m_text.size() : found + terminator.size();
}

// Returns the position behind the first ">" at or after `from` that is not inside quotes.
std::size_t XMLTokenReader::FindTagEnd(std::size_t from) const noexcept
{
    for (std::size_t position = from; position < m_text.size(); ++position) {
        const char character = m_text[position];
        if (character == '>')
            return position + 1;
        if (character == '"' || character == '\'') {
            position = m_text.find(character, position + 1);
            if (position == std::string_view::npos)
                break;
        }
    }
    return m_text.size();
}

// A ">" ends the document type unless it is inside the internal subset, quotes, a comment or a processing
// instruction.
std::size_t XMLTokenReader::FindDocumentTypeEnd(std::size_t from) const noexcept
{
    bool isInSubset = false;
    std::size_t position = from;
    while (position < m_text.size()) {
        const char character = m_text[position];
        const std::string_view rest = m_text.substr(position);
        if (rest.starts_with("<!--")) {
            position = FindEnd("-->", position + 4);
        } else if (rest.starts_with("<?")) {
            position = FindEnd("?>", position + 2);
        } else if (character == '"' || character == '\'') {
            position = FindEnd(m_text.substr(position, 1), position + 1);
        } else {
            if (character == '>' && !isInSubset)
                return position + 1;
            if (character == '[' || character == ']')
                isInSubset = character == '[';
            ++position;
        }
    }
    return m_text.size();
}

bool XMLTokenReader::Next(XMLToken& token) noexcept
{
    if (m_position == m_text.size())
        return false;
    const std::size_t start = m_position;
    const std::string_view rest = m_text.substr(start);
    const bool isFirstMarkup = rest.front() == '<' && !m_hasReadMarkup;
    m_hasReadMarkup |= isFirstMarkup;
    token.name = {};
    token.isEmpty = false;
    if (rest.front() != '<') {
        token.kind = XMLToken::Kind::Text;
        m_position = std::min(m_text.find('<', start), m_text.size());
    } else if (rest.starts_with("</")) {
        token.kind = XMLToken::Kind::EndTag;
        token.name = ReadName(rest.substr(2));
        m_position = FindEnd(">", start + 2);
    } else if (rest.starts_with("<!--")) {
        token.kind = XMLToken::Kind::Comment;
        m_position = FindEnd("-->", start + 4);
    } else if (rest.starts_with("<![CDATA[")) {
        token.kind = XMLToken::Kind::CData;
        m_position = FindEnd("]]>", start + 9);
    } else if (rest.starts_with("<!")) {
        token.kind = XMLToken::Kind::DocumentType;
        m_position = FindDocumentTypeEnd(start + 2);
    } else if (rest.starts_with("<?")) {
        const bool isDeclaration = isFirstMarkup && ReadName(rest.substr(2)) == "xml";
        token.kind = isDeclaration ? XMLToken::Kind::Declaration : XMLToken::Kind::ProcessingInstruction;
        m_position = FindEnd("?>", start + 2);
    } else {
        token.kind = XMLToken::Kind::StartTag;
        token.name = ReadName(rest.substr(1));
        m_position = FindTagEnd(start + 1);
        token.isEmpty = m_text.substr(start, m_position - start).ends_with("/>");
    }
    token.text = m_text.substr(start, m_position - start);
    return true;
}

XMLAttributeReader::XMLAttributeReader(const XMLToken& token) noexcept : m_rest(token.text)
{
    // The name begins behind "<" or "<?" and has at least one character.
    m_rest.remove_prefix(std::min(m_rest.find_first_of(NameEnd, 2), m_rest.size()));
}

bool XMLAttributeReader::Next(XMLAttributeToken& attribute) noexcept
{
    std::string_view rest = m_rest;
    SkipWhitespace(rest);
    const std::string_view start = rest;
    const std::string_view name = ReadName(rest);
    rest.remove_prefix(name.size());
    SkipWhitespace(rest);
    if (name.empty() || !rest.starts_with('='))
        return false;
    rest.remove_prefix(1);
    SkipWhitespace(rest);
    if (!rest.starts_with('"') && !rest.starts_with('\''))
        return false;
    const char quote = rest.front();
    rest.remove_prefix(1);
    const std::size_t length = rest.find(quote);
    if (length == std::string_view::npos)
        return false;
    attribute.name = name;
    attribute.value = rest.substr(0, length);
    attribute.quote = quote;
    rest.remove_prefix(length + 1);
    attribute.text = start.substr(0, start.size() - rest.size());
    m_rest = rest;
    return true;
}
