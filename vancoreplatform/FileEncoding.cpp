#include "vancoreplatform/FileEncoding.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "vancoreplatform/CodecReader.h"
#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/ReadError.h"
#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VFormatString.h"

namespace {

struct Input {
    std::string_view bytes;
    const VString& name;
};

[[noreturn]] void ThrowBadByte(const VString& name, const VString& encoding, std::size_t offset)
{
    const VString reason = VFormatString("not valid %1, the first bad byte is at offset %2")
                               .arg(encoding)
                               .arg(static_cast<std::uint64_t>(offset));
    ThrowReadError(name, reason);
}

struct Mark {
    const char* encoding;
    std::string_view bytes;
};

using namespace std::string_view_literals;

// The mark of UTF-32LE begins with the mark of UTF-16LE, so UTF-32LE comes first.
constexpr std::array<Mark, 5> Marks{{{"UTF-8", "\xEF\xBB\xBF"},
    {"UTF-32BE", "\0\0\xFE\xFF"sv},
    {"UTF-32LE", "\xFF\xFE\0\0"sv},
    {"UTF-16BE", "\xFE\xFF"},
    {"UTF-16LE", "\xFF\xFE"}}};

const Mark* FindMark(std::string_view bytes) noexcept
{
    const auto found =
        std::find_if(Marks.begin(), Marks.end(), [&](const Mark& mark) { return bytes.starts_with(mark.bytes); });
    return found == Marks.end() ? nullptr : &*found;
}

VString NameOf(const QTextCodec& codec)
{
    return QString::fromLatin1(codec.name());
}

// Returns the codec that the XML declaration names, unless that is UTF-8; null if there is none. The declaration was
// read as ASCII, so it is wrong if it names an encoding that writes "<?xml" in other bytes, such as UTF-16.
const QTextCodec* FindDeclaredCodec(std::string_view bytes)
{
    const std::optional<std::string_view> declared = FindDeclaredEncoding(bytes);
    if (!declared)
        return nullptr;
    const QTextCodec* codec = FindAsciiCodec(QByteArray(declared->data(), static_cast<int>(declared->size())));
    return codec != nullptr && codec->name() != "UTF-8" ? codec : nullptr;
}

// Throws if the bytes from `start` on are not valid UTF-8.
void CheckUtf8(const Input& input, std::size_t start)
{
    const std::size_t invalid = FindInvalidUtf8(input.bytes.data() + start, input.bytes.size() - start);
    if (invalid != input.bytes.size() - start)
        ThrowBadByte(input.name, "UTF-8", start + invalid);
}

struct Detected {
    FileEncoding encoding;
    std::size_t markLength = 0;
    const QTextCodec* codec = nullptr;  // null for Unicode encodings
};

// Determines the encoding by the rules of DecodeToUtf8, without the exception for ASCII. UTF-8 has been checked.
Detected Detect(const Input& input, bool useXmlDeclaration)
{
    if (const Mark* mark = FindMark(input.bytes)) {
        Detected detected{{mark->encoding, true}, mark->bytes.size()};
        if (IsUtf8(detected.encoding))
            CheckUtf8(input, detected.markLength);
        return detected;
    }
    const std::size_t invalid = FindInvalidUtf8(input.bytes.data(), input.bytes.size());
    if (invalid == input.bytes.size())
        return {};
    const QTextCodec* codec = useXmlDeclaration ? FindDeclaredCodec(input.bytes) : nullptr;
    if (codec == nullptr)
        ThrowBadByte(input.name, "UTF-8", invalid);
    return {{NameOf(*codec), false}, 0, codec};
}

unsigned ReadUnit(const unsigned char* bytes, std::size_t size, bool bigEndian) noexcept
{
    unsigned value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[bigEndian ? i : size - 1 - i];
    return value;
}

VString DecodeMarkedUtf16(const Input& input, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes.data());
    const std::size_t length = input.bytes.size();
    std::u16string units;
    units.reserve(length / 2);
    std::size_t high = 0;  // offset of a high surrogate that waits for its low surrogate; 0 for none
    std::size_t position = 2;
    for (; length - position >= 2; position += 2) {
        const char16_t unit = static_cast<char16_t>(ReadUnit(data + position, 2, bigEndian));
        const bool isLow = (unit & 0xFC00) == 0xDC00;
        if (isLow != (high != 0))
            ThrowBadByte(input.name, "UTF-16", high != 0 ? high : position);
        high = (unit & 0xFC00) == 0xD800 ? position : 0;
        units.push_back(unit);
    }
    if (high != 0 || position != length)
        ThrowBadByte(input.name, "UTF-16", high != 0 ? high : position);
    return VString(units.data(), units.size());
}

VString DecodeMarkedUtf32(const Input& input, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes.data());
    const std::size_t length = input.bytes.size();
    std::u16string units;
    units.reserve(length / 4);
    std::size_t position = 4;
    for (; length - position >= 4; position += 4) {
        const unsigned codePoint = ReadUnit(data + position, 4, bigEndian);
        if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            ThrowBadByte(input.name, "UTF-32", position);
        if (codePoint > 0xFFFF)
            units.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
        units.push_back(static_cast<char16_t>(codePoint > 0xFFFF ? 0xDC00 | (codePoint & 0x3FF) : codePoint));
    }
    if (position != length)
        ThrowBadByte(input.name, "UTF-32", position);
    return VString(units.data(), units.size());
}

