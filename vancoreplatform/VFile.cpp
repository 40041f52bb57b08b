#include "vancoreplatform/VFile.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "vancoreplatform/FileReader.h"
#include "vancoreplatform/ReadError.h"
#include "vancoreplatform/SystemError.h"

namespace {

// Returns the result of `step`. Converts std::system_error to VIO::Exception.
template <typename Step>
auto Run(const VPath& path, const Step& step)
{
    const VString& name = path.String();
    if (name.IsEmpty())
        ThrowReadError(name, "the file name is empty");
    if (name.contains(u'\0'))
        ThrowReadError(name, "the file name contains a NUL");
    try {
        return step();
    } catch (const std::system_error& error) {
        const bool isFolder = error.code() == std::errc::is_a_directory;
        ThrowReadError(name, isFolder ? VString("it is a directory") : GetSystemReason(error.code()));
    }
}

}  // namespace

VFile::VFile(const VPath& path) : m_path(path) {}

VFile::~VFile() = default;

void VFile::OpenForReading()
{
    m_file.reset();
    m_file = Run(m_path, [this] { return FileReader::Open(m_path.String()); });
}

std::size_t VFile::Read(char* buffer, std::size_t count)
{
    return Run(m_path, [&] {
        std::size_t done = 0;
        while (done < count) {
            const std::size_t read = Reader().Read(buffer + done, count - done);
            if (read == 0)
                break;
            done += read;
        }
        return done;
    });
}

void VFile::Seek(unsigned long long offset)
{
    Run(m_path, [&] { Reader().Seek(offset); });
}

unsigned long long VFile::Size() const
{
    return Run(m_path, [this] { return Reader().Size(); });
}

FileReader& VFile::Reader() const
{
    if (!m_file)
        ThrowReadError(m_path.String(), "it is not open");
    return *m_file;
}

namespace {

// No encoding takes more than four bytes for a code unit of a string.
constexpr unsigned long long MostBytesOfString = 4ull * VString::MaxLength;

// Throws if the file has more bytes than a string can have, unless `mayBeLonger`. A file without a size may not be
// longer in any case, because a device can be endless.
std::string ReadAll(const VString& fileName, bool mayBeLonger)
{
    VFile file{VPath(fileName)};
    file.OpenForReading();
    const unsigned long long size = file.Size();
    const unsigned long long mostBytes = mayBeLonger ? std::max(MostBytesOfString, size) : MostBytesOfString;
    if (size > mostBytes)
        ThrowReadError(fileName, "the text is too long");
    std::string bytes;
    // The size is only a hint: it is 0 for pipes, and files grow. One spare byte lets the first read find the
    // end of the file without growing the buffer. A larger buffer costs more for a small file than its read, because
    // the string fills it with zeros.
    std::size_t leastRead = size > 0 ? static_cast<std::size_t>(size + 1) : 0x10000;
    for (std::size_t done = 0;; leastRead = 0x10000) {
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
    const std::string bytes = ReadAll(fileName, false);
    return DecodeText(bytes.data(), bytes.size(), fileName, useXmlDeclaration);
}

std::string VFile::LoadTextFileAsUtf8(const VString& fileName, bool useXmlDeclaration)
{
    return DecodeToUtf8(ReadAll(fileName, true), fileName, useXmlDeclaration).text;
}

DecodedText VFile::LoadXmlFile(const VString& fileName)
{
    return DecodeToUtf8(ReadAll(fileName, true), fileName, true);
}

VString VFile::DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration)
{
    return DecodeToUtf16(bytes, length, name, useXmlDeclaration);
}

unsigned long long GetFileSize(const VPath& path)
{
    return Run(path, [&path] { return FileReader::SizeOf(path.String()); });
}
