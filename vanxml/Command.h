// A command of the tool.
#pragma once

#include "vanxml/ExitStatus.h"

namespace CLI {
class App;
}

// Describes its arguments to the command line, which fills them in, and then runs. The
// command must outlive the application that it was added to. Used by one thread.
class Command {
public:
    virtual ~Command() = default;

    virtual void AddTo(CLI::App& application) = 0;
    // Whether the command line asked for this command.
    virtual bool IsChosen() const = 0;
    // Throws ToolError, or what the library throws, when it cannot go on.
    virtual ExitStatus Run() = 0;
};
