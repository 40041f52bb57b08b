// The calls of the tool to the operating system. Only FileReplacement and VFile also call the system, to replace and
// to read a file. To port the tool to another system, write a source like OperatingSystemPosix.cpp and
// OperatingSystemWindows.cpp for it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace OperatingSystem {

// True if the backslash separates folders, and the case of letters in names has no meaning.
inline constexpr bool IsWindows = std::filesystem::path::preferred_separator == '\\';

enum class Stream { Output, Error };

// Makes the standard streams pass bytes unchanged, and makes writing to a closed pipe an error instead
// of a signal. Ensures that a file which is opened later does not become a standard stream because the parent
// process closed that stream. Call it once, before anything is opened, read or written.
void PrepareStreams();

// Returns the arguments of the command line, without the name of the program. POSIX supplies bytes,
// which are not changed. Windows supplies UTF-16, which is converted to UTF-8; a lone surrogate becomes
// bytes that are not valid UTF-8, so the caller can refuse it.
std::vector<std::string> Arguments(int argc, char** argv);

// Writes bytes to a standard stream. Returns the error if that fails; because of buffering, some failures are found
// only by FlushOutput.
//
// A console of Windows shows the bytes as UTF-8 text, whatever its code page. So a call must not end inside a
// character. Bytes that are not UTF-8 are shown as U+FFFD.
//
// Thread-safe.
std::error_code Write(Stream stream, std::string_view bytes) noexcept;

// Writes the buffered bytes of standard output. Returns the error if this or an earlier write failed.
std::error_code FlushOutput() noexcept;

// True if the stream is a terminal that understands the escape sequences for colours and for deleting a line. On
// Windows, the first call makes the console understand them until the process ends, also by Ctrl+C.
bool IsTerminal(Stream stream) noexcept;

// Makes signals and events that end the tool, such as Ctrl+C or a crash, remove its temporary files first. Signals
// that the parent process ignores stay ignored. Call it once.
void RemoveTemporaryFilesOnSignals();

enum class Links { Follow, Keep };

// Returns what the path names. It is `not_found` for a name that the system does not allow, and `none` if the system
// refuses an answer. A name that Windows takes for a device or a pipe, such as NUL or CON, is a `character` device.
std::filesystem::file_type TypeOf(const std::filesystem::path& path, Links links = Links::Follow) noexcept;

// Returns the path as UTF-8. The result is not valid UTF-8 if the path is not: POSIX allows any bytes in a name, and
// Windows allows lone surrogates, which are converted as in Arguments.
std::string ToUtf8(const std::filesystem::path& path);

// Returns the absolute path without symbolic links, so two paths of one file have the same result. Returns the path
// itself if that fails.
std::filesystem::path WithoutLinks(const std::filesystem::path& path);

struct FolderEntry {
    std::filesystem::path name;
    std::filesystem::file_type type = std::filesystem::file_type::none;  // follows links
    bool isLink = false;                                                 // a symbolic link, or a junction of Windows
    bool isHidden = false;  // the name begins with a dot, or the entry has the attribute "hidden" of Windows
};

// Calls `visit` for each entry of the folder, in any order, without "." and "..". An empty path is the current folder.
// Returns the error that ended this, if there was one.
std::error_code VisitFolder(
    const std::filesystem::path& folder, const std::function<void(const FolderEntry& entry)>& visit);

// Returns the standard stream that writes to the file or device with this path, such as /dev/stdout. Returns nothing if
// there is none, and always on Windows, which has no such paths.
std::optional<Stream> FindStream(const std::filesystem::path& file) noexcept;

// Writes bytes to a device or a pipe. Throws std::system_error if that fails.
void WriteDevice(const std::filesystem::path& device, std::string_view bytes);

}  // namespace OperatingSystem
