// Runs the tool while system calls fail and signals arrive, with the preloaded library FailingCalls.cpp.
#pragma once

#include <string>
#include <vector>

#include "tests/tool/ToolRun.h"

struct Failure {
    const char* call;
    int error;
    const char* reason;
    bool isOnlyNamed = false;  // the file system has no files without a name
};

inline std::ostream& operator<<(std::ostream& out, const Failure& failure)
{
    return out << failure.call << " fails with " << failure.reason << (failure.isOnlyNamed ? ", only named files" : "");
}

// Returns the environment in which every call of the kind fails.
inline std::vector<std::string> FailingEnvironment(const Failure& failure)
{
    std::vector<std::string> environment{
        std::string("FAILING_CALL=") + failure.call, "FAILING_ERROR=" + std::to_string(failure.error)};
    if (failure.isOnlyNamed)
        environment.push_back("ONLY_NAMED=1");
    return environment;
}

// Returns the arguments of the program `env` that run the tool with the preloaded library.
inline std::vector<std::string> EnvArguments(
    std::vector<std::string> environment, const std::vector<std::string>& arguments)
{
    // AddressSanitizer must be the first library, unless this option allows another order. It handles the signals
    // of crashes unless the other options forbid it.
    environment.push_back(
        "ASAN_OPTIONS=verify_asan_link_order=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0");
    environment.insert(environment.end(), {"LD_PRELOAD=" FAILING_CALLS_PATH, VANXML_PATH});
    environment.insert(environment.end(), arguments.begin(), arguments.end());
    return environment;
}

inline ToolResult RunWithEnvironment(const std::vector<std::string>& environment,
    const std::vector<std::string>& arguments,
    const std::string& input = std::string())
{
    return RunProgram("env", EnvArguments(environment, arguments), input);
}

// Runs the shell commands `before`, then the tool. The output ends with the exit status as the shell shows it: 128
// and the number of the signal that ended the tool.
inline ToolResult RunInShell(
    const std::string& before, const std::vector<std::string>& environment, const std::vector<std::string>& arguments)
{
    const std::vector<std::string> all = EnvArguments(environment, arguments);
    std::vector<std::string> shell{"-c", before + "env \"$@\"; echo $?", "sh"};
    shell.insert(shell.end(), all.begin(), all.end());
    return RunProgram("sh", shell);
}
