#include "vancorexml/main/parser/XMLEscaping.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include <QString>

#include "vancoreplatform/CorePlatformUtils.h"
#include "vancoreplatform/StaticObject.h"
#include "vansys/LogicException.h"

namespace XMLEscaping {

namespace {

namespace Assertions {

constexpr char File[] = "vancorexml\\main\\parser\\XMLFormatter";
// Unreachable through the writers, which pass only known kinds.
constexpr AssertionSite UnknownKind{File, 120, "Unknown type passed to InitMappingTableType", 0xF6AD402C};
// Unreachable through the writers, because their character test answers the same in both passes.
constexpr AssertionSite PassesDiffer{File, 236, "ix == dst.length()", 0xF6B4AF4C};

}  // namespace Assertions

// A backslash, "x", at most four digits and a semicolon.
constexpr std::size_t LongestNumericEscape = 7;

constexpr bool IsPairAt(std::u16string_view text, std::size_t position) noexcept
{
    return (text[position] & 0xFC00) == 0xD800 && position + 1 < text.size() && (text[position + 1] & 0xFC00) == 0xDC00;
}

// The number of units that are examined at once. With a fixed count, the compiler vectorises the loop.
constexpr std::size_t PlainBlock = 8;

// True if no unit of the block is a control character, one of "&'<> or above 0x7F. No table maps other units.
bool IsPlainBlock(const char16_t* block) noexcept
{
    std::uint16_t special = 0;
    for (std::size_t i = 0; i < PlainBlock; ++i) {
        const std::uint16_t unit = block[i];
        const bool control = unit < 0x20;
        const bool quote = unit == u'"';
        const bool ampersandOrApostrophe = (unit & 0xFFFE) == u'&';
        const bool lessOrGreater = (unit & 0xFFFD) == u'<';
        special |= static_cast<std::uint16_t>(control | quote | ampersandOrApostrophe | lessOrGreater | (unit > 0x7F));
    }
    return special == 0;
}

// Finds the units of a text that must be escaped, and their replacements. Both passes of Encode use it, so they
// agree on every unit.
template <typename IsValid>
class Scanner {
public:
    Scanner(std::u16string_view text, const EscapeTable& table, IsValid isValid)
        : m_text(text),
          m_table(table),
          m_isValid(isValid)
    {}

    // Returns the first position at or after `position` that must be escaped, or the length of the text.
    std::size_t Find(std::size_t position) const
    {
        while (position < m_text.size()) {
            const std::size_t left = m_text.size() - position;
            if (left >= PlainBlock && IsPlainBlock(m_text.data() + position)) {
                position += PlainBlock;
                continue;
            }
            for (const std::size_t end = position + std::min(left, PlainBlock); position < end; ++position) {
                const char16_t unit = m_text[position];
                if (unit <= 0x80) {
                    if (m_table.Maps(unit)) {
                        return position;
                    }
                } else if (!m_isValid(unit)) {
                    if (!IsPairAt(m_text, position))
                        return position;
                    ++position;
                }
            }
        }
        return position;
    }

    // Returns the replacement of the unit at a position that the search found. Valid until the next call.
    std::u16string_view Replacement(std::size_t position)
    {
        const char16_t unit = m_text[position];
        if (m_table.Maps(unit))
            return m_table[unit].View();
        return {m_buffer, WriteNumericEscape(unit, m_buffer)};
    }

private:
    std::u16string_view m_text;
    const EscapeTable& m_table;
    IsValid m_isValid;
    char16_t m_buffer[LongestNumericEscape];
};

// A buffer of a fixed size. Appending more than fits raises a LogicException.
class Writer {
public:
    explicit Writer(std::size_t length)
        : m_text(static_cast<int>(length), Qt::Uninitialized),
          m_out(reinterpret_cast<char16_t*>(m_text.data())),
          m_end(m_out + length)
    {}

    void Write(std::u16string_view piece)
    {
        if (piece.size() > static_cast<std::size_t>(m_end - m_out))
            ThrowLogicException(Assertions::PassesDiffer);
        m_out = std::copy(piece.begin(), piece.end(), m_out);
    }

