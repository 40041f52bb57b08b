#include "vancoreplatform/FileEncoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "vancoreplatform/CodecReader.h"
#include "vancoreplatform/DecodingException.h"
#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/ReadError.h"
#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VFormatString.h"

namespace {

struct Input {
    std::string_view bytes;
    const VString& name;
};

// A part of the bytes.
struct ByteRange {
    std::size_t start;
    std::size_t length;
};

// Returns the bytes up to the end of the line, as UTF-8 if there is a codec. Limits the length, because only an
// excerpt of the line is shown.
std::string DecodeRestOfLine(std::string_view bytes, const std::optional<TextCodec>& codec)
{
    constexpr std::size_t mostBytes = 400;
    std::string rest(bytes.substr(0, mostBytes));
    if (codec) {
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        rest = VString(codec->ToUnicode(rest.data(), rest.size(), state)).toStdString();
    }
    return rest.substr(0, rest.find_first_of("\r\n"));
}

// Returns the place behind a UTF-8 text, such as "line 4, column 15". Columns count UTF-16 code units.
VString DescribeEnd(std::string_view text)
{
    std::uint64_t line = 1;
    std::uint64_t column = 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isFirstOfTwo = byte == '\r' && text.substr(i + 1, 1) == "\n";
        if ((byte == '\n' || byte == '\r') && !isFirstOfTwo) {
            ++line;
            column = 1;
        } else if ((byte & 0xC0U) != 0x80) {
            column += byte >= 0xF0 ? 2 : 1;  // a character beyond the basic plane has four bytes and two code units
        }
    }
    return VFormatString("line %1, column %2").arg(line).arg(column);
}

// Throws for the bad bytes. `text` is the decoded text before them. `codec` decodes the bytes behind them; there is
// none for UTF-8.
[[noreturn]] void ThrowBadBytes(
    const Input& input, const VString& encoding, ByteRange bad, std::string text, const std::optional<TextCodec>& codec)
{
    VIO::BadBytes result;
    result.fileName = input.name;
    result.encoding = encoding;
    result.offset = bad.start;
    result.bytes = input.bytes.substr(bad.start, bad.length);
    const std::string_view behind = input.bytes.substr(bad.start + result.bytes.size());
    const VString place = DescribeEnd(text);
    result.text = std::move(text);
    result.textOffset = result.text.size();
    const bool hasLargeUnits = encoding.startsWith("UTF-16") || encoding.startsWith("UTF-32");
    const std::string shown = hasLargeUnits ? "\uFFFD" : result.bytes;
    result.shownLength = shown.size();
    result.text += shown + DecodeRestOfLine(behind, codec);
    // The start of a character counts as valid at the end of a text.
    const bool isStart = codec || DetectEncoding(result.bytes.data(), result.bytes.size()) == Encoding::Utf8;
    result.isAtEnd = behind.empty() && isStart;
    const VString reason = VFormatString("not valid %1, the first bad byte is at %2 (offset %3)")
                               .arg(encoding)
                               .arg(place)
                               .arg(static_cast<std::uint64_t>(bad.start));
    throw VIO::DecodingException(FormatReadError(input.name, reason), std::move(result));
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

// Returns the codec that the XML declaration names, unless that is UTF-8; nothing if there is none. The declaration was
// read as ASCII, so it is wrong if it names an encoding that writes "<?xml" in other bytes, such as UTF-16.
std::optional<TextCodec> FindDeclaredCodec(std::string_view bytes)
{
    const std::optional<std::string_view> declared = FindDeclaredEncoding(bytes);
    if (!declared)
        return std::nullopt;
    const std::optional<TextCodec> codec =
        FindAsciiCodec(QByteArray(declared->data(), static_cast<int>(declared->size())));
    return codec && codec->Name() != "UTF-8" ? codec : std::nullopt;
}

// Throws for the first invalid UTF-8 at `offset`. The text begins at `start`, behind the mark.
[[noreturn]] void ThrowInvalidUtf8(const Input& input, std::size_t start, std::size_t offset)
{
    const std::string_view rest = input.bytes.substr(offset);
    const ByteRange bad{offset, CountInvalidUtf8(rest.data(), rest.size())};
    ThrowBadBytes(input, "UTF-8", bad, std::string(input.bytes.substr(start, offset - start)), std::nullopt);
}

// Throws if the bytes from `start` on are not valid UTF-8.
void CheckUtf8(const Input& input, std::size_t start)
{
    const std::size_t invalid = FindInvalidUtf8(input.bytes.data() + start, input.bytes.size() - start);
    if (invalid != input.bytes.size() - start)
        ThrowInvalidUtf8(input, start, start + invalid);
}

struct Detected {
    FileEncoding encoding;
    std::size_t markLength = 0;
    std::optional<TextCodec> codec = std::nullopt;  // nothing for Unicode encodings
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
    if (const char* unmarked = useXmlDeclaration ? FindUnmarkedUtf16(input.bytes) : nullptr)
        return {{unmarked, false}};
    const std::size_t invalid = FindInvalidUtf8(input.bytes.data(), input.bytes.size());
    if (invalid == input.bytes.size())
        return {};
    const std::optional<TextCodec> codec = useXmlDeclaration ? FindDeclaredCodec(input.bytes) : std::nullopt;
    if (!codec)
        ThrowInvalidUtf8(input, 0, invalid);
    return {{codec->Name(), false}, 0, codec};
}

unsigned ReadUnit(const unsigned char* bytes, std::size_t size, bool bigEndian) noexcept
{
    unsigned value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[bigEndian ? i : size - 1 - i];
    return value;
}

// Throws for bad bytes in UTF-16 or UTF-32. `units` is the text before them.
[[noreturn]] void ThrowBadUnits(
    const Input& input, const char* family, bool bigEndian, ByteRange bad, std::u16string_view units)
{
    const VString encoding(family);
    const QByteArray codecName = QByteArray(family) + (bigEndian ? "BE" : "LE");
    const VString text(units.data(), units.size());
    ThrowBadBytes(input, encoding, bad, text.toStdString(), TextCodec::Find(codecName));
}

VString DecodeUtf16(const Input& input, std::size_t start, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes.data());
    const std::size_t length = input.bytes.size();
    std::u16string units;
    units.reserve(length / 2);
    bool isBehindHigh = false;  // the last unit is a high surrogate that waits for its low surrogate
    const auto fail = [&](std::size_t position) {
        if (isBehindHigh)
            units.pop_back();
        ThrowBadUnits(input, "UTF-16", bigEndian, {isBehindHigh ? position - 2 : position, 2}, units);
    };
    std::size_t position = start;
    for (; length - position >= 2; position += 2) {
        const char16_t unit = static_cast<char16_t>(ReadUnit(data + position, 2, bigEndian));
        const bool isLow = (unit & 0xFC00) == 0xDC00;
        if (isLow != isBehindHigh)
            fail(position);
        isBehindHigh = (unit & 0xFC00) == 0xD800;
        units.push_back(unit);
    }
    if (isBehindHigh || position != length)
        fail(position);
    return VString(units.data(), units.size());
}

