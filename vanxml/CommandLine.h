// The command line of the tool.
#pragma once

#include <string>
#include <vector>

#include "vanxml/ExitStatus.h"

// Parses the arguments (UTF-8, without the name of the program) and runs the command that they name. Prints help and
// reports mistakes in the arguments. Throws ToolError, or an exception of the library, if the command fails.
ExitStatus RunCommandLine(const std::vector<std::string>& arguments);
