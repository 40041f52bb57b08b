// Reading files.
#pragma once

#include <QFile>

#include <cstddef>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VPath.h"
#include "vancoreplatform/VString.h"

// A file opened for reading. Owns the file handle and closes it on destruction; not copyable.
// Threads: one at a time. Errors: every failure throws VIO::Exception.
class VANCOREPLATFORM_API VFile {
public:
    // Does not open the file yet. The path is used unchanged and always names a file, never one of Qt's embedded
    // resources.
    explicit VFile(const VPath& path);
    ~VFile();
    VFile(const VFile&) = delete;
    VFile& operator=(const VFile&) = delete;

    // Throws if the file is missing, unreadable or a directory. The message ends with the system's reason.
    void OpenForReading();
    // Reads up to `count` bytes and returns the number read, which is smaller only at the end of the file.
    std::size_t Read(char* buffer, std::size_t count);
    // Moves to a byte offset from the start.
    void Seek(unsigned long long offset);
    // The size in bytes.
    unsigned long long Size() const;

    // Reads a whole file as text. The first of these rules that applies determines the encoding:
    //  1. A byte order mark (UTF-8, UTF-16 or UTF-32), which is not part of the result.
    //  2. Bytes that are valid UTF-8 are UTF-8.
    //  3. With `useXmlDeclaration`, an XML declaration at the start that names a known encoding.
    // Throws VIO::Exception if the bytes are invalid in that encoding or no rule applies; the message contains the
    // byte offset of the first bad byte. Bytes are never replaced. Throws VIO::Exception if the text is longer than
    // VString::MaxLength. A NUL is an ordinary character. Linear.
    static VString LoadTextFile(const VString& fileName, bool useXmlDeclaration);

    // Like LoadTextFile, but returns UTF-8. Valid UTF-8 without a byte order mark is not converted.
    static std::string LoadTextFileAsUtf8(const VString& fileName, bool useXmlDeclaration);

    // Decodes bytes in memory by the rules of LoadTextFile. Error messages show `name` as the file.
    static VString DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration);

private:
    VPath m_path;
    QFile m_file;
};

// Returns the size of the file in bytes. Throws VIO::Exception, with the system's reason, if the file does not
// exist or the system denies access to it.
VANCOREPLATFORM_API unsigned long long GetFileSize(const VPath& path);
