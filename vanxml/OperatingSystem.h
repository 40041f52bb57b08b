// All calls of the tool to the operating system. To port the tool to another system, write a source
// like OperatingSystemPosix.cpp and OperatingSystemWindows.cpp for it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace OperatingSystem {

// Makes the standard streams pass bytes unchanged, and makes writing to a closed pipe an error instead
// of a signal. Call it once, before anything is read or written.
void PrepareStreams();

// Returns the arguments of the command line, without the name of the program. POSIX supplies bytes,
// which are not changed. Windows supplies UTF-16, which is converted to UTF-8; a lone surrogate becomes
// bytes that are not valid UTF-8, so the caller can refuse it.
std::vector<std::string> Arguments(int argc, char** argv);

// Throws std::system_error if this process may not write to the existing file.
void RequireWritable(const std::filesystem::path& file);

// True if the path, for example /dev/stdout, is the file or device to which standard output writes.
// Always false on Windows, which has no such paths.
bool IsStandardOutput(const std::filesystem::path& file) noexcept;

// Flushes the entries of the folder to the disk, so that renames survive a crash of the machine. Does
// nothing on systems without such a call.
void FlushFolder(const std::filesystem::path& folder) noexcept;

// An unbuffered file that is open for writing. Every operation throws std::system_error if it fails.
//
// Ownership: owns the system's handle.
//
// Threads: one at a time.
class OutputHandle {
public:
    // Who may read and write a new file: only its owner, or everybody whom the umask of the user does not exclude.
    // Windows ignores it.
    enum class Access { Owner, Everybody };

    // Creates a new file. Fails with std::errc::file_exists if the name exists.
    static OutputHandle Create(const std::filesystem::path& file, Access access);
    // Opens an existing file, device or pipe without truncating it.
    static OutputHandle Open(const std::filesystem::path& file);

    // Ignores a failure to close. Call Close if it matters.
    ~OutputHandle();
    OutputHandle(OutputHandle&& other) noexcept;
    OutputHandle& operator=(OutputHandle&& other) = delete;

    // Writes all bytes.
    void Write(std::string_view bytes);
    // Returns after the bytes are on the disk.
    void Flush();
    // Closes the handle, even if it throws.
    void Close();

private:
    explicit OutputHandle(std::intptr_t handle) noexcept : m_handle(handle) {}

    std::intptr_t m_handle;  // the handle of the system; -1 if closed
};

}  // namespace OperatingSystem
