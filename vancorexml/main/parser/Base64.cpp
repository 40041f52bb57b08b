#include "vancorexml/main/parser/Base64.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <QRegExp>
#include <QString>

#include "vansys/LogicException.h"

namespace {

namespace Assertions {

constexpr AssertionSite LineTooLong{"vancorexml\\main\\parser\\Base64", 49, "onethird <= 0x3FFFFFFF", 0xD5E47E3E};

}  // namespace Assertions

constexpr char16_t Alphabet[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t LineLength = 72;
constexpr int Invalid = -1;

constexpr std::array<std::int8_t, 256> MakeDecodeTable()
{
    std::array<std::int8_t, 256> table{};
    for (std::int8_t& entry : table)
        entry = Invalid;
    for (std::size_t value = 0; value < 64; ++value)
        table[Alphabet[value]] = static_cast<std::int8_t>(value);
    return table;
}

constexpr std::array<std::int8_t, 256> DecodeTable = MakeDecodeTable();

std::size_t WholeLineLength(unsigned int length)
{
    const double onethird = std::ceil(length / 3.0);
    if (onethird > 0x3FFFFFFF)
        ThrowLogicException(Assertions::LineTooLong);
    const std::size_t characters = 4 * static_cast<std::size_t>(onethird);
    if (characters > static_cast<std::size_t>(VString::MaxLength))
        throw std::length_error("Base64Encode: the text is too long for one line");
    return characters;
}

// Writes the four characters that encode up to three bytes. Returns the end of the output.
char16_t* EncodeGroup(const unsigned char* data, unsigned int count, char16_t* out)
{
    const unsigned int a = data[0];
    const unsigned int b = count > 1 ? data[1] : 0u;
    const unsigned int c = count > 2 ? data[2] : 0u;
    *out++ = Alphabet[a >> 2];
    *out++ = Alphabet[(a & 3) << 4 | b >> 4];
    *out++ = count > 1 ? Alphabet[(b & 15) << 2 | c >> 6] : u'=';
    *out++ = count > 2 ? Alphabet[c & 63] : u'=';
    return out;
}

// The values of up to four characters, 0 for missing ones, and the number of "=" signs read with them.
struct Group {
    std::array<unsigned int, 4> values{};
    int padding = 0;
};

// Reads a group at `position` and moves `position` behind it. Skips characters that are not in the alphabet.
// Uses only the low 8 bits of a code unit.
Group ReadGroup(const VString& text, int& position)
{
    Group group;
    for (std::size_t count = 0; count < group.values.size() && position < text.length(); ++position) {
        const unsigned char character = static_cast<unsigned char>(text[position] & 0xFF);
        if (character == '=')
            ++group.padding;
        else if (DecodeTable[character] != Invalid)
            group.values[count++] = static_cast<unsigned char>(DecodeTable[character]);
    }
    return group;
}

}  // namespace

void Base64Encode(const unsigned char* data, unsigned int length, std::vector<VString>& lines, bool splitLines)
{
    if (length == 0)
        return;
    std::vector<char16_t> line(splitLines ? LineLength : WholeLineLength(length));
    char16_t* const begin = line.data();
    char16_t* const end = begin + line.size();
    char16_t* out = begin;
    for (unsigned int left = length; left > 0;) {
        const unsigned int count = left < 3 ? left : 3;
        out = EncodeGroup(data, count, out);
        data += count;
        left -= count;
        if (out == end || left == 0) {
            lines.emplace_back(begin, static_cast<std::size_t>(out - begin));
            out = begin;
        }
    }
}

void Base64Decode(const VString& text, std::vector<unsigned char>& bytes)
{
    const VString trimmed = text.trimmed();
    bytes.clear();
    bytes.reserve(static_cast<std::size_t>(trimmed.length()));
    for (int position = 0; position < trimmed.length();) {
        const Group group = ReadGroup(trimmed, position);
        const auto& [a, b, c, d] = group.values;
        bytes.push_back(static_cast<unsigned char>(a * 4 + b / 16));
        if (group.padding <= 1)
            bytes.push_back(static_cast<unsigned char>(b % 16 * 16 + c / 4));
        if (group.padding == 0)
            bytes.push_back(static_cast<unsigned char>(c % 4 * 64 + d));
    }
}

bool IsBase64(const VString& text)
{
    if (text.length() % 4 != 0)
        return false;
    const QRegExp base64(QStringLiteral("^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{3}=|[A-Za-z0-9+/]{2}==)?$"));
    return base64.exactMatch(text.ToQString());
}
