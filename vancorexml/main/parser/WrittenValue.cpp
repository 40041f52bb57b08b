#include "vancorexml/main/parser/WrittenValue.h"

#include <algorithm>
#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLReferences.h"

namespace {

constexpr std::string_view NextLine = "\xC2\x85";           // U+0085
constexpr std::string_view LineSeparator = "\xE2\x80\xA8";  // U+2028

// Returns the length of the reference, line end or character at the start of the text.
std::size_t LengthOfFirst(std::string_view text, bool hasReferences, bool isVersion11)
{
    const unsigned char first = static_cast<unsigned char>(text.front());
    if (hasReferences && first == '&')
        return std::min(text.find(';'), text.size() - 1) + 1;
    if (first == '\r') {
        const std::string_view next = text.substr(1);
        const bool isNextLine = isVersion11 && next.starts_with(NextLine);
        return isNextLine ? 1 + NextLine.size() : next.starts_with('\n') ? 2 : 1;
    }
    const std::size_t length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return std::min(length, text.size());
}

// Returns the character at the start of the text.
char32_t FirstCharacter(std::u16string_view text)
{
    const bool isPair = text.size() > 1 && text[0] >= 0xD800 && text[0] < 0xDC00;
    return isPair ? 0x10000 + ((text[0] - 0xD800u) << 10) + (text[1] - 0xDC00u) : text[0];
}

VString ReferenceTo(char32_t character)
{
    return "&#" + VString::number(static_cast<std::uint32_t>(character)) + ";";
}

// Returns the escaped form of a character in text or in an attribute; empty if the character needs no escape.
VString EscapeCharacter(char32_t character, const WrittenValue::Run& run)
{
    const bool isAttribute = run.form == WrittenValue::Form::Attribute;
    switch (character) {
    case U'&': return "&amp;";
    case U'<': return "&lt;";
    case U'>': return "&gt;";  // attributes too: if one has ">", the parser may refuse names that begin with a colon
    case U'\'':
    case U'"':
        if (!isAttribute || character != static_cast<char32_t>(run.quote))
            return "";
        return character == U'"' ? "&quot;" : "&apos;";
    case U'\t':
    case U'\n': return isAttribute ? ReferenceTo(character) : VString();
    default: return "";
    }
}

}  // namespace

void WrittenValue::Append(std::string_view piece, Form form, char quote)
{
    const bool hasReferences = form != Form::CData;
    const auto place = form == Form::Attribute ? XMLReferences::Place::Attribute : XMLReferences::Place::Text;
    m_pieces.push_back({form, quote});
    m_hasEntity = m_hasEntity || (hasReferences && XMLReferences::HasEntity(piece));
    while (!piece.empty()) {
        const std::string_view written = piece.substr(0, LengthOfFirst(piece, hasReferences, m_isVersion11));
        const bool isLiteral = !hasReferences && written == "&";
        const bool isLineEnd = m_isVersion11 && (written.ends_with(NextLine) || written == LineSeparator);
        AppendCharacter(
            written, isLiteral ? std::string(written) : XMLReferences::Decode(isLineEnd ? "\n" : written, place));
        piece.remove_prefix(written.size());
    }
}

void WrittenValue::AppendCharacter(std::string_view written, std::string_view character)
{
    const VString units = VString::fromUtf8(character.data(), character.size());
    const std::size_t offset = static_cast<std::size_t>(written.data() - m_document.data());
    m_units += units.View();
    m_sources.insert(m_sources.end(), units.View().size(), {offset, written.size(), m_pieces.size() - 1});
}

std::vector<WrittenValue::Run> WrittenValue::FindRuns(std::size_t offset, std::size_t length) const
{
    std::vector<Run> runs;
    for (std::size_t i = offset; i < offset + length; ++i) {
        const Source& source = m_sources[i];
        const std::size_t end = source.offset + source.length;
        const bool continues = i > offset && m_sources[i - 1].piece == source.piece;
        if (continues)
            runs.back().length = end - runs.back().offset;
        else
            runs.push_back({source.offset, source.length, m_pieces[source.piece].form, m_pieces[source.piece].quote});
        runs.back().isBeforeGreater = m_document.substr(end).starts_with('>');
    }
    return runs;
}

std::string WrittenValue::Escape(std::u16string_view text, const Run& run, const XMLCharacters& characters)
{
    const bool isCData = run.form == Form::CData;
    VString escaped;
    while (!text.empty()) {
        const char32_t character = FirstCharacter(text);
        const std::u16string_view units = text.substr(0, character > 0xFFFF ? 2 : 1);
        text.remove_prefix(units.size());
        VString form;
        if (characters.NeedsReferences(VString(units.data(), units.size())))
            form = ReferenceTo(character);
        else if (!isCData)
            form = EscapeCharacter(character, run);
        if (form.IsEmpty())
            escaped.append(units.data(), units.size());
        else
            escaped += isCData ? "]]>" + form + "<![CDATA[" : form;
        // A ">" may follow inside or behind the text, so a new section begins here.
        if (isCData && escaped.endsWith("]]"))
            escaped += "]]><![CDATA[";
    }
    // XML forbids "]]>" in text.
    if (run.form == Form::Text && run.isBeforeGreater && escaped.endsWith("]]"))
        escaped = escaped.left(escaped.length() - 1) + ReferenceTo(U']');
    return escaped.toStdString();
}
