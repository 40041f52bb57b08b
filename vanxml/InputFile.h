// Reads files as bytes.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"

// Returns all bytes of the file `name`, or of standard input if `name` is "-". Throws VIO::Exception or ToolError, with
// the system's reason, if that fails.
std::string ReadInputFile(const VString& name);
