// Writes files atomically.
#pragma once

#include <string_view>

#include "vancoreplatform/VString.h"

// Replaces the content of the file by `bytes`, or creates the file. Writes a temporary file in the same
// folder, flushes it to the disk and renames it, so a failure leaves the old file unchanged. If the tool
// is killed, only the temporary file can be left behind. Keeps the permissions of the old file and adds
// write permission for its owner. Follows symbolic links and replaces their target. Throws ToolError,
// with the reason of the system, if a step fails or if the name is a device or a pipe.
void ReplaceFile(const VString& name, std::string_view bytes);

// Like ReplaceFile, but writes to devices and pipes directly. If the name is another name of standard output,
// such as `/dev/stdout`, writes to standard output: a replacement would discard earlier output.
void WriteOutputFile(const VString& name, std::string_view bytes);
