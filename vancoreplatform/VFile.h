// Reading files.
#pragma once

#include <QFile>

#include <cstddef>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VPath.h"
#include "vancoreplatform/VString.h"

// A file read byte for byte. Owns its handle and closes it when it dies; not
// copyable. Used by one thread at a time. Every failure throws VIO::Exception.
class VANCOREPLATFORM_API VFile {
public:
    // Opens nothing yet. The path is taken as it is given, and always for a file: never
    // for one of Qt's embedded resources.
    explicit VFile(const VPath& path);
    ~VFile();
    VFile(const VFile&) = delete;
    VFile& operator=(const VFile&) = delete;

    // Throws when the file is missing, unreadable or a directory; the message ends with the
    // system's reason.
    void OpenForReading();
    // Reads up to `count` bytes, fewer only at the end of the file; returns how many.
    std::size_t Read(char* buffer, std::size_t count);
    // To a byte offset from the start.
    void Seek(unsigned long long offset);
    // In bytes.
    unsigned long long Size() const;

    // The whole file as text. A byte order mark (UTF-8, UTF-16, UTF-32) decides and
    // is dropped; else the bytes are taken as UTF-8 when they are valid; else, with
    // `useXmlDeclaration`, the encoding that an XML declaration at the start names
    // decides, where it is known. Nothing is replaced: text that fits none of these
    // throws VIO::Exception, which names the offset of the first bad byte; so does text
    // that is longer than a string can be. A NUL is a character like any other.
    static VString LoadTextFile(const VString& fileName, bool useXmlDeclaration);

    // The same text in UTF-8, without a detour when it is UTF-8 already.
    static std::string LoadTextFileAsUtf8(const VString& fileName, bool useXmlDeclaration);

    // The same decision over bytes that are in memory already; `name` is for messages.
    static VString DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration);

private:
    VPath m_path;
    QFile m_file;
};

// In bytes. Throws VIO::Exception, with the system's reason, when the file does not exist or
// the system denies access to it.
VANCOREPLATFORM_API unsigned long long GetFileSize(const VPath& path);
