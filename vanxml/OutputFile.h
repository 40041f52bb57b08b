// Writes files atomically.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"

// Replaces the content of the file, `before`, by `after`, as FileReplacement does. Returns the number of other hard
// links to the old file, which keep the old content. Throws VIO::Exception, with the reason of the system, if a step
// fails or if the name is a device or a pipe. Throws ToolError if the file has other content than `before`: another
// program has changed it, and a replacement would discard that.
std::size_t ReplaceFile(const VString& name, std::string_view before, std::string_view after);

// Replaces the content of the file by `bytes`, or creates the file, as FileReplacement does. Returns the number of
// other hard links, and throws VIO::Exception, like ReplaceFile. But writes to devices and pipes directly. If the name
// is another name of standard output or of standard error, such as `/dev/stdout`, writes to that stream: a replacement
// would discard earlier output.
std::size_t WriteOutputFile(const VString& name, std::string_view bytes);

// Returns the line for standard error that warns of `otherNames` hard links to the file that was replaced; empty for
// none.
std::string FormatOtherNamesWarning(const VString& name, std::size_t otherNames);
