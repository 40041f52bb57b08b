// A command of the tool.
#pragma once

#include "vanxml/ExitStatus.h"

namespace CLI {
class App;
}

// AddTo adds the options of the command to the CLI11 application. The application writes the values of the
// options into the command, which must outlive it. Run then uses these values.
//
// Threads: one at a time.
class Command {
public:
    virtual ~Command() = default;

    virtual void AddTo(CLI::App& application) = 0;
    // True if the command line names this command.
    virtual bool IsChosen() const = 0;
    // Throws ToolError, or an exception of the library, if the command fails.
    virtual ExitStatus Run() = 0;
};
