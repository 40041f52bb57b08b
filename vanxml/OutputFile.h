// Writing a file as a whole or not at all.
#pragma once

#include <string_view>

#include "vancoreplatform/VString.h"

// Replaces the file by `bytes`, or makes it. A temporary file beside it is written, flushed to
// the disk and renamed over it, so the old file stays whole when anything fails, and only a
// temporary file can be left when the tool is killed. Keeps the permissions, but lets the owner
// write. A symbolic link stays, and the file that it leads to is replaced.
// Throws ToolError, with the system's reason, when any step fails, and when the name is that
// of a device or pipe.
void ReplaceFile(const VString& name, std::string_view bytes);

// As ReplaceFile, but writes to a device or pipe directly, and to the standard output when the name is
// another one of it: replacing `/dev/stdout` would drop what stands before in the file behind it.
void WriteOutputFile(const VString& name, std::string_view bytes);
