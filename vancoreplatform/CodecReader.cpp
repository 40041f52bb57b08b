#include "vancoreplatform/CodecReader.h"

#include <algorithm>
#include <string_view>

namespace {

bool IsNameOfAscii(const QByteArray& name)
{
    constexpr std::string_view names[] = {"us-ascii",
        "ascii",
        "us",
        "ansi_x3.4-1968",
        "ansi_x3.4-1986",
        "iso646-us",
        "iso_646.irv:1991",
        "iso-ir-6",
        "csascii",
        "ibm367",
        "cp367"};
    const QByteArray lower = name.toLower();
    return std::find(std::begin(names), std::end(names), lower.constData()) != std::end(names);
}

bool IsBetween(char byte, unsigned first, unsigned last) noexcept
{
    const unsigned value = static_cast<unsigned char>(byte);
    return value >= first && value <= last;
}

// Returns the number of bytes of the character that begins with these bytes of GB18030. Two bytes are needed to know
// it; for one byte it is a lower limit.
std::size_t Gb18030Length(std::string_view start) noexcept
{
    if (!IsBetween(start[0], 0x81, 0xFE))
        return 1;
    return start.size() > 1 && IsBetween(start[1], 0x30, 0x39) ? 4 : 2;
}

// Returns the character above U+FFFF; nothing if the four bytes are those of another one.
std::optional<char32_t> HighCharacterOf(std::string_view bytes) noexcept
{
    if (!IsBetween(bytes[0], 0x90, 0xE3) || !IsBetween(bytes[2], 0x81, 0xFE) || !IsBetween(bytes[3], 0x30, 0x39))
        return std::nullopt;
    const auto digit = [bytes](std::size_t i, unsigned first) {
        return static_cast<unsigned>(static_cast<unsigned char>(bytes[i])) - first;
    };
    const char32_t character =
        0x10000 + ((digit(0, 0x90) * 10 + digit(1, 0x30)) * 126 + digit(2, 0x81)) * 10 + digit(3, 0x30);
    return character <= 0x10FFFF ? std::optional(character) : std::nullopt;
}

}  // namespace

TextCodec::TextCodec(const QTextCodec& qt, bool isAscii)
    : m_qt(&qt),
      m_isAscii(isAscii),
      m_misreadsHighCharacters(qt.name() == "GB18030" && qt.toUnicode("\x94\x39\xFC\x36", 4).size() != 2)
{}

std::optional<TextCodec> TextCodec::Find(const QByteArray& name)
{
    if (const QTextCodec* qt = QTextCodec::codecForName(name))
        return TextCodec(*qt, false);
    if (IsNameOfAscii(name))
        return TextCodec(*QTextCodec::codecForName("ISO-8859-1"), true);
    return std::nullopt;
}

VString TextCodec::Name() const
{
    return m_isAscii ? VString("US-ASCII") : VString(QString::fromLatin1(m_qt->name()));
}

QString TextCodec::ToUnicode(const char* bytes, std::size_t length, QTextCodec::ConverterState& state) const
{
    QString text = m_qt->toUnicode(bytes, static_cast<int>(length), &state);
    if (m_isAscii) {
        for (QChar& unit : text) {
            if (unit.unicode() < 0x80)
                continue;
            unit = QChar(QChar::ReplacementCharacter);
            ++state.invalidChars;
        }
    }
    return text;
}

QByteArray TextCodec::FromUnicode(const QString& text) const
{
    QTextCodec::ConverterState state(QTextCodec::ConvertInvalidToNull | QTextCodec::IgnoreHeader);
    return m_qt->fromUnicode(text.constData(), text.size(), &state);
}

CodecReader::CodecReader(const TextCodec& codec)
    : m_codec(codec),
      m_state(QTextCodec::ConvertInvalidToNull | QTextCodec::IgnoreHeader)
{}

bool CodecReader::Read(const char* bytes, std::size_t length)
{
    if (m_codec.MisreadsHighCharacters())
        ReadGb18030(bytes, length);
    else
        m_piece = m_codec.ToUnicode(bytes, length, m_state);
    return m_state.invalidChars == 0 && !m_piece.contains(QChar(QChar::ReplacementCharacter));
}

// Decodes the characters above U+FFFF and leaves all others to the codec.
void CodecReader::ReadGb18030(const char* bytes, std::size_t length)
{
    m_piece.clear();
    std::string others;
    const auto readOthers = [&] {
        m_piece += m_codec.ToUnicode(others.data(), others.size(), m_state);
        others.clear();
    };
    for (const char byte : std::string_view(bytes, length)) {
        m_character += byte;
        if (m_character.size() < Gb18030Length(m_character))
            continue;
        const std::optional<char32_t> high =
            m_character.size() == 4 ? HighCharacterOf(m_character) : std::optional<char32_t>();
        if (high) {
            readOthers();
            m_piece += QChar(QChar::highSurrogate(*high));
            m_piece += QChar(QChar::lowSurrogate(*high));
        } else {
            others += m_character;
        }
        m_character.clear();
    }
    readOthers();
}

bool CodecReader::IsComplete()
{
    return Read("\n", 1) && m_piece == QLatin1String("\n");
}

std::optional<TextCodec> FindAsciiCodec(const QByteArray& name)
{
    constexpr std::string_view opening = "<?xml";
    const std::optional<TextCodec> codec = TextCodec::Find(name);
    if (!codec)
        return std::nullopt;
    CodecReader reader(*codec);
    const bool isAscii = reader.Read(opening.data(), opening.size()) && reader.Piece() == QLatin1String("<?xml");
    return isAscii ? codec : std::nullopt;
}
