// A command of the tool.
#pragma once

#include "vanxml/ExitStatus.h"

namespace CLI {
class App;
}

// A command adds its options to the CLI11 application, which fills in the values, and then runs. It
// must outlive the application. Used by one thread.
class Command {
public:
    virtual ~Command() = default;

    virtual void AddTo(CLI::App& application) = 0;
    // True if the command line names this command.
    virtual bool IsChosen() const = 0;
    // Throws ToolError, or an exception of the library, if the command fails.
    virtual ExitStatus Run() = 0;
};
