// Reading files.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/VPath.h"
#include "vancoreplatform/VString.h"

class FileReader;

// A file opened for reading. Owns the file handle and closes it on destruction; not copyable. Other programs may
// rename, replace and remove the file meanwhile, also on Windows.
//
// Names: a path may be of any length that the file system allows, also on Windows. The file is opened by its UTF-16
// name there, and by its UTF-8 name on POSIX systems.
//
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
    // Reads up to `count` bytes and returns the number read, which is smaller only at the end of the file. Read,
    // Seek and Size need an open file.
    std::size_t Read(char* buffer, std::size_t count);
    // Moves to a byte offset from the start.
    void Seek(unsigned long long offset);
    // The size in bytes.
    unsigned long long Size() const;

    // Reads a whole file as text. The first of these rules that applies determines the encoding:
    //  1. A byte order mark (UTF-8, UTF-16 or UTF-32), which is not part of the result.
    //  2. With `useXmlDeclaration`, bytes that begin like a document in UTF-16 (see FindUnmarkedUtf16).
    //  3. Bytes that are valid UTF-8 are UTF-8.
    //  4. With `useXmlDeclaration`, an XML declaration at the start that names a known encoding.
    // Throws VIO::DecodingException if the bytes are invalid in that encoding or no rule applies; the message contains
    // the line, the column (in UTF-16 code units) and the byte offset of the first bad byte. Bytes are never replaced.
    // Throws VIO::Exception if the text is longer than VString::MaxLength. A NUL is an ordinary character. Linear.
    static VString LoadTextFile(const VString& fileName, bool useXmlDeclaration);

    // Like LoadTextFile, but returns UTF-8. Valid UTF-8 without a byte order mark is not converted, and may be longer.
    static std::string LoadTextFileAsUtf8(const VString& fileName, bool useXmlDeclaration);
    // Like LoadTextFileAsUtf8 with the XML declaration, and also returns the encoding of the file.
    static DecodedText LoadXmlFile(const VString& fileName);

    // Decodes bytes in memory by the rules of LoadTextFile. Error messages show `name` as the file.
    static VString DecodeText(const char* bytes, std::size_t length, const VString& name, bool useXmlDeclaration);

private:
    // Throws if the file is not open.
    FileReader& Reader() const;

    VPath m_path;
    std::unique_ptr<FileReader> m_file;  // null while the file is not open
};

// Returns the size of the file in bytes. Throws VIO::Exception, with the system's reason, if the file does not
// exist or the system denies access to it.
VANCOREPLATFORM_API unsigned long long GetFileSize(const VPath& path);
