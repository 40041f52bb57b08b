#include "vancorexml/main/parser/XMLTreeText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include <QString>

#include "vancoreplatform/CorePlatformUtils.h"
#include "vancorexml/main/parser/AttributeMap.h"
#include "vancorexml/main/parser/DOMElement.h"
#include "vancorexml/main/parser/DOMElementChildren.h"
#include "vancorexml/main/parser/TextBlocks.h"
#include "vancorexml/main/parser/XMLEscaping.h"
#include "vancorexml/main/parser/XMLFormatter.h"
#include "vancorexml/main/parser/XMLStringFormatter.h"

namespace XMLTreeText {

namespace {

using TextBlocks::BlockUnits;
using TextBlocks::Copy;

constexpr std::size_t IndentUnits = 2;
// Longer texts are converted in pieces of this many code units, so the room that is reserved for a piece is bounded.
constexpr std::size_t PieceUnits = 1024;
// A code unit becomes at most "\xFFFF;".
constexpr std::size_t LongestUnit = 7;
// The most room that is reserved at once. A block may be written behind the end of a piece.
constexpr std::size_t MaxRoom = LongestUnit * PieceUnits + 2 * BlockUnits;

constexpr bool IsHighSurrogate(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool IsLowSurrogate(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

template <typename Unit>
Unit* WriteAscii(std::u16string_view text, Unit* out) noexcept
{
    for (const char16_t unit : text)
        *out++ = static_cast<Unit>(unit);
    return out;
}

// These write a unit, or a pair of surrogates, from 0x80 on.

char16_t* WriteUnit(char16_t unit, char16_t* out) noexcept
{
    *out++ = unit;
    return out;
}

char16_t* WritePair(char16_t high, char16_t low, char16_t* out) noexcept
{
    *out++ = high;
    *out++ = low;
    return out;
}

char* WriteUnit(char16_t unit, char* out) noexcept
{
    if (unit < 0x800) {
        *out++ = static_cast<char>(0xC0 | unit >> 6);
    } else {
        if ((unit & 0xF800) == 0xD800)
            unit = 0xFFFD;
        *out++ = static_cast<char>(0xE0 | unit >> 12);
        *out++ = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
    }
    *out++ = static_cast<char>(0x80 | (unit & 0x3F));
    return out;
}

char* WritePair(char16_t high, char16_t low, char* out) noexcept
{
    const unsigned codePoint = 0x10000u + ((high & 0x3FFu) << 10) + (low & 0x3FFu);
    *out++ = static_cast<char>(0xF0 | codePoint >> 18);
    *out++ = static_cast<char>(0x80 | (codePoint >> 12 & 0x3F));
    *out++ = static_cast<char>(0x80 | (codePoint >> 6 & 0x3F));
    *out++ = static_cast<char>(0x80 | (codePoint & 0x3F));
    return out;
}

// Writes the first unit of a text, or its first pair of surrogates, and escapes it with the table, if that is not null.
template <typename Unit>
Unit* WriteFirst(const char16_t*& text, const char16_t* end, const XMLEscaping::EscapeTable* table, Unit* out)
{
    const char16_t unit = *text++;
    if (unit >= 0x80 && unit < 0xD800)
        return WriteUnit(unit, out);
    if (unit < 0x80) {
        if (table != nullptr && table->Maps(unit))
            return WriteAscii((*table)[unit].View(), out);
        *out++ = static_cast<Unit>(unit);
        return out;
    }
    if (IsHighSurrogate(unit) && text != end && IsLowSurrogate(*text))
        return WritePair(unit, *text++, out);
    if (table == nullptr || CorePlatformUtils::IsValidCharacter(unit))
        return WriteUnit(unit, out);
    char16_t escape[LongestUnit];
    return WriteAscii({escape, XMLEscaping::WriteNumericEscape(unit, escape)}, out);
}

// Writes a text and escapes it with the table, if `How` is Copy::Escaped. Needs LongestUnit units of room for each unit
// and BlockUnits more. Returns the end.
template <Copy How, typename Unit>
Unit* WriteText(const char16_t* text, std::size_t length, const XMLEscaping::EscapeTable* table, Unit* out)
{
    const char16_t* const end = text + length;
    while (static_cast<std::size_t>(end - text) >= BlockUnits) {
        const unsigned special = TextBlocks::Fastest::CopyBlock<How>(text, out);
        const int plain = special == 0 ? static_cast<int>(BlockUnits) : std::countr_zero(special);
        text += plain;
        out += plain;
        if (special == 0)
            continue;
        // A character beyond ASCII is rarely alone.
        do
            out = WriteFirst(text, end, table, out);
        while (text != end && *text >= 0x80);
    }
    const auto left = static_cast<std::size_t>(end - text);
    if (TextBlocks::Fastest::CopyShort<How>(text, left, out))
        return out + left;
    while (text != end) {
        if (TextBlocks::IsPlain<How, Unit>(*text))
            *out++ = static_cast<Unit>(*text++);
        else
            out = WriteFirst(text, end, table, out);
    }
    return out;
}

// Returns the length for which a text gets memory: the expected length of the text of which `used` units are the given
// part, with a reserve. There are few steps, because each one may copy the text, but none goes far beyond `used`.
std::size_t ChooseCapacity(std::size_t used, double part)
{
    constexpr std::size_t large = 0x400000;
    const double expected = part > 0 ? static_cast<double>(used) / part * 1.05 : 0;
    const std::size_t most = used < large ? 8 * used : 2 * used;
    return std::max(static_cast<std::size_t>(std::min(expected, static_cast<double>(most))), 2 * used);
}

// Where the text goes. MakeRoom gets the end of the text that was written so far and which part of the whole text that
// is, from 0 to 1. Afterwards at least MaxRoom units fit between `out` and `end`.

// A VString that grows.
class Utf16Target {
public:
    using Unit = char16_t;

    // Thrown if the text may become too long for a VString.
    struct TooLong {};

    void MakeRoom(char16_t*& out, char16_t*& end, double part)
    {
        const std::size_t used = out == nullptr ? 0 : static_cast<std::size_t>(out - Begin());
        const auto limit = static_cast<std::size_t>(VString::MaxLength);
        if (used + MaxRoom > limit)
            throw TooLong();
        const int length = static_cast<int>(std::min(ChooseCapacity(used, part) + MaxRoom, limit));
        m_text.reserve(length);
        m_text.resize(length);
        out = Begin() + used;
        end = Begin() + length;
    }
    VString Release(const char16_t* out)
    {
        const int spare = m_text.size() - static_cast<int>(out - Begin());
        m_text.chop(spare);
        // Memory that was never written takes only addresses. If the block kept only the text, glibc would get a larger
        // one anew from the system for every large text: 16 ms instead of 8 ms for 6 million units.
        if (spare > m_text.size())
            m_text.squeeze();
        return VString(std::move(m_text));
    }

private:
    char16_t* Begin() { return reinterpret_cast<char16_t*>(m_text.data()); }

    QString m_text;
};

// A buffer that is emptied when it is full. `Sink` has the operation Write(bytes, part).
template <typename Sink>
class Utf8Target {
public:
    using Unit = char;

    explicit Utf8Target(Sink& sink, std::size_t size)
        : m_sink(sink),
          m_size(size),
          m_buffer(std::make_unique_for_overwrite<char[]>(size))
    {}

    void MakeRoom(char*& out, char*& end, double part)
    {
        Flush(out, part);
        out = m_buffer.get();
        end = out + m_size;
    }
    void Flush(const char* out, double part)
    {
        if (out != nullptr)
            m_sink.Write({m_buffer.get(), static_cast<std::size_t>(out - m_buffer.get())}, part);
    }

private:
    Sink& m_sink;
    std::size_t m_size;
    std::unique_ptr<char[]> m_buffer;
};

template <typename Target>
class Writer {
public:
    using Unit = typename Target::Unit;

    explicit Writer(Target& target) : m_target(target) { MakeRoom(); }

    // Returns the end of the text.
    Unit* Write(const Content& content)
    {
        if (content.header)
            Put(u"<?xml version='1.0' encoding='utf-8' ?>\n\n");
        if (content.comment != nullptr) {
            Put(u"<!--");
            Put(XMLEscaping::EncodeComment(*content.comment).View());
            Put(u"-->\n");
        }
        if (content.element != nullptr)
            PutTree(*content.element);
        return m_out;
    }

private:
    // An open element that has children.
    struct Open {
        const DOMElement* element;
        DOMElementConstChildren::iterator next;
        DOMElementConstChildren::iterator end;
    };

    // Returns about which part of the elements is written: the exact part, if all siblings were of the same size.
    double EstimatePart() const
    {
        double part = 0;
        double share = 1;
        for (const Open& open : m_open) {
            const auto count = static_cast<double>(open.element->GetChildren().size());
            share /= count;
            part += share * (count - static_cast<double>(open.end - open.next) - 1);
            if (share < 1e-6)
                break;
        }
        return part;
    }

    void MakeRoom() { m_target.MakeRoom(m_out, m_end, EstimatePart()); }
    // Precondition: `units` is at most MaxRoom.
    void Reserve(std::size_t units)
    {
        if (static_cast<std::size_t>(m_end - m_out) < units)
            MakeRoom();
    }

    template <Copy How>
    void PutText(std::u16string_view text, const XMLEscaping::EscapeTable* table)
    {
        while (text.size() > PieceUnits) {
            const std::size_t length = IsHighSurrogate(text[PieceUnits - 1]) ? PieceUnits - 1 : PieceUnits;
            Reserve(MaxRoom);
            m_out = WriteText<How>(text.data(), length, table, m_out);
            text.remove_prefix(length);
        }
        Reserve(LongestUnit * text.size() + BlockUnits);
        m_out = WriteText<How>(text.data(), text.size(), table, m_out);
    }
    void Put(std::u16string_view text) { PutText<Copy::Unchanged>(text, nullptr); }
    void PutEscaped(std::u16string_view text, const XMLEscaping::EscapeTable& table)
    {
        PutText<Copy::Escaped>(text, &table);
    }
    // Writes a few ASCII characters.
    template <std::size_t Size>
    void PutMarkup(const char (&text)[Size])
    {
        Reserve(Size);
        for (std::size_t i = 0; i + 1 < Size; ++i)
            m_out[i] = static_cast<Unit>(text[i]);
        m_out += Size - 1;
    }
    void PutIndent(std::size_t levels)
    {
        for (std::size_t left = levels * IndentUnits; left > 0;) {
            const std::size_t count = std::min(left, PieceUnits);
            Reserve(count);
            std::fill_n(m_out, count, static_cast<Unit>(' '));
            m_out += count;
            left -= count;
        }
    }

    void PutAttribute(const AttributeMap::value_type& attribute)
    {
        PutMarkup(" ");
        Put(attribute.first.View());
        PutMarkup("='");
        PutEscaped(attribute.second.View(), m_attributeTable);
        PutMarkup("'");
    }
    void PutAttributes(const AttributeMap& attributes)
    {
        if (attributes.size() < 2) {
            if (!attributes.empty())
                PutAttribute(*attributes.begin());
            return;
        }
        m_sorted.clear();
        for (const AttributeMap::value_type& attribute : attributes)
            m_sorted.push_back(&attribute);
        std::sort(m_sorted.begin(), m_sorted.end(), [](const auto* a, const auto* b) { return a->first < b->first; });
        for (const AttributeMap::value_type* attribute : m_sorted)
            PutAttribute(*attribute);
    }

    // These write the text of an element whose lines have the indentation of `levels`.
    void PutContent(const DOMElement& element, std::size_t levels)
    {
        const VString& text = element.GetText();
        if (element.IsEncoded())
            PutVerbatim(text.View(), levels);
        else if (!XMLEscaping::IsLongContent(text))
            PutEscaped(text.View(), m_attributeTable);
        else if (text.contains(u'<'))
            PutCData(text);
        else
            PutEscaped(text.View(), m_contentTable);
    }
    void PutVerbatim(std::u16string_view text, std::size_t levels)
    {
        if (!text.starts_with(u'\n'))
            PutMarkup("\n");
        Put(text);
        if (!text.ends_with(u'\n'))
            PutMarkup("\n");
        PutIndent(levels);
    }
    void PutCData(const VString& text)
    {
        const bool quoted = XMLEscaping::IsQuoted(text);
        std::u16string_view inside = text.View();
        if (quoted) {
            inside = inside.substr(1, inside.size() - 2);
            PutMarkup("&quot;");
        }
        PutMarkup("<![CDATA[");
        for (std::size_t end = inside.find(u"]]>"); end != inside.npos; end = inside.find(u"]]>")) {
            Put(inside.substr(0, end));
            PutMarkup("]]]]><![CDATA[>");
            inside.remove_prefix(end + 3);
        }
        Put(inside);
        PutMarkup("]]>");
        if (quoted)
            PutMarkup("&quot;");
    }

    // Writes the start tag without its end.
    void PutStart(const DOMElement& element)
    {
        PutIndent(m_open.size());
        PutMarkup("<");
        Put(element.GetName().View());
        PutAttributes(element.GetAttributes());
    }
    void PutEnd(const DOMElement& element)
    {
        PutMarkup("</");
        Put(element.GetName().View());
        PutMarkup(">\n");
    }
    void PutLeaf(const DOMElement& element)
    {
        PutStart(element);
        if (!element.HasText()) {
            PutMarkup(" />\n");
            return;
        }
        PutMarkup(">");
        PutContent(element, m_open.size());
        PutEnd(element);
    }
    void PutOpenTag(const DOMElement& element)
    {
        PutStart(element);
        PutMarkup(">\n");
        const auto children = element.GetChildren();
        m_open.push_back({&element, children.begin(), children.end()});
    }
    void PutCloseTag()
    {
        const DOMElement& element = *m_open.back().element;
        if (element.HasText()) {
            PutIndent(m_open.size());
            PutContent(element, m_open.size());
        }
        m_open.pop_back();
        PutIndent(m_open.size());
        PutEnd(element);
    }
    void PutTree(const DOMElement& top)
    {
        if (!top.HasChildren())
            return PutLeaf(top);
        PutOpenTag(top);
        while (!m_open.empty()) {
            Open& open = m_open.back();
            if (open.next == open.end) {
                PutCloseTag();
                continue;
            }
            const DOMElement& child = **open.next;
            ++open.next;
            if (child.HasChildren())
                PutOpenTag(child);
            else
                PutLeaf(child);
        }
    }

    const XMLEscaping::EscapeTable& m_attributeTable = XMLEscaping::AttributeTable();
    const XMLEscaping::EscapeTable& m_contentTable = XMLEscaping::ContentTable();
    Target& m_target;
    Unit* m_out = nullptr;
    Unit* m_end = nullptr;
    std::vector<Open> m_open;
    std::vector<const AttributeMap::value_type*> m_sorted;
};

// Collects the bytes in a string.
class StringSink {
public:
    void Write(std::string_view bytes, double part)
    {
        const std::size_t needed = m_text.size() + bytes.size();
        // The last piece needs no reserve.
        if (needed > m_text.capacity())
            m_text.reserve(part < 1 ? ChooseCapacity(needed, part) : needed);
        m_text.append(bytes);
    }
    std::string Release()
    {
        if (m_text.capacity() - m_text.size() > m_text.size())
            m_text.shrink_to_fit();
        return std::move(m_text);
    }

private:
    std::string m_text;
};

// Passes the bytes on.
class FunctionSink {
public:
    explicit FunctionSink(const std::function<void(std::string_view)>& write) : m_write(write) {}

    void Write(std::string_view bytes, double) const { m_write(bytes); }

private:
    const std::function<void(std::string_view)>& m_write;
};

template <typename Sink>
void WriteTo(Sink& sink, const Content& content, std::size_t bufferBytes)
{
    Utf8Target<Sink> target(sink, bufferBytes);
    target.Flush(Writer<Utf8Target<Sink>>(target).Write(content), 1);
}

// The text through a writer, which knows whether it is too long.
VString ToUtf16ThroughWriter(const Content& content)
{
    XMLStringFormatter writer;
    writer.SetFormatMode(FormatModeContent);
    if (content.header)
        writer.OutputHeader();
    if (content.comment != nullptr)
        writer.OutputComment(*content.comment);
    if (content.element != nullptr)
        writer.OutputDOMElement(*content.element);
    return writer.GetOutput();
}

}  // namespace

VString ToUtf16(const Content& content)
{
    try {
        Utf16Target target;
        return target.Release(Writer<Utf16Target>(target).Write(content));
    } catch (const Utf16Target::TooLong&) {
        return ToUtf16ThroughWriter(content);
    }
}

std::string ToUtf8(const Content& content)
{
    StringSink sink;
    WriteTo(sink, content, 0x8000);
    return sink.Release();
}

void WriteUtf8(const Content& content, const std::function<void(std::string_view)>& write)
{
    const FunctionSink sink(write);
    WriteTo(sink, content, 0x20000);
}

}  // namespace XMLTreeText