VString DecodeUtf32(const Input& input, std::size_t start, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes.data());
    const std::size_t length = input.bytes.size();
    std::u16string units;
    units.reserve(length / 4);
    std::size_t position = start;
    for (; length - position >= 4; position += 4) {
        const unsigned codePoint = ReadUnit(data + position, 4, bigEndian);
        if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            ThrowBadUnits(input, "UTF-32", bigEndian, {position, 4}, units);
        if (codePoint > 0xFFFF)
            units.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
        units.push_back(static_cast<char16_t>(codePoint > 0xFFFF ? 0xDC00 | (codePoint & 0x3FF) : codePoint));
    }
    if (position != length)
        ThrowBadUnits(input, "UTF-32", bigEndian, {position, 4}, units);
    return VString(units.data(), units.size());
}

constexpr std::size_t PieceBytes = 0x10000;

// Finds the first invalid character. It ends in the piece that begins at the offset `piece`, and may begin in the piece
// before.
ByteRange FindBadBytes(std::string_view bytes, const TextCodec& codec, std::size_t piece)
{
    CodecReader reader(codec);
    const std::size_t start = piece == 0 ? 0 : piece - PieceBytes;
    for (std::size_t position = 0; position < start; position += PieceBytes)
        reader.Read(bytes.data() + position, PieceBytes);
    std::size_t character = start;  // start of the character that is being decoded
    for (std::size_t position = start; position < bytes.size(); ++position) {
        if (!reader.Read(bytes.data() + position, 1))
            return {character, position + 1 - character};
        if (!reader.Piece().isEmpty())
            character = position + 1;
    }
    return {character, bytes.size() - character};
}