    VString Release()
    {
        if (m_out != m_end)
            ThrowLogicException(Assertions::PassesDiffer);
        return VString(std::move(m_text));
    }

private:
    QString m_text;
    char16_t* m_out;
    char16_t* m_end;
};

template <typename IsValid>
VString Encode(const VString& text, const EscapeTable& table, IsValid isValid)
{
    const std::u16string_view source = text.View();
    Scanner<IsValid> scanner(source, table, isValid);

    const std::size_t first = scanner.Find(0);
    if (first == source.size())
        return text;
    std::size_t length = source.size();
    for (std::size_t found = first; found < source.size(); found = scanner.Find(found + 1))
        length += scanner.Replacement(found).size() - 1;
    if (length > static_cast<std::size_t>(VString::MaxLength))
        throw std::length_error("XMLFormatter: the escaped text is too long");

    Writer writer(length);
    std::size_t done = 0;
    for (std::size_t found = first; found < source.size(); found = scanner.Find(done)) {
        writer.Write(source.substr(done, found - done));
        writer.Write(scanner.Replacement(found));
        done = found + 1;
    }
    writer.Write(source.substr(done));
    return writer.Release();
}

}  // namespace

void InitMappingTableType(MappingTable& table, int kind)
{
    if (kind < AttributeMapping || kind > ApostropheMapping)
        ThrowLogicException(Assertions::UnknownKind);
    for (char16_t unit = 0; unit < 0x20; ++unit) {
        char16_t escape[LongestNumericEscape];
        table[unit] = VString(escape, WriteNumericEscape(unit, escape));
    }
    std::fill(table.begin() + 0x20, table.end(), VString());
    table[u'\t'] = kind == ContentMapping ? VString() : VString(u"&#9;");
    table[u'\n'] = kind == ContentMapping ? VString() : VString(u"&#10;");
    table[u'\r'] = u"&#13;";
    table[u'&'] = u"&amp;";
    table[u'<'] = u"&lt;";
    table[u'>'] = u"&gt;";
    table[u'\''] = kind == ApostropheMapping ? VString() : VString(u"&apos;");
    table[u'"'] = kind == ApostropheMapping ? VString() : VString(u"&quot;");
}

EscapeTable::EscapeTable(int kind)
{
    InitMappingTableType(m_entries, kind);
    for (std::size_t unit = 0; unit < m_entries.size(); ++unit) {
        if (!m_entries[unit].IsEmpty())
            m_mapped |= std::uint64_t(1) << unit;
    }
}

namespace {

struct Tables {
    EscapeTable attribute{AttributeMapping};
    EscapeTable content{ContentMapping};
};

}  // namespace

const EscapeTable& AttributeTable()
{
    return GetStaticObject<Tables>().attribute;
}

const EscapeTable& ContentTable()
{
    return GetStaticObject<Tables>().content;
}

VString EncodeWithTable(const VString& text, const EscapeTable& table)
{
    return Encode(text, table, [](char16_t unit) { return CorePlatformUtils::IsValidCharacter(unit); });
}

VString EncodeWithTable(const VString& text, const EscapeTable& table, bool (*isValid)(char16_t))
{
    return Encode(text, table, isValid);
}

std::size_t WriteNumericEscape(char16_t unit, char16_t* out) noexcept
{
    constexpr char16_t digits[] = u"0123456789ABCDEF";
    const char16_t* const begin = out;
    *out++ = u'\\';
    *out++ = u'x';
    int shift = 12;
    while (shift > 0 && (unit >> shift) == 0)
        shift -= 4;
    for (; shift >= 0; shift -= 4)
        *out++ = digits[(unit >> shift) & 0xF];
    *out++ = u';';
    return static_cast<std::size_t>(out - begin);
}

VString EncodeComment(const VString& text)
{
    // "&45;" only separates the two hyphens. It is no character reference, because comments contain none.
    return (" " + text + " ").replace(u"--", u"-&45;");
}

VString EncodeAsCData(const VString& text)
{
    const bool quoted = IsQuoted(text);
    VString result = quoted ? u"&quot;<![CDATA[" : u"<![CDATA[";
    result += (quoted ? text.mid(1, text.length() - 2) : text).replace(u"]]>", u"]]]]><![CDATA[>");
    result += quoted ? u"]]>&quot;" : u"]]>";
    return result;
}

bool IsQuoted(const VString& text) noexcept
{
    return text.length() >= 2 && text[0] == u'"' && text[text.length() - 1] == u'"';
}

}  // namespace XMLEscaping
