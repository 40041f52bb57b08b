// Reads files as bytes.
#pragma once

#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"

// Returns all bytes of the file `name`, or of standard input if `name` is "-". Throws VIO::Exception or ToolError, with
// the system's reason, if that fails.
std::string ReadInputFile(const VString& name);

// True if the file has exactly these bytes. Throws VIO::Exception if it cannot be read. Reads it in pieces.
bool HasBytes(const VString& name, std::string_view bytes);
