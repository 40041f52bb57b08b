// The calls to the operating system that read a file.
#pragma once

#include <cstddef>
#include <memory>
#include <system_error>

#include "vancoreplatform/VString.h"

// A file opened for reading. The operations throw std::system_error if they fail. VFile is the class for callers.
//
// Ownership: owns the handle of the file, and closes it on destruction. Other processes may rename, replace and remove
// the file meanwhile, also on Windows.
//
// Threads: one at a time for each object.
class FileReader {
public:
    // Throws std::errc::is_a_directory if the name is that of a folder.
    static std::unique_ptr<FileReader> Open(const VString& name);
    // Returns the size in bytes of a file that need not be readable. Throws std::errc::is_a_directory if the name is
    // that of a folder.
    static unsigned long long SizeOf(const VString& name);

    virtual ~FileReader() = default;
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    // Reads up to `count` bytes. Returns the number of bytes read, which is 0 at the end of the file.
    virtual std::size_t Read(char* buffer, std::size_t count) = 0;
    // Moves to a byte offset from the start.
    virtual void Seek(unsigned long long offset) = 0;
    // Returns the size in bytes, which is 0 for a pipe.
    virtual unsigned long long Size() const = 0;

protected:
    FileReader() = default;
};
