// The exceptions that end a command.
#pragma once

#include <stdexcept>

// The command failed. The tool prints the message (UTF-8) and ends with ExitStatus::Failed.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The command line is wrong. The tool also prints how to get help.
class UsageError : public ToolError {
public:
    using ToolError::ToolError;
};
