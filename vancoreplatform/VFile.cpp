#include "vancoreplatform/VFile.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>

#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/ReadError.h"

namespace {

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
    constexpr std::size_t leastRead = 0x10000;
    std::string bytes;
    // The size is only a hint: it is 0 for pipes, and files grow. One spare byte lets the first read find the
    // end of the file without growing the buffer.
    bytes.reserve(static_cast<std::size_t>(std::min<unsigned long long>(file.Size() + 1, mostBytes)));
    for (std::size_t done = 0;;) {
        bytes.resize(std::max(bytes.capacity(), done + leastRead));
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
    return DecodeToUtf8(ReadAll(fileName), fileName, useXmlDeclaration).text;
}

VString VFile::DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration)
{
    return DecodeToUtf16(bytes, length, name, useXmlDeclaration);
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
