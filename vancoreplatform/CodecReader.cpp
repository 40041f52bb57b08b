#include "vancoreplatform/CodecReader.h"

#include <string_view>

CodecReader::CodecReader(const QTextCodec& codec)
    : m_codec(codec),
      m_state(QTextCodec::ConvertInvalidToNull | QTextCodec::IgnoreHeader)
{}

bool CodecReader::Read(const char* bytes, std::size_t length)
{
    m_piece = m_codec.toUnicode(bytes, static_cast<int>(length), &m_state);
    return m_state.invalidChars == 0 && !m_piece.contains(QChar(QChar::ReplacementCharacter));
}

bool CodecReader::IsComplete()
{
    return Read("\n", 1) && m_piece == QLatin1String("\n");
}

const QTextCodec* FindAsciiCodec(const QByteArray& name)
{
    constexpr std::string_view opening = "<?xml";
    const QTextCodec* codec = QTextCodec::codecForName(name);
    if (codec == nullptr || !CodecReader(*codec).Read(opening.data(), opening.size()))
        return nullptr;
    const QString read = codec->toUnicode(opening.data(), static_cast<int>(opening.size()));
    return read == QLatin1String("<?xml") ? codec : nullptr;
}