constexpr std::size_t PieceBytes = 0x10000;

// Returns the byte offset of the first invalid character. This character ends in the piece that begins at the
// offset `piece`, and may begin in the piece before.
std::size_t FindBadByte(std::string_view bytes, const QTextCodec& codec, std::size_t piece)
{
    CodecReader reader(codec);
    const std::size_t start = piece == 0 ? 0 : piece - PieceBytes;
    for (std::size_t position = 0; position < start; position += PieceBytes)
        reader.Read(bytes.data() + position, PieceBytes);
    std::size_t character = start;  // start of the character that is being decoded
    for (std::size_t position = start; position < bytes.size(); ++position) {
        if (!reader.Read(bytes.data() + position, 1))
            break;
        if (!reader.Piece().isEmpty())
            character = position + 1;
    }
    return character;
}

// The bytes must not be empty.
VString DecodeWithCodec(const Input& input, const QTextCodec& codec)
{
    const std::string_view bytes = input.bytes;
    CodecReader reader(codec);
    VString text;
    for (std::size_t position = 0; position < bytes.size(); position += PieceBytes) {
        if (!reader.Read(bytes.data() + position, std::min(PieceBytes, bytes.size() - position)))
            ThrowBadByte(input.name, NameOf(codec), FindBadByte(bytes, codec, position));
        text.append(VString(reader.Piece()));
    }
    const std::size_t lastPiece = (bytes.size() - 1) / PieceBytes * PieceBytes;
    if (!reader.IsComplete())
        ThrowBadByte(input.name, NameOf(codec), FindBadByte(bytes, codec, lastPiece));
    return text;
}

VString DecodeUnits(const Input& input, const Detected& detected)
try {
    if (detected.codec != nullptr)
        return DecodeWithCodec(input, *detected.codec);
    if (detected.encoding.name.startsWith("UTF-16"))
        return DecodeMarkedUtf16(input, detected.encoding.name == "UTF-16BE");
    if (detected.encoding.name.startsWith("UTF-32"))
        return DecodeMarkedUtf32(input, detected.encoding.name == "UTF-32BE");
    return VString::fromUtf8(input.bytes.data() + detected.markLength, input.bytes.size() - detected.markLength);
} catch (const std::length_error&) {
    ThrowReadError(input.name, "the text is too long");
}

bool IsXmlBlank(char character) noexcept
{
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

// Skips the pseudo attribute `name` and the white space before it, and returns its value. If the position has something
// else, returns nothing and does not change `position`.
std::optional<std::string_view> SkipPseudoAttribute(std::string_view text, std::size_t& position, std::string_view name)
{
    std::size_t next = position;
    const auto skipBlanks = [&] {
        const std::size_t start = next;
        while (next < text.size() && IsXmlBlank(text[next]))
            ++next;
        return next != start;
    };
    if (!skipBlanks() || !text.substr(next).starts_with(name))
        return std::nullopt;
    next += name.size();
    skipBlanks();
    if (next == text.size() || text[next] != '=')
        return std::nullopt;
    ++next;
    skipBlanks();
    if (next == text.size() || (text[next] != '"' && text[next] != '\''))
        return std::nullopt;
    const std::size_t start = next + 1;
    const char ends[] = {text[next], '<'};  // no value contains "<", which bounds the search
    const std::size_t end = text.find_first_of(std::string_view(ends, 2), start);
    if (end == std::string_view::npos || text[end] == '<')
        return std::nullopt;
    position = end + 1;
    return text.substr(start, end - start);
}

bool IsEncodingName(std::string_view name) noexcept
{
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const auto isPart = [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    };
    return !name.empty() && isLetter(name.front()) && std::all_of(name.begin(), name.end(), isPart);
}

}  // namespace

bool IsUtf8(const FileEncoding& encoding) noexcept
{
    return encoding.name.View() == u"UTF-8";
}

DecodedText DecodeToUtf8(std::string&& bytes, const VString& name, bool useXmlDeclaration)
{
    Detected detected = Detect({bytes, name}, useXmlDeclaration);
    if (!IsUtf8(detected.encoding)) {
        const VString units = DecodeUnits({bytes, name}, detected);
        bytes = std::string();
        return {units.toStdString(), std::move(detected.encoding)};
    }
    if (useXmlDeclaration && !detected.encoding.hasMark) {
        const QTextCodec* declared = FindDeclaredCodec(bytes);
        if (declared != nullptr && TextEncoder({NameOf(*declared), false}).ReadsAsAscii(bytes))
            detected.encoding.name = NameOf(*declared);
    }
    bytes.erase(0, detected.markLength);
    return {std::move(bytes), std::move(detected.encoding)};
}

VString DecodeToUtf16(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration)
{
    const Input input{{bytes, length}, name};
    return DecodeUnits(input, Detect(input, useXmlDeclaration));
}

std::optional<std::string_view> FindDeclaredEncoding(std::string_view utf8) noexcept
{
    constexpr std::string_view opening = "<?xml";
    if (!utf8.starts_with(opening))
        return std::nullopt;
    std::size_t position = opening.size();
    SkipPseudoAttribute(utf8, position, "version");
    const std::optional<std::string_view> name = SkipPseudoAttribute(utf8, position, "encoding");
    return name && IsEncodingName(*name) ? name : std::nullopt;
}
