// Standard input, output and error as bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Threads: one at a time, except that any thread may call WriteError, which writes with a single call.
namespace StandardStreams {

// Call it before anything else. It prepares the streams (see OperatingSystem::PrepareStreams), sets the
// encoding of file names to UTF-8 in every locale, and writes log messages to standard error as lines of
// the tool.
void Prepare();

// Reads standard input to its end. Throws ToolError if that fails.
std::string ReadInput();
// Appends the next `count` bytes of standard input, or fewer at its end. Throws ToolError if that fails.
void ReadInput(std::string& bytes, std::size_t count);
// Writes to standard output. Throws ToolError if that fails; because of buffering, some failures are
// thrown only by FlushOutput. Text must not end inside a character (see OperatingSystem::Write).
void Write(std::string_view bytes);
void FlushOutput();
// Writes to standard error. Ignores failures, because they could not be reported anywhere.
void WriteError(std::string_view bytes) noexcept;

}  // namespace StandardStreams
