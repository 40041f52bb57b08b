#include "vancoreplatform/VString.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <functional>
#include <limits>
#include <ostream>
#include <stdexcept>

#include "vancoreplatform/VCType.h"

// g++ for Windows exports the constant only with this definition.
// NOLINTNEXTLINE(readability-redundant-declaration): see above
constexpr int VString::MaxLength;

namespace {

constexpr std::size_t MaxUnits = static_cast<std::size_t>(VString::MaxLength);
constexpr char16_t ReplacementCharacter = 0xFFFD;

// Throws std::length_error if the result is too long. Qt counts in int and does not check for overflow.
void CheckGrowth(int length, std::size_t added)
{
    if (added > MaxUnits || static_cast<std::size_t>(length) > MaxUnits - added)
        throw std::length_error("VString: the text is too long");
}

const QChar* AsQChars(const char16_t* text) noexcept
{
    return reinterpret_cast<const QChar*>(text);
}

QString ToQString(const char16_t* text, std::size_t length)
{
    CheckGrowth(0, length);
    return QString(AsQChars(text), static_cast<int>(length));
}

constexpr bool IsHighSurrogate(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool IsLowSurrogate(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

// ASCII is tested and narrowed in blocks of this many units. Compilers vectorise the loops, because the count is
// fixed and the units are local copies.
constexpr std::size_t AsciiBlock = 16;

using UnitBlock = std::array<char16_t, AsciiBlock>;

// Copies the block at `position`. Returns false if the block is not all ASCII or if less than a block is left.
bool ReadAsciiBlock(std::u16string_view text, std::size_t position, UnitBlock& block) noexcept
{
    if (text.size() - position < AsciiBlock)
        return false;
    std::memcpy(block.data(), text.data() + position, sizeof block);
    char16_t all = 0;
    for (const char16_t unit : block)
        all |= unit;
    return all < 0x80;
}

void WriteAsciiBlock(char* out, const UnitBlock& block) noexcept
{
    std::array<char, AsciiBlock> bytes;
    for (std::size_t i = 0; i < AsciiBlock; ++i)
        bytes[i] = static_cast<char>(block[i]);
    std::memcpy(out, bytes.data(), AsciiBlock);
}

// Reads the code point at `position` and moves `position` behind it.
inline char32_t NextCodePoint(std::u16string_view text, std::size_t& position) noexcept
{
    const char16_t unit = text[position++];
    if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit))
        return unit;
    if (IsLowSurrogate(unit) || position == text.size() || !IsLowSurrogate(text[position]))
        return ReplacementCharacter;
    const char16_t low = text[position++];
    return 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
}

constexpr std::size_t Utf8Length(char32_t codePoint) noexcept
{
    if (codePoint < 0x80)
        return 1;
    if (codePoint < 0x800)
        return 2;
    return codePoint < 0x10000 ? 3 : 4;
}

inline char* WriteUtf8(char* out, char32_t codePoint) noexcept
{
    if (codePoint < 0x80) {
        *out = static_cast<char>(codePoint);
        return out + 1;
    }
    if (codePoint < 0x800) {
        out[0] = static_cast<char>(0xC0 | codePoint >> 6);
        out[1] = static_cast<char>(0x80 | (codePoint & 0x3F));
        return out + 2;
    }
    constexpr unsigned char leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    const std::size_t length = Utf8Length(codePoint);
    for (std::size_t i = length - 1; i > 0; --i) {
        out[i] = static_cast<char>(0x80 | (codePoint & 0x3F));
        codePoint >>= 6;
    }
    out[0] = static_cast<char>(leads[length] | codePoint);
    return out + length;
}

std::size_t CountUtf8(std::u16string_view text) noexcept
{
    std::size_t bytes = 0;
    for (std::size_t position = 0; position < text.size();) {
        UnitBlock block;
        if (ReadAsciiBlock(text, position, block)) {
            position += AsciiBlock;
            bytes += AsciiBlock;
        } else {
            const std::size_t end = std::min(position + AsciiBlock, text.size());
            while (position < end)
                bytes += Utf8Length(NextCodePoint(text, position));
        }
    }
    return bytes;
}

// Counts the byte order marks at the start. Qt drops them, but a VString keeps them as characters.
std::size_t CountMarks(const char* utf8, std::size_t length) noexcept
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::size_t count = 0;
    while (std::string_view(utf8, length).substr(count * mark.size()).starts_with(mark))
        ++count;
    return count;
}

