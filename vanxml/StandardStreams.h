// Standard input, output and error, byte for byte.
#pragma once

#include <string>
#include <string_view>

// Used by one thread at a time, but WriteError by any number of threads: each call is one write.
namespace StandardStreams {

// Call first: bytes pass unchanged, a reader that went away is a write error instead of a
// signal, file names are UTF-8 whatever the locale is, and log messages go to standard error
// as lines of the tool.
void Prepare();

// All of standard input. Throws ToolError when it cannot be read.
std::string ReadInput();
// To standard output. Throws ToolError when it cannot be written, which may show only in
// FlushOutput.
void Write(std::string_view bytes);
void FlushOutput();
// To standard error. Ignores failures, because nowhere is left to report them.
void WriteError(std::string_view bytes) noexcept;

}  // namespace StandardStreams
