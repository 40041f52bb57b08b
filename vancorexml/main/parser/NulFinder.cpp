#include "vancorexml/main/parser/NulFinder.h"

#include <cstddef>

#include <xercesc/framework/XMLRecognizer.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vancoreplatform/Encoding.h"

namespace {

using xercesc::XMLRecognizer;

// The code units of a text. ASCII characters are one unit each in every encoding.
class Units {
public:
    Units(std::string_view bytes, std::size_t size, bool isBigEndian) noexcept
        : m_bytes(bytes),
          m_size(size),
          m_isBigEndian(isBigEndian)
    {}

    std::size_t Count() const noexcept { return m_bytes.size() / m_size; }

    char32_t At(std::size_t index) const noexcept
    {
        char32_t unit = 0;
        for (std::size_t i = 0; i < m_size; ++i) {
            const std::size_t byte = m_isBigEndian ? i : m_size - 1 - i;
            unit = unit << 8 | static_cast<unsigned char>(m_bytes[index * m_size + byte]);
        }
        return unit;
    }

    // True if the first `count` units are valid UTF-8.
    bool AreUtf8(std::size_t count) const noexcept
    {
        return m_size == 1 && FindInvalidUtf8(m_bytes.data(), count) == count;
    }

    // Returns the position behind the byte order mark, or 0 if there is none.
    std::size_t Begin() const noexcept
    {
        if (m_size == 1)
            return m_bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
        return Count() != 0 && At(0) == 0xFEFF ? 1 : 0;
    }

private:
    std::string_view m_bytes;
    std::size_t m_size;
    bool m_isBigEndian;
};

XMLRecognizer::Encodings DetectXercesEncoding(std::string_view text)
{
    return XMLRecognizer::basicEncodingProbe(reinterpret_cast<const XMLByte*>(text.data()), text.size());
}

// Xerces detects the size of the code units from the first bytes. An XML declaration cannot change it.
Units UnitsOf(const xercesc::InputSource& source, std::string_view text)
{
    if (const XMLCh* const encoding = source.getEncoding()) {
        const bool isBigEndian = xercesc::XMLString::equals(encoding, xercesc::XMLUni::fgUTF16BEncodingString);
        const bool isLittleEndian = xercesc::XMLString::equals(encoding, xercesc::XMLUni::fgUTF16LEncodingString);
        return Units(text, isBigEndian || isLittleEndian ? 2 : 1, isBigEndian);
    }
    switch (DetectXercesEncoding(text)) {
    case XMLRecognizer::UTF_16B: return Units(text, 2, true);
    case XMLRecognizer::UTF_16L: return Units(text, 2, false);
    case XMLRecognizer::UCS_4B: return Units(text, 4, true);
    case XMLRecognizer::UCS_4L: return Units(text, 4, false);
    default: return Units(text, 1, false);
    }
}

NulFinder::Position PositionOf(const Units& units, std::size_t index) noexcept
{
    NulFinder::Position position;
    const bool isUtf8 = units.AreUtf8(index);
    char32_t last = 0;
    for (std::size_t i = units.Begin(); i < index; ++i) {
        const char32_t unit = units.At(i);
        const bool endsLine = unit == '\r' || (unit == '\n' && last != '\r');
        const bool isTail = isUtf8 && (unit & 0xC0) == 0x80;
        const bool isPair = isUtf8 && unit >= 0xF0;
        if (endsLine)
            position = {position.line + 1, 1};
        else if (unit != '\n' && !isTail)
            position.column += isPair ? 2 : 1;
        last = unit;
    }
    return position;
}

}  // namespace

std::optional<NulFinder::Position> NulFinder::Find(const xercesc::InputSource& source, std::string_view text)
{
    if (text.find('\0') == std::string_view::npos)
        return std::nullopt;
    const Units units = UnitsOf(source, text);
    for (std::size_t i = 0; i < units.Count(); ++i) {
        if (units.At(i) == 0)
            return PositionOf(units, i);
    }
    return std::nullopt;
}

std::optional<NulFinder::Position> NulFinder::FindInDeclaration(
    const xercesc::InputSource& source, std::string_view text)
{
    const Units units = UnitsOf(source, text);
    const std::size_t second = units.Begin() + 1;
    const auto isEbcdic = !source.getEncoding() && DetectXercesEncoding(text) == XMLRecognizer::EBCDIC;
    const char32_t questionMark = isEbcdic ? 0x6F : '?';
    const char32_t greaterThan = isEbcdic ? 0x6E : '>';
    if (second >= units.Count() || units.At(second) != questionMark)
        return std::nullopt;
    for (std::size_t i = second; i < units.Count() && units.At(i) != greaterThan; ++i) {
        if (units.At(i) == 0)
            return PositionOf(units, i);
    }
    return std::nullopt;
}
