#include "vancoreplatform/VFile.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "vancoreplatform/Encoding.h"
#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

namespace {

constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";

[[noreturn]] void ThrowReadError(const VString& name, const VString& reason)
{
    throw VIO::Exception(VFormatString("Cannot read \"%1\": %2").arg(name).arg(reason));
}

[[noreturn]] void ThrowBadByte(const VString& name, const VString& encoding, std::size_t offset)
{
    const VString reason = VFormatString("not valid %1, the first bad byte is at offset %2")
                               .arg(encoding)
                               .arg(static_cast<std::uint64_t>(offset));
    ThrowReadError(name, reason);
}

// Qt would open a name that begins with a colon as an embedded resource.
QString NativeName(const VPath& path)
{
    const VString& text = path.String();
    return (text.startsWith(":") ? VString("./") + text : text).ToQString();
}

// Returns the reason why the path cannot be read as a file; nothing if it may be readable.
std::optional<VString> FindPathError(const VPath& path)
{
    if (path.IsEmpty())
        return VString("the file name is empty");
    if (path.String().contains(u'\0'))
        return VString("the file name contains a NUL");
    if (QFileInfo(NativeName(path)).isDir())
        return VString("it is a directory");
    return std::nullopt;
}

unsigned ReadUnit(const unsigned char* bytes, std::size_t size, bool bigEndian) noexcept
{
    unsigned value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[bigEndian ? i : size - 1 - i];
    return value;
}

struct Input {
    const char* bytes;
    std::size_t length;
    const VString& name;
};

VString DecodeUtf8(const Input& input, std::size_t start)
{
    const std::size_t invalid = FindInvalidUtf8(input.bytes + start, input.length - start);
    if (invalid != input.length - start)
        ThrowBadByte(input.name, "UTF-8", start + invalid);
    return VString::fromUtf8(input.bytes + start, input.length - start);
}

VString DecodeUtf16(const Input& input, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes);
    std::u16string units;
    units.reserve(input.length / 2);
    std::size_t high = 0;  // offset of a high surrogate that waits for its low surrogate; 0 for none
    std::size_t position = 2;
    for (; input.length - position >= 2; position += 2) {
        const char16_t unit = static_cast<char16_t>(ReadUnit(data + position, 2, bigEndian));
        const bool isLow = (unit & 0xFC00) == 0xDC00;
        if (isLow != (high != 0))
            ThrowBadByte(input.name, "UTF-16", high != 0 ? high : position);
        high = (unit & 0xFC00) == 0xD800 ? position : 0;
        units.push_back(unit);
    }
    if (high != 0 || position != input.length)
        ThrowBadByte(input.name, "UTF-16", high != 0 ? high : position);
    return VString(units.data(), units.size());
}

VString DecodeUtf32(const Input& input, bool bigEndian)
{
    const auto* data = reinterpret_cast<const unsigned char*>(input.bytes);
    std::u16string units;
    units.reserve(input.length / 4);
    std::size_t position = 4;
    for (; input.length - position >= 4; position += 4) {
        const unsigned codePoint = ReadUnit(data + position, 4, bigEndian);
        if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            ThrowBadByte(input.name, "UTF-32", position);
        if (codePoint > 0xFFFF)
            units.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
        units.push_back(static_cast<char16_t>(codePoint > 0xFFFF ? 0xDC00 | (codePoint & 0x3FF) : codePoint));
    }
    if (position != input.length)
        ThrowBadByte(input.name, "UTF-32", position);
    return VString(units.data(), units.size());
}

// Decodes the bytes if they begin with a byte order mark.
std::optional<VString> DecodeByMark(const Input& input)
{
    using namespace std::string_view_literals;
    const std::string_view text(input.bytes, input.length);
    if (text.starts_with(Utf8Mark))
        return DecodeUtf8(input, Utf8Mark.size());
    if (text.starts_with("\0\0\xFE\xFF"sv))
        return DecodeUtf32(input, true);
    if (text.starts_with("\xFF\xFE\0\0"sv))
        return DecodeUtf32(input, false);
    if (text.starts_with("\xFE\xFF"sv))
        return DecodeUtf16(input, true);
    if (text.starts_with("\xFF\xFE"sv))
        return DecodeUtf16(input, false);
    return std::nullopt;
}

