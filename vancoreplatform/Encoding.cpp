#include "vancoreplatform/Encoding.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

constexpr int IllFormed = 0;
constexpr int Truncated = -1;

// The first byte of a sequence determines the length of the sequence and the range of its second byte. The
// range excludes overlong forms, surrogates and code points above U+10FFFF.
struct Lead {
    int length = 0;
    unsigned char secondMin = 0x80;
    unsigned char secondMax = 0xBF;
};

constexpr Lead ReadLead(unsigned char byte) noexcept
{
    if (byte < 0x80)
        return {1};
    if (byte < 0xC2)
        return {0};
    if (byte < 0xE0)
        return {2};
    if (byte == 0xE0)
        return {3, 0xA0, 0xBF};
    if (byte == 0xED)
        return {3, 0x80, 0x9F};
    if (byte < 0xF0)
        return {3};
    if (byte == 0xF0)
        return {4, 0x90, 0xBF};
    if (byte == 0xF4)
        return {4, 0x80, 0x8F};
    return {byte < 0xF4 ? 4 : 0};
}

// Returns the number of bytes of the first sequence that fit its first byte; 0 if the first byte begins no sequence.
int CountFitting(const unsigned char* bytes, std::size_t available) noexcept
{
    const Lead lead = ReadLead(bytes[0]);
    for (int i = 1; i < lead.length; ++i) {
        const unsigned char min = i == 1 ? lead.secondMin : 0x80;
        const unsigned char max = i == 1 ? lead.secondMax : 0xBF;
        if (static_cast<std::size_t>(i) == available || bytes[i] < min || bytes[i] > max)
            return i;
    }
    return lead.length;
}

// Returns the length of the first sequence in `bytes`, which must not be empty; IllFormed if the sequence is not
// UTF-8; Truncated if the bytes end inside a sequence that more bytes could complete.
int SequenceLength(const unsigned char* bytes, std::size_t available) noexcept
{
    const int length = ReadLead(bytes[0]).length;
    const int fitting = CountFitting(bytes, available);
    if (fitting == length)
        return length;
    return static_cast<std::size_t>(fitting) == available ? Truncated : IllFormed;
}

constexpr bool IsTail(unsigned char byte) noexcept
{
    return (byte & 0xC0) == 0x80;
}

std::size_t SkipAscii(const unsigned char* bytes, std::size_t position, std::size_t length) noexcept
{
    std::uint64_t words[4];
    while (length - position >= sizeof words) {
        std::memcpy(words, bytes + position, sizeof words);
        if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080) != 0)
            break;
        position += sizeof words;
    }
    while (length - position >= sizeof words[0]) {
        std::memcpy(words, bytes + position, sizeof words[0]);
        const std::uint64_t high = words[0] & 0x8080808080808080;
        if (high != 0) {
            return position +
                static_cast<std::size_t>(
                    std::endian::native == std::endian::little ? std::countr_zero(high) : std::countl_zero(high)) /
                8;
        }
        position += sizeof words[0];
    }
    while (position < length && bytes[position] < 0x80)
        ++position;
    return position;
}

}  // namespace

std::size_t FindInvalidUtf8(const char* bytes, std::size_t length) noexcept
{
    const auto* data = reinterpret_cast<const unsigned char*>(bytes);
    std::size_t position = 0;
    while (position < length) {
        if (data[position] < 0x80) {
            position = SkipAscii(data, position, length);
            continue;
        }
        // Fast path for the common sequences of two and three bytes.
        if (length - position >= 3 && IsTail(data[position + 1])) {
            const unsigned char lead = data[position];
            if (lead >= 0xC2 && lead < 0xE0) {
                position += 2;
                continue;
            }
            if (lead > 0xE0 && lead < 0xED && IsTail(data[position + 2])) {
                position += 3;
                continue;
            }
        }
        const int sequence = SequenceLength(data + position, length - position);
        if (sequence <= 0)
            return position;
        position += static_cast<std::size_t>(sequence);
    }
    return length;
}

std::size_t CountInvalidUtf8(const char* bytes, std::size_t length) noexcept
{
    const int fitting = CountFitting(reinterpret_cast<const unsigned char*>(bytes), length);
    return static_cast<std::size_t>(std::max(fitting, 1));
}

Encoding DetectEncoding(const char* bytes, std::size_t length) noexcept
{
    const std::string_view text(bytes, length);
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        return Encoding::Utf16;
    if (text.find('\0') != std::string_view::npos)
        return Encoding::Unknown;
    const std::size_t invalid = FindInvalidUtf8(bytes, length);
    if (invalid == length)
        return Encoding::Utf8;
    const auto* rest = reinterpret_cast<const unsigned char*>(bytes) + invalid;
    return SequenceLength(rest, length - invalid) == Truncated ? Encoding::Utf8 : Encoding::Unknown;
}
