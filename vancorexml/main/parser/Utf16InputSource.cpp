#include "vancorexml/main/parser/Utf16InputSource.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancoreplatform/Encoding.h"

namespace {

class Utf16Stream final : public xercesc::BinInputStream {
public:
    explicit Utf16Stream(std::string_view utf8) noexcept
        : m_begin(reinterpret_cast<const XMLByte*>(utf8.data())),
          m_next(m_begin),
          m_end(m_begin + utf8.size())
    {}

    // In bytes of the UTF-8 text.
    XMLFilePos curPos() const override { return static_cast<XMLFilePos>(m_next - m_begin); }
    const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* toFill, XMLSize_t maxToRead) override
    {
        const XMLByte* const start = toFill;
        const XMLByte* const end = toFill + maxToRead / sizeof(XMLCh) * sizeof(XMLCh);
        if (m_lowSurrogate != 0 && toFill != end)
            WriteUnit(toFill, std::exchange(m_lowSurrogate, XMLCh{}));
        while (toFill != end && m_next != m_end) {
            if (*m_next < 0x80)
                WriteAscii(toFill, end);
            else
                WriteSequence(toFill, end);
        }
        return static_cast<XMLSize_t>(toFill - start);
    }

private:
    static void WriteUnit(XMLByte*& toFill, XMLCh unit) noexcept
    {
        std::memcpy(toFill, &unit, sizeof unit);
        toFill += sizeof unit;
    }

    // Converts ASCII in blocks of two words, then word by word. The last word may contain bytes behind the ASCII;
    // the next write overwrites their output.
    void WriteAscii(XMLByte*& toFill, const XMLByte* end) noexcept
    {
        constexpr std::uint64_t HighBits = 0x8080808080808080;
        std::uint64_t words[2];
        while (HasRoom(toFill, end, sizeof words)) {
            std::memcpy(words, m_next, sizeof words);
            if (((words[0] | words[1]) & HighBits) != 0)
                break;
            WriteWidened<sizeof words>(toFill);
            m_next += sizeof words;
            // NOLINTNEXTLINE(bugprone-sizeof-expression): each byte becomes one XMLCh.
            toFill += sizeof words * sizeof(XMLCh);
        }
        while (HasRoom(toFill, end, sizeof words[0])) {
            std::memcpy(words, m_next, sizeof words[0]);
            const std::uint64_t high = words[0] & HighBits;
            WriteWidened<sizeof words[0]>(toFill);
            const int count =
                (std::endian::native == std::endian::little ? std::countr_zero(high) : std::countl_zero(high)) / 8;
            m_next += count;
            toFill += static_cast<std::size_t>(count) * sizeof(XMLCh);
            if (high != 0)
                return;
        }
        while (m_next != m_end && *m_next < 0x80 && toFill != end)
            WriteUnit(toFill, *m_next++);
    }

    bool HasRoom(const XMLByte* toFill, const XMLByte* end, std::size_t count) const noexcept
    {
        return static_cast<std::size_t>(m_end - m_next) >= count &&
            static_cast<std::size_t>(end - toFill) >= count * sizeof(XMLCh);
    }

    template <std::size_t Count>
    void WriteWidened(XMLByte* toFill) const noexcept
    {
        XMLCh units[Count];
        for (std::size_t i = 0; i < Count; ++i)
            units[i] = m_next[i];
        std::memcpy(toFill, units, sizeof units);
    }

