// The calls of the tool to the operating system. Only FileReplacement calls the system to replace a file. To port the
// tool to another system, write a source like OperatingSystemPosix.cpp and OperatingSystemWindows.cpp for it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace OperatingSystem {

// Makes the standard streams pass bytes unchanged, and makes writing to a closed pipe an error instead
// of a signal. Ensures that a file which is opened later does not become a standard stream because the parent
// process closed that stream. Call it once, before anything is opened, read or written.
void PrepareStreams();

// Returns the arguments of the command line, without the name of the program. POSIX supplies bytes,
// which are not changed. Windows supplies UTF-16, which is converted to UTF-8; a lone surrogate becomes
// bytes that are not valid UTF-8, so the caller can refuse it.
std::vector<std::string> Arguments(int argc, char** argv);

// True if the path, for example /dev/stdout, is the file or device to which standard output writes.
// Always false on Windows, which has no such paths.
bool IsStandardOutput(const std::filesystem::path& file) noexcept;

// Makes signals and events that end the tool, such as Ctrl+C or a crash, remove its temporary files first. Signals
// that the parent process ignores stay ignored. Call it once.
void RemoveTemporaryFilesOnSignals();

}  // namespace OperatingSystem
