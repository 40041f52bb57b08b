// The exception that ends a command.
#pragma once

#include <stdexcept>

// The command cannot be carried out; the message (UTF-8) is shown and the tool ends with
// ExitStatus::Failed.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
