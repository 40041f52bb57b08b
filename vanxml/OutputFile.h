// Writing a file as a whole or not at all.
#pragma once

#include <string_view>

#include "vancoreplatform/VString.h"

// Puts `bytes` into the file: a temporary file beside it is written, flushed and renamed over
// it, so that a crash or a full disk leaves the old file as it was. Permissions are kept; a
// symbolic link stays, and what it leads to is replaced. Throws ToolError when it cannot be
// done: in a folder that cannot be written, or when there is a device or pipe of that name.
void ReplaceFile(const VString& name, std::string_view bytes);

// As ReplaceFile, but writes to a device or pipe directly.
void WriteOutputFile(const VString& name, std::string_view bytes);