// Throws for the first invalid character. `piece` is that of FindBadBytes.
[[noreturn]] void ThrowUndecodable(const Input& input, const TextCodec& codec, std::size_t piece)
{
    const ByteRange bad = FindBadBytes(input.bytes, codec, piece);
    CodecReader reader(codec);
    std::string text;
    for (std::size_t position = 0; position < bad.start; position += PieceBytes) {
        reader.Read(input.bytes.data() + position, std::min(PieceBytes, bad.start - position));
        text += VString(reader.Piece()).toStdString();
    }
    ThrowBadBytes(input, codec.Name(), bad, std::move(text), codec);
}

// The bytes must not be empty.
VString DecodeWithCodec(const Input& input, const TextCodec& codec)
{
    const std::string_view bytes = input.bytes;
    CodecReader reader(codec);
    VString text;
    for (std::size_t position = 0; position < bytes.size(); position += PieceBytes) {
        if (!reader.Read(bytes.data() + position, std::min(PieceBytes, bytes.size() - position)))
            ThrowUndecodable(input, codec, position);
        text.append(VString(reader.Piece()));
    }
    if (!reader.IsComplete())
        ThrowUndecodable(input, codec, (bytes.size() - 1) / PieceBytes * PieceBytes);
    return text;
}

VString DecodeUnits(const Input& input, const Detected& detected)
try {
    if (detected.codec)
        return DecodeWithCodec(input, *detected.codec);
    if (detected.encoding.name.startsWith("UTF-16"))
        return DecodeUtf16(input, detected.markLength, detected.encoding.name == "UTF-16BE");
    if (detected.encoding.name.startsWith("UTF-32"))
        return DecodeUtf32(input, detected.markLength, detected.encoding.name == "UTF-32BE");
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

// A family of Unicode encodings with large code units, and its byte order, as a name declares it.
struct UnicodeName {
    VString family;        // "UTF-16" or "UTF-32"; empty for all other encodings
    bool isBig = true;     // the name allows big-endian bytes
    bool isLittle = true;  // the name allows little-endian bytes
};

UnicodeName ReadUnicodeName(std::string_view name)
{
    std::string letters;
    for (const char c : name) {
        if (c != '-' && c != '_')
            letters += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    for (const auto& [start, family] : {std::pair("UTF16", "UTF-16"),
             std::pair("UCS2", "UTF-16"),
             std::pair("ISO10646UCS2", "UTF-16"),
             std::pair("UTF32", "UTF-32"),
             std::pair("UCS4", "UTF-32"),
             std::pair("ISO10646UCS4", "UTF-32")}) {
        if (letters.starts_with(start))
            return {family, !letters.ends_with("LE"), !letters.ends_with("BE")};
    }
    return {};
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
        const std::optional<TextCodec> declared = FindDeclaredCodec(bytes);
        if (declared && TextEncoder({declared->Name(), false}).ReadsAsAscii(bytes))
            detected.encoding.name = declared->Name();
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

const char* FindUnmarkedUtf16(std::string_view bytes) noexcept
{
    if (bytes.size() < 4)
        return nullptr;
    const bool isBig = bytes[0] == 0;
    const char first = bytes[isBig ? 1 : 0];
    const char second = bytes[isBig ? 3 : 2];
    if (bytes[isBig ? 0 : 1] != 0 || bytes[isBig ? 2 : 3] != 0)
        return nullptr;
    const bool isTag = first == '<' && second > 0;
    const bool isBlank = IsXmlBlank(first) && (IsXmlBlank(second) || second == '<');
    return !isTag && !isBlank ? nullptr : isBig ? "UTF-16BE" : "UTF-16LE";
}

EncodingDeclaration CheckEncodingDeclaration(std::string_view utf8, const FileEncoding& encoding)
{
    const std::optional<std::string_view> declared = FindDeclaredEncoding(utf8);
    if (!declared)
        return EncodingDeclaration::Right;
    const UnicodeName unicode = ReadUnicodeName(*declared);
    if (!unicode.family.IsEmpty()) {
        const bool fits = encoding.name.startsWith(unicode.family) &&
            (encoding.name.endsWith("BE") ? unicode.isBig : unicode.isLittle);
        return fits ? EncodingDeclaration::Right : EncodingDeclaration::Wrong;
    }
    const std::optional<TextCodec> codec =
        TextCodec::Find(QByteArray(declared->data(), static_cast<int>(declared->size())));
    if (!codec)
        return EncodingDeclaration::Unknown;
    return encoding.name == codec->Name() ? EncodingDeclaration::Right : EncodingDeclaration::Wrong;
}