    // Converts one character of two to four bytes. If only the first half of a surrogate pair fits, the
    // second half begins the next read.
    void WriteSequence(XMLByte*& toFill, const XMLByte* end) noexcept
    {
        const auto tail = [this](int i) { return static_cast<char32_t>(m_next[i] & 0x3F); };
        const char32_t lead = *m_next;
        if (lead < 0xE0) {
            WriteUnit(toFill, static_cast<XMLCh>((lead & 0x1F) << 6 | tail(1)));
            m_next += 2;
        } else if (lead < 0xF0) {
            WriteUnit(toFill, static_cast<XMLCh>((lead & 0xF) << 12 | tail(1) << 6 | tail(2)));
            m_next += 3;
        } else {
            const char32_t offset = ((lead & 0x7) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3)) - 0x10000;
            const auto low = static_cast<XMLCh>(0xDC00 | (offset & 0x3FF));
            WriteUnit(toFill, static_cast<XMLCh>(0xD800 | offset >> 10));
            if (toFill != end)
                WriteUnit(toFill, low);
            else
                m_lowSurrogate = low;
            m_next += 4;
        }
    }

    const XMLByte* m_begin;
    const XMLByte* m_next;
    const XMLByte* m_end;
    XMLCh m_lowSurrogate = 0;  // the pending second half of a pair, or 0
};

bool IsSpace(char byte) noexcept
{
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

bool IsNameByte(char byte) noexcept
{
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    return isLetter || (byte >= '0' && byte <= '9') || byte == '.' || byte == '-' || byte == '_';
}

// Removes the leading bytes that are of the kind from `text` and returns them.
std::string_view ConsumeWhile(std::string_view& text, bool (*isOfKind)(char)) noexcept
{
    const auto end = std::find_if_not(text.begin(), text.end(), isOfKind);
    const std::string_view cut = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(cut.size());
    return cut;
}

bool ConsumeByte(std::string_view& text, char byte) noexcept
{
    if (!text.starts_with(byte))
        return false;
    text.remove_prefix(1);
    return true;
}

// True if the text has no XML declaration, or one that names no encoding but UTF-8. False for every unusual
// declaration, because Xerces is stricter about a declaration if it has to detect the encoding.
bool IsDeclaredUtf8(std::string_view text) noexcept
{
    // Xerces may detect another encoding in a text that begins with a byte order mark or with code units of more
    // than one byte, so these texts are left to it.
    if (text.size() < 6 || text[0] != '<' || text[1] <= ' ' || text[1] > '~')
        return false;
    if (!text.starts_with("<?xml") || !IsSpace(text[5]))
        return true;
    constexpr std::size_t LongestDeclaration = 256;
    std::string_view rest = text.substr(5, LongestDeclaration);
    for (;;) {
        ConsumeWhile(rest, IsSpace);
        if (rest.starts_with("?>"))
            return true;
        const std::string_view name = ConsumeWhile(rest, IsNameByte);
        ConsumeWhile(rest, IsSpace);
        if (!ConsumeByte(rest, '='))
            return false;
        ConsumeWhile(rest, IsSpace);
        const char quote = rest.starts_with('"') ? '"' : '\'';
        if (!ConsumeByte(rest, quote))
            return false;
        const std::string_view value = ConsumeWhile(rest, IsNameByte);
        if (!ConsumeByte(rest, quote))
            return false;
        if (name == "encoding" && value != "UTF-8" && value != "utf-8")
            return false;
    }
}

}  // namespace

Utf16InputSource::Utf16InputSource(const xercesc::InputSource& source, std::string_view text)
    : InputSource(source.getSystemId(), source.getMemoryManager()),
      m_text(text)
{
    setEncoding(std::endian::native == std::endian::little ? xercesc::XMLUni::fgUTF16LEncodingString
                                                           : xercesc::XMLUni::fgUTF16BEncodingString);
}

bool Utf16InputSource::IsWellFormed(const xercesc::InputSource& source, std::string_view text) noexcept
{
    const XMLCh* const encoding = source.getEncoding();
    const bool isUtf8 = encoding ? xercesc::XMLString::equals(encoding, xercesc::XMLUni::fgUTF8EncodingString) &&
            !text.starts_with("\xEF\xBB\xBF")
                                 : IsDeclaredUtf8(text);
    return isUtf8 && FindInvalidUtf8(text.data(), text.size()) == text.size();
}

xercesc::BinInputStream* Utf16InputSource::makeStream() const
{
    return new (getMemoryManager()) Utf16Stream(m_text);
}
