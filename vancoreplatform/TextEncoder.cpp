#include "vancoreplatform/TextEncoder.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "vancoreplatform/CodecReader.h"
#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

namespace {

constexpr char32_t ByteOrderMark = 0xFEFF;

[[noreturn]] void ThrowEncodingError(const FileEncoding& encoding, const VString& reason)
{
    throw VIO::Exception(VFormatString("Cannot encode text in %1: %2").arg(encoding.name).arg(reason));
}

VString CodePointName(char32_t character)
{
    return VString(QStringLiteral("U+%1").arg(static_cast<uint>(character), 4, 16, QLatin1Char('0')).toUpper());
}

// Reads the character at `position` and moves `position` behind it. The text must be valid UTF-8.
char32_t NextCharacter(std::string_view utf8, std::size_t& position) noexcept
{
    const auto lead = static_cast<unsigned char>(utf8[position++]);
    if (lead < 0x80)
        return lead;
    const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t character = lead & (0x3F >> more);
    for (int i = 0; i < more; ++i)
        character = character << 6 | (static_cast<unsigned char>(utf8[position++]) & 0x3F);
    return character;
}

bool IsValidUtf8(std::string_view text) noexcept
{
    return FindInvalidUtf8(text.data(), text.size()) == text.size();
}

void AppendUtf16(std::u16string& text, char32_t character)
{
    if (character > 0xFFFF)
        text += static_cast<char16_t>(0xD7C0 + (character >> 10));
    text += static_cast<char16_t>(character > 0xFFFF ? 0xDC00 | (character & 0x3FF) : character);
}

// True if the bytes of one character may switch the meaning of the bytes behind them. Multi-byte encodings without
// shift states begin a character with a byte above 0x7F.
bool MayShift(std::string_view bytes) noexcept
{
    constexpr std::string_view shifts = "\x0E\x0F\x1B";
    return bytes.size() > 1 &&
        (static_cast<unsigned char>(bytes.front()) < 0x80 || bytes.find_first_of(shifts) != std::string_view::npos);
}

}  // namespace

// The bytes of one character.
struct TextEncoder::Bytes {
    static constexpr std::uint8_t Unknown = 0xFF;  // not encoded yet

    std::uint8_t length = Unknown;  // 0 if the encoding cannot represent the character
    std::array<char, 7> data;

    std::string_view View() const noexcept { return {data.data(), length}; }
};

struct TextEncoder::Page {
    std::array<Bytes, 0x100> characters;
};

TextEncoder::TextEncoder(const FileEncoding& encoding) : m_encoding(encoding)
{
    const VString& name = encoding.name;
    m_bigEndian = name.endsWith("BE");
    if (name == "UTF-8") {
        m_form = Form::Utf8;
    } else if (name == "UTF-16LE" || name == "UTF-16BE") {
        m_form = Form::Utf16;
    } else if (name == "UTF-32LE" || name == "UTF-32BE") {
        m_form = Form::Utf32;
    } else {
        const std::optional<TextCodec> codec = FindAsciiCodec(name.ToQString().toLatin1());
        if (!codec)
            ThrowEncodingError(encoding, "the encoding is unknown");
        m_codec = std::make_unique<const TextCodec>(*codec);
        m_pages.resize(0x1100);
    }
    if (encoding.hasMark && m_form != Form::Codec)
        m_mark = EncodeCharacter(ByteOrderMark);
}

TextEncoder::~TextEncoder() = default;

void TextEncoder::WriteUnit(char32_t unit, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        m_buffer[m_used + (m_bigEndian ? size - 1 - i : i)] = static_cast<char>(unit >> 8 * i);
    m_used += size;
}

TextEncoder::Bytes TextEncoder::EncodeWithCodec(char32_t character) const
{
    Bytes result;
    result.length = 0;
    std::u16string units;
    AppendUtf16(units, character);
    const QString text = VString(units.data(), units.size()).ToQString();
    const QByteArray bytes = m_codec->FromUnicode(text);
    const std::string_view view(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (view.size() > result.data.size() || MayShift(view))
        return result;
    // Codecs do not report all characters that they cannot represent. Decoding the bytes again finds these characters,
    // and also characters whose bytes have another meaning at another place.
    const QByteArray sample = "a" + bytes + bytes + "a";
    CodecReader reader(*m_codec);
    const bool isSame = reader.Read(sample.constData(), static_cast<std::size_t>(sample.size())) &&
        reader.Piece() == QLatin1Char('a') + text + text + QLatin1Char('a');
    if (!isSame)
        return result;
    result.length = static_cast<std::uint8_t>(view.size());
    std::copy(view.begin(), view.end(), result.data.begin());
    return result;
}

std::string_view TextEncoder::EncodeCharacter(char32_t character)
{
    if (m_form == Form::Codec) {
        std::unique_ptr<Page>& page = m_pages[character >> 8];
        if (page == nullptr)
            page = std::make_unique<Page>();
        Bytes& bytes = page->characters[character & 0xFF];
        if (bytes.length == Bytes::Unknown)
            bytes = EncodeWithCodec(character);
        return bytes.View();
    }
    m_used = 0;
    if (m_form == Form::Utf32) {
        WriteUnit(character, 4);
    } else if (m_form == Form::Utf16) {
        if (character > 0xFFFF)
            WriteUnit(0xD7C0 + (character >> 10), 2);
        WriteUnit(character > 0xFFFF ? 0xDC00 | (character & 0x3FF) : character, 2);
    } else if (character < 0x80) {
        m_buffer[m_used++] = static_cast<char>(character);
    } else {
        const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        constexpr std::array<unsigned, 4> leads{0, 0xC0, 0xE0, 0xF0};
        m_buffer[m_used++] = static_cast<char>(leads[static_cast<std::size_t>(more)] | character >> 6 * more);
        for (int i = more - 1; i >= 0; --i)
            m_buffer[m_used++] = static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
    }
    return {m_buffer.data(), m_used};
}

bool TextEncoder::ReadsAsAscii(std::string_view bytes)
{
    std::array<bool, 0x80> used{};
    for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) >= used.size())
            return false;
        used[static_cast<unsigned char>(byte)] = true;
    }
    for (std::size_t i = 0; i < used.size(); ++i) {
        const char character = static_cast<char>(i);
        if (used[i] && EncodeCharacter(static_cast<char32_t>(i)) != std::string_view(&character, 1))
            return false;
    }
    return true;
}

