#include "vancorexml/main/parser/XMLTokenReader.h"

#include <algorithm>

#include "vancorexml/main/parser/ByteSet.h"
#include "vancorexml/main/parser/XMLUtils.h"

using XmlUtils::IsWhitespace;

namespace {

// The first bytes of characters that may end a name, see LineEndLength.
constexpr ByteSet NameEnd(" \t\r\n/>?=\xC2\xE2");
constexpr ByteSet TagEndOrQuote(">\"'");

// Returns the length in bytes if the text begins with a line end that only XML 1.1 has (U+0085 or U+2028), and
// otherwise 0. Such a line end is white space in a tag. In XML 1.0 a tag cannot contain it outside of quotes.
std::size_t LineEndLength(std::string_view text) noexcept
{
    if (text.starts_with("\xC2\x85"))
        return 2;
    return text.starts_with("\xE2\x80\xA8") ? 3 : 0;
}

// Returns the end of the name, or the length of the text. The search begins at `from`.
std::size_t FindNameEnd(std::string_view text, std::size_t from) noexcept
{
    std::size_t end = std::min(NameEnd.FindFirst(text, from), text.size());
    while (end < text.size() && static_cast<unsigned char>(text[end]) > 0x7F && LineEndLength(text.substr(end)) == 0)
        end = std::min(NameEnd.FindFirst(text, end + 1), text.size());
    return end;
}

std::string_view ReadName(std::string_view text) noexcept
{
    return text.substr(0, FindNameEnd(text, 0));
}

void SkipWhitespace(std::string_view& text) noexcept
{
    std::size_t count = 0;
    while (count < text.size()) {
        const std::size_t length = IsWhitespace(text[count]) ? 1 : LineEndLength(text.substr(count));
        if (length == 0)
            break;
        count += length;
    }
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
    std::size_t position = TagEndOrQuote.FindFirst(m_text, from);
    while (position != std::string_view::npos) {
        if (m_text[position] == '>')
            return position + 1;
        const std::size_t closing = m_text.find(m_text[position], position + 1);
        if (closing == std::string_view::npos)
            break;
        position = TagEndOrQuote.FindFirst(m_text, closing + 1);
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

// Xerces accepts a version that begins with "1.", whatever follows inside the quotes. So a "?>" inside quotes ends the
// declaration only if the declaration is not well-formed otherwise.
std::size_t XMLTokenReader::FindDeclarationEnd(std::size_t start) const noexcept
{
    XMLToken token;
    token.text = m_text.substr(start);
    XMLAttributeReader reader(token);
    XMLAttributeToken part;
    std::string_view rest;
    while (reader.Next(part))
        rest = m_text.substr(OffsetOf(part.text) + part.text.size());
    SkipWhitespace(rest);
    return rest.starts_with("?>") ? OffsetOf(rest) + 2 : FindEnd("?>", start + 2);
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
        m_position = isDeclaration ? FindDeclarationEnd(start) : FindEnd("?>", start + 2);
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
    m_rest.remove_prefix(FindNameEnd(m_rest, std::min<std::size_t>(2, m_rest.size())));
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

std::string_view FindAttributeValue(const XMLToken& token, std::string_view name) noexcept
{
    XMLAttributeReader reader(token);
    XMLAttributeToken attribute;
    while (reader.Next(attribute)) {
        if (attribute.name == name)
            return attribute.value;
    }
    return {};
}