// Returns the encoding that an XML declaration at the start names; empty if there is none.
QByteArray DeclaredEncoding(const Input& input)
{
    static const QRegularExpression declaration(
        QStringLiteral(R"re(^<\?xml(?:\s+version\s*=\s*(?:"[^"<]*"|'[^'<]*'))?)re"
                       R"re(\s+encoding\s*=\s*(?:"([A-Za-z][A-Za-z0-9._-]*)"|'([A-Za-z][A-Za-z0-9._-]*)'))re"));
    constexpr std::size_t longest = 1024;
    const QString start = QString::fromLatin1(input.bytes, static_cast<int>(std::min(input.length, longest)));
    const QRegularExpressionMatch match = declaration.match(start);
    return (match.captured(1) + match.captured(2)).toLatin1();
}

// Decodes bytes piece by piece and detects bytes that are invalid in the encoding.
class CodecReader {
public:
    explicit CodecReader(const QTextCodec& codec)
        : m_codec(codec),
          m_state(QTextCodec::ConvertInvalidToNull | QTextCodec::IgnoreHeader)
    {}

    // Returns false if the piece contains invalid bytes. Some codecs report them only by a replacement character.
    bool Read(const char* bytes, std::size_t length)
    {
        m_piece = m_codec.toUnicode(bytes, static_cast<int>(length), &m_state);
        return m_state.invalidChars == 0 && !m_piece.contains(QChar(QChar::ReplacementCharacter));
    }
    // Returns false if the bytes so far end inside a character. Reads a line feed as a probe: an incomplete
    // character swallows or garbles it.
    bool IsComplete() { return Read("\n", 1) && m_piece == QLatin1String("\n"); }
    const QString& Piece() const noexcept { return m_piece; }

private:
    const QTextCodec& m_codec;
    QTextCodec::ConverterState m_state;
    QString m_piece;
};

constexpr std::size_t PieceBytes = 0x10000;

// Returns the byte offset of the first invalid character. This character ends in the piece that begins at the
// offset `piece`, and may begin in the piece before.
std::size_t FindBadByte(const Input& input, const QTextCodec& codec, std::size_t piece)
{
    CodecReader reader(codec);
    const std::size_t start = piece == 0 ? 0 : piece - PieceBytes;
    for (std::size_t position = 0; position < start; position += PieceBytes)
        reader.Read(input.bytes + position, PieceBytes);
    std::size_t character = start;  // start of the character that is being decoded
    for (std::size_t position = start; position < input.length; ++position) {
        if (!reader.Read(input.bytes + position, 1))
            break;
        if (!reader.Piece().isEmpty())
            character = position + 1;
    }
    return character;
}

VString DecodeWithCodec(const Input& input, const QTextCodec& codec)
{
    const VString encoding(QString::fromLatin1(codec.name()));
    CodecReader reader(codec);
    VString text;
    for (std::size_t position = 0; position < input.length; position += PieceBytes) {
        if (!reader.Read(input.bytes + position, std::min(PieceBytes, input.length - position)))
            ThrowBadByte(input.name, encoding, FindBadByte(input, codec, position));
        text.append(VString(reader.Piece()));
    }
    const std::size_t lastPiece = (input.length - 1) / PieceBytes * PieceBytes;
    if (!reader.IsComplete())
        ThrowBadByte(input.name, encoding, FindBadByte(input, codec, lastPiece));
    return text;
}

VString DecodeUnmarked(const Input& input, bool useXmlDeclaration)
{
    const std::size_t invalid = FindInvalidUtf8(input.bytes, input.length);
    if (invalid == input.length)
        return VString::fromUtf8(input.bytes, input.length);
    const QByteArray declared = useXmlDeclaration ? DeclaredEncoding(input) : QByteArray();
    const QTextCodec* codec = declared.isEmpty() ? nullptr : QTextCodec::codecForName(declared);
    // The declaration was read as ASCII, so it is wrong if it names an encoding that writes "<?xml" in other
    // bytes, such as UTF-16.
    constexpr std::string_view opening = "<?xml";
    const bool fits = codec != nullptr && CodecReader(*codec).Read(opening.data(), opening.size()) &&
        codec->toUnicode(opening.data(), static_cast<int>(opening.size())) == QLatin1String("<?xml");
    if (!fits || codec->name() == "UTF-8")
        ThrowBadByte(input.name, "UTF-8", invalid);
    return DecodeWithCodec(input, *codec);
}

}  // namespace

