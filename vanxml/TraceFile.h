// The option --trace.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "vancoreplatform/VString.h"
#include "vanxml/ExitStatus.h"

namespace CLI {
class App;
}

// Writes the activities and metrics scopes of the process as Chrome trace events while it lives: one JSON object with
// one complete event ("X") for each activity or scope. Times are in microseconds since the construction. Each thread
// has its own number, from 1.
//
// The events are written to a temporary file, in pieces of 64 KB, so the memory is constant. Finish replaces the target
// by it. So the file is always complete.
//
// Threads: one at a time. The activities and scopes may be those of any thread.
class TraceFile {
public:
    // Throws ToolError if the file exists and is neither empty nor a trace, because it is probably a document. Throws
    // VIO::Exception if the file cannot be written.
    explicit TraceFile(const VString& name);
    // Discards the trace unless Finish was called.
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    // Ends the trace and replaces the file. Throws VIO::Exception if this or an earlier write failed, and ToolError if
    // the file has become something else than a trace meanwhile. Call it once.
    void Finish();

private:
    class Sink;

    std::shared_ptr<Sink> m_sink;
};

// Adds the option --trace, which sets `file`, to each command of the application that has no commands itself.
void AddTraceOption(CLI::App& application, std::optional<std::string>& file);

// Calls `run` for the command called `command`, and writes a trace of it if there is a file. Writes the trace also if
// `run` throws. Throws UsageError if the name of the file is empty or "-", and like TraceFile.
ExitStatus RunTraced(
    const std::optional<std::string>& file, const std::string& command, const std::function<ExitStatus()>& run);