// Counts the bytes that begin a character. Each character takes at least one code unit.
std::size_t CountCharacters(const char* utf8, std::size_t length) noexcept
{
    return static_cast<std::size_t>(
        std::count_if(utf8, utf8 + length, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// Returns the end of a piece of at most `limit` bytes that does not end inside a sequence.
std::size_t FindPieceEnd(const char* utf8, std::size_t begin, std::size_t length, std::size_t limit) noexcept
{
    if (length - begin <= limit)
        return length;
    std::size_t end = begin + limit;
    for (int back = 0; back < 3 && (utf8[end] & 0xC0) == 0x80; ++back)
        --end;
    return end;
}

}  // namespace

VString::VString(const char* utf8)
{
    if (utf8 != nullptr)
        *this = fromUtf8(utf8, std::char_traits<char>::length(utf8));
}

VString::VString(const char16_t* text)
{
    if (text != nullptr)
        m_text = ::ToQString(text, std::char_traits<char16_t>::length(text));
}

VString::VString(const char16_t* text, std::size_t length) : m_text(::ToQString(text, length)) {}

VString VString::fromUtf8(const char* utf8, std::size_t length)
{
    if (length <= MaxUnits && CountMarks(utf8, length) == 0)
        return QString::fromUtf8(utf8, static_cast<int>(length));
    if (length > MaxUnits)
        CheckGrowth(0, CountCharacters(utf8, length));
    VString result;
    // Decodes in pieces, because Qt counts bytes in int. The marks that Qt drops from each piece are added here.
    constexpr std::size_t pieceBytes = 0x100000;
    for (std::size_t position = 0; position < length;) {
        const std::size_t end = FindPieceEnd(utf8, position, length, pieceBytes);
        const std::size_t leading = CountMarks(utf8 + position, end - position);
        CheckGrowth(result.m_text.size(), leading);
        result.m_text.append(QString(static_cast<int>(leading), QChar(QChar::ByteOrderMark)));
        position += leading * 3;
        result.append(QString::fromUtf8(utf8 + position, static_cast<int>(end - position)));
        position = end;
    }
    return result;
}

VString VString::fromStdString(const std::string& utf8)
{
    return fromUtf8(utf8.data(), utf8.size());
}

VString VString::number(std::int32_t value)
{
    return QString::number(static_cast<qlonglong>(value));
}

VString VString::number(std::uint32_t value)
{
    return QString::number(static_cast<qulonglong>(value));
}

VString VString::number(std::int64_t value)
{
    return QString::number(static_cast<qlonglong>(value));
}

VString VString::number(std::uint64_t value)
{
    return QString::number(static_cast<qulonglong>(value));
}

VString VString::number(double value, int precision)
{
    // No double has more significant digits than this.
    constexpr int mostDigits = 767;
    char buffer[mostDigits + 32];
    const auto result = std::to_chars(
        buffer, buffer + sizeof buffer, value, std::chars_format::general, std::min(precision, mostDigits));
    return QString::fromLatin1(buffer, static_cast<int>(result.ptr - buffer));
}

VString VString::join(const std::vector<VString>& parts, const VString& separator)
{
    VString result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            result.append(separator);
        result.append(parts[i]);
    }
    return result;
}

std::string VString::toStdString() const
{
    std::string result;
    result.reserve(CountUtf8(View()));
    AppendTo(result);
    return result;
}

void VString::AppendTo(std::string& utf8) const
{
    const std::u16string_view text = View();
    // Writes into a small buffer and appends it, because resizing the result would first fill it with zeros.
    constexpr std::size_t longestBlock = 3 * (AsciiBlock + 1);
    char buffer[4096];
    char* const full = buffer + sizeof buffer - longestBlock;
    char* out = buffer;
    for (std::size_t position = 0; position < text.size();) {
        UnitBlock block;
        if (ReadAsciiBlock(text, position, block)) {
            WriteAsciiBlock(out, block);
            position += AsciiBlock;
            out += AsciiBlock;
        } else {
            const std::size_t end = std::min(position + AsciiBlock, text.size());
            while (position < end)
                out = WriteUtf8(out, NextCodePoint(text, position));
        }
        if (out > full) {
            utf8.append(buffer, static_cast<std::size_t>(out - buffer));
            out = buffer;
        }
    }
    utf8.append(buffer, static_cast<std::size_t>(out - buffer));
}

VString& VString::operator+=(char16_t unit)
{
    CheckGrowth(m_text.size(), 1);
    m_text.append(QChar(unit));
    return *this;
}

VString& VString::append(const VString& other)
{
    CheckGrowth(m_text.size(), static_cast<std::size_t>(other.m_text.size()));
    m_text.append(other.m_text);
    return *this;
}

VString& VString::append(const char16_t* text, std::size_t length)
{
    CheckGrowth(m_text.size(), length);
    const std::less<const char16_t*> before;
    const bool ownText = !before(text, begin()) && before(text, end());
    // Growing may free the buffer that `text` points into, so copy it first.
    if (ownText)
        return append(VString(text, length));
    m_text.append(AsQChars(text), static_cast<int>(length));
    return *this;
}

VString VString::replace(const VString& before, const VString& after) const
{
    int found = before.IsEmpty() ? -1 : indexOf(before);
    if (found < 0)
        return *this;
    VString result;
    int done = 0;
    while (found >= 0) {
        result.append(begin() + done, static_cast<std::size_t>(found - done)).append(after);
        done = found + before.length();
        found = indexOf(before, done);
    }
    return result.append(begin() + done, static_cast<std::size_t>(length() - done));
}

std::vector<VString> VString::split(char16_t separator) const
{
    std::vector<VString> parts;
    int start = 0;
    for (int found = indexOf(separator); found >= 0; found = indexOf(separator, start)) {
        parts.push_back(mid(start, found - start));
        start = found + 1;
    }
    parts.push_back(mid(start));
    return parts;
}

VString VString::trimLeft() const
{
    const const_iterator first = std::find_if_not(begin(), end(), VCType::isSpace);
    return mid(static_cast<int>(first - begin()));
}

VString VString::trimmed() const
{
    const VString text = trimLeft();
    int length = text.length();
    while (length > 0 && VCType::isSpace(text[length - 1]))
        --length;
    return text.left(length);
}

double VString::toDouble(bool* ok) const
{
    return m_text.toDouble(ok);
}

int VString::toInt(bool* ok, int base) const
{
    return m_text.toInt(ok, base);
}

VString operator+(const VString& a, const VString& b)
{
    VString result(a);
    result.append(b);
    return result;
}

VString operator+(VString&& a, const VString& b)
{
    a.append(b);
    return std::move(a);
}

std::ostream& operator<<(std::ostream& out, const VString& text)
{
    return out << text.toStdString();
}
