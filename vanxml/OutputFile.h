// Writes files atomically.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "vancoreplatform/FileReplacement.h"
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

// Output that is written in pieces, to the same kinds of files as WriteOutputFile, or to standard output if the name is
// "-". A file is replaced by Finish. Without a call of Finish, it stays as it was.
//
// Cost: at most 64 KB of memory; for a device or a pipe, all bytes until Finish.
//
// Threads: one at a time.
class StreamedOutputFile {
public:
    // Throws VIO::Exception if the file cannot be written.
    explicit StreamedOutputFile(const VString& name);

    const VString& Name() const { return m_name; }
    // True if the bytes go to standard output.
    bool IsStandardOutput() const;
    // Appends bytes. Throws VIO::Exception or ToolError if that fails.
    void Write(std::string_view bytes);
    // Writes what waits and replaces the file. Returns the number of other hard links. Throws like Write. Call it once.
    std::size_t Finish();

private:
    const VString m_name;
    const bool m_isDevice;
    std::unique_ptr<FileReplacement> m_file;  // null for a stream, a device and a pipe
    std::string m_waiting;
};

// Returns the line for standard error that warns of `otherNames` hard links to the file that was replaced; empty for
// none.
std::string FormatOtherNamesWarning(const VString& name, std::size_t otherNames);