// Throws unless the codec reads the bytes as the text.
void TextEncoder::Verify(std::u16string_view text, std::string_view bytes) const
{
    constexpr std::size_t pieceBytes = 0x10000;
    CodecReader reader(*m_codec);
    bool isSame = true;
    for (std::size_t position = 0; isSame && position < bytes.size(); position += pieceBytes) {
        isSame = reader.Read(bytes.data() + position, std::min(pieceBytes, bytes.size() - position));
        const VString piece(reader.Piece());
        isSame = isSame && text.starts_with(piece.View());
        if (isSame)
            text.remove_prefix(piece.View().size());
    }
    if (!isSame || !text.empty() || !reader.IsComplete())
        ThrowEncodingError(m_encoding, "the characters have another meaning when they follow one another");
}

std::string TextEncoder::Encode(std::string_view utf8, const CharacterReplacement& replace)
{
    if (!IsValidUtf8(utf8))
        ThrowEncodingError(m_encoding, "the text is not valid UTF-8");
    if (m_form == Form::Utf8)
        return std::string(utf8);
    std::string result;
    result.reserve(m_form == Form::Codec ? utf8.size() : utf8.size() * (m_form == Form::Utf32 ? 4 : 2));
    std::u16string written;  // the text in the result, for Verify
    bool isPlain = true;     // all bytes are ASCII for their own characters, so Verify is not needed
    const auto append = [&](char32_t character) {
        const std::string_view bytes = EncodeCharacter(character);
        if (bytes.empty())
            return false;
        result += bytes;
        if (m_form == Form::Codec) {
            AppendUtf16(written, character);
            isPlain = isPlain && character < 0x80 && bytes.size() == 1 && static_cast<char32_t>(bytes[0]) == character;
        }
        return true;
    };
    for (std::size_t position = 0; position < utf8.size();) {
        const char32_t character = NextCharacter(utf8, position);
        if (append(character))
            continue;
        const std::string replacement = replace(character);
        for (const char part : replacement) {
            const auto byte = static_cast<unsigned char>(part);
            if (byte >= 0x80 || !append(byte))
                ThrowEncodingError(m_encoding, "the replacement of " + CodePointName(character) + " has no bytes");
        }
    }
    if (m_form == Form::Codec && !isPlain)
        Verify(written, result);
    return result;
}

namespace {

// True if the reader takes the bytes for UTF-16 without a mark.
bool IsEvidentUtf16(std::string_view bytes, const FileEncoding& encoding)
{
    const char* found = FindUnmarkedUtf16(bytes);
    return found != nullptr && encoding.name == found;
}

}  // namespace

std::string EncodeFromUtf8(std::string_view utf8, const FileEncoding& encoding, const CharacterReplacement& replace)
{
    TextEncoder encoder(encoding);
    const std::string_view mark = encoder.Mark();
    std::string result = encoder.Encode(utf8, replace);
    if (!mark.empty())
        result.insert(0, mark);
    else if (!IsUtf8(encoding) && !IsEvidentUtf16(result, encoding) && IsValidUtf8(result) &&
        !encoder.ReadsAsAscii(result))
        ThrowEncodingError(encoding, "the result would be read as UTF-8");
    return result;
}

std::vector<std::size_t> FindEncodedOffsets(const std::vector<std::size_t>& offsets,
    std::string_view utf8,
    std::string_view bytes,
    const FileEncoding& encoding,
    const VString& name)
{
    std::vector<std::size_t> result;
    result.reserve(offsets.size());
    TextEncoder encoder(encoding);
    if (IsUtf8(encoding)) {
        for (const std::size_t offset : offsets)
            result.push_back(offset + encoder.Mark().size());
        return result;
    }
    if (!IsValidUtf8(utf8))
        throw std::invalid_argument("FindEncodedOffsets: the text is not valid UTF-8");
    const auto fail = [&](std::size_t offset) {
        throw VIO::Exception(
            VFormatString("Cannot edit \"%1\": the bytes at offset %2 are not the usual ones of a character in %3; "
                          "convert the file to UTF-8 first")
                .arg(name)
                .arg(static_cast<std::uint64_t>(offset))
                .arg(encoding.name));
    };
    if (!bytes.starts_with(encoder.Mark()))
        fail(0);
    std::size_t encoded = encoder.Mark().size();
    auto next = offsets.begin();
    for (std::size_t position = 0;;) {
        for (; next != offsets.end() && *next == position; ++next)
            result.push_back(encoded);
        if (position == utf8.size())
            break;
        const std::string_view character = encoder.EncodeCharacter(NextCharacter(utf8, position));
        if (character.empty() || bytes.substr(encoded, character.size()) != character)
            fail(encoded);
        encoded += character.size();
    }
    if (encoded != bytes.size())
        fail(encoded);
    if (next != offsets.end())
        throw std::invalid_argument("FindEncodedOffsets: an offset is not at a character, or behind a larger one");
    return result;
}
