// The calls to the operating system. Everything else in the tool is portable: a new system
// needs one more source beside OperatingSystemPosix.cpp and OperatingSystemWindows.cpp.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace OperatingSystem {

// Call first, once: bytes pass the standard streams unchanged, and writing to a reader that
// went away is an error instead of a signal.
void PrepareStreams();

// The arguments of the command line, without the program's name. POSIX gives bytes, which stay
// as they are. Windows gives UTF-16, which becomes UTF-8; half a surrogate pair becomes bytes
// that are not valid UTF-8, so that the caller can refuse it.
std::vector<std::string> Arguments(int argc, char** argv);

// Throws std::system_error when this process may not write to the existing file.
void RequireWritable(const std::filesystem::path& file);

// Whether the name, such as /dev/stdout, leads to what the standard output writes to. False on
// Windows, which has no such names for a file.
bool IsStandardOutput(const std::filesystem::path& file) noexcept;

// Makes the renames in the folder survive a crash of the machine, on systems that can.
void FlushFolder(const std::filesystem::path& folder) noexcept;

// A file that is open for writing. There is no buffer between Write and the system. Every
// operation throws std::system_error when it fails.
//
// Ownership: owns the system's handle.
//
// Threads: one at a time.
class OutputHandle {
public:
    enum class Access { Owner, Everybody };  // Everybody: as far as the user's settings allow

    // Makes a new file; fails with std::errc::file_exists when there is anything of that name.
    static OutputHandle Create(const std::filesystem::path& file, Access access);
    // Opens something that exists, such as a device or a pipe, and does not truncate it.
    static OutputHandle Open(const std::filesystem::path& file);

    // Closes without a check; call Close where a failure matters.
    ~OutputHandle();
    OutputHandle(OutputHandle&& other) noexcept;
    OutputHandle& operator=(OutputHandle&& other) = delete;

    // All of the bytes.
    void Write(std::string_view bytes);
    // Returns when the bytes are on the disk.
    void Flush();
    // The handle is closed also when this throws.
    void Close();

private:
    explicit OutputHandle(std::intptr_t handle) noexcept : m_handle(handle) {}

    std::intptr_t m_handle;  // the system's; -1 when closed
};

}  // namespace OperatingSystem