VFile::VFile(const VPath& path) : m_path(path), m_file(NativeName(path)) {}

VFile::~VFile() = default;

void VFile::OpenForReading()
{
    m_file.close();
    if (const std::optional<VString> reason = FindPathError(m_path))
        ThrowReadError(m_path.String(), *reason);
    if (!m_file.open(QIODevice::ReadOnly))
        ThrowReadError(m_path.String(), m_file.errorString());
}

std::size_t VFile::Read(char* buffer, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const std::size_t most = std::min<std::size_t>(count - done, std::numeric_limits<int>::max());
        const qint64 read = m_file.read(buffer + done, static_cast<qint64>(most));
        if (read < 0)
            ThrowReadError(m_path.String(), m_file.errorString());
        if (read == 0)
            break;
        done += static_cast<std::size_t>(read);
    }
    return done;
}

void VFile::Seek(unsigned long long offset)
{
    const bool inRange = offset <= static_cast<unsigned long long>(std::numeric_limits<qint64>::max());
    if (!inRange || !m_file.seek(static_cast<qint64>(offset)))
        ThrowReadError(m_path.String(), "cannot move to the position");
}

unsigned long long VFile::Size() const
{
    return static_cast<unsigned long long>(m_file.size());
}

namespace {

std::string ReadAll(const VString& fileName)
{
    VFile file{VPath(fileName)};
    file.OpenForReading();
    // No encoding takes more than four bytes for a code unit.
    constexpr std::size_t mostBytes = std::size_t{4} * VString::MaxLength;
    std::string bytes;
    // The size is only a hint: it is 0 for pipes, and files grow. One spare byte lets the first read find the
    // end of the file without growing the buffer.
    bytes.reserve(static_cast<std::size_t>(std::min<unsigned long long>(file.Size() + 1, mostBytes)));
    for (std::size_t done = 0;;) {
        bytes.resize(std::max(bytes.capacity(), done + PieceBytes));
        const std::size_t wanted = bytes.size() - done;
        const std::size_t read = file.Read(bytes.data() + done, wanted);
        done += read;
        if (read < wanted) {
            bytes.resize(done);
            return bytes;
        }
        if (done > mostBytes)
            ThrowReadError(fileName, "the text is too long");
    }
}

}  // namespace

VString VFile::LoadTextFile(const VString& fileName, bool useXmlDeclaration)
{
    const std::string bytes = ReadAll(fileName);
    return DecodeText(bytes.data(), bytes.size(), fileName, useXmlDeclaration);
}

std::string VFile::LoadTextFileAsUtf8(const VString& fileName, bool useXmlDeclaration)
{
    std::string bytes = ReadAll(fileName);
    if (!bytes.starts_with(Utf8Mark) && FindInvalidUtf8(bytes.data(), bytes.size()) == bytes.size())
        return bytes;
    return DecodeText(bytes.data(), bytes.size(), fileName, useXmlDeclaration).toStdString();
}

VString VFile::DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration)
{
    const Input input{bytes, length, name};
    try {
        if (std::optional<VString> text = DecodeByMark(input))
            return *text;
        return DecodeUnmarked(input, useXmlDeclaration);
    } catch (const std::length_error&) {
        ThrowReadError(name, "the text is too long");
    }
}

unsigned long long GetFileSize(const VPath& path)
{
    if (const std::optional<VString> reason = FindPathError(path))
        ThrowReadError(path.String(), *reason);
    const QFileInfo info(NativeName(path));
    if (info.exists())
        return static_cast<unsigned long long>(info.size());
    // QFileInfo does not report why it cannot find a file. Opening the file throws an exception with the reason.
    VFile file(path);
    file.OpenForReading();
    return file.Size();
}
