#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

#include "vancoreplatform/FileReplacement.h"

namespace {

// The signals that end a process and that users, shells and the system send. SIGPIPE is ignored (see PrepareStreams).
constexpr int EndingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ};

// Ends the process by the default action of the signal, so that the parent process sees which signal it was.
extern "C" void EndBySignal(int signal)
{
    FileReplacement::RemoveTemporaryFiles();
    std::signal(signal, SIG_DFL);
    // The handler blocks the signal, so it acts when the handler returns.
    raise(signal);
}

}  // namespace

namespace OperatingSystem {

void PrepareStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
}

std::vector<std::string> Arguments(int argc, char** argv)
{
    return std::vector<std::string>(argv + std::min(argc, 1), argv + argc);
}

bool IsStandardOutput(const std::filesystem::path& file) noexcept
{
    struct stat named;
    struct stat output;
    return stat(file.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &output) == 0 && named.st_dev == output.st_dev &&
        named.st_ino == output.st_ino;
}

void RemoveTemporaryFilesOnSignals()
{
    struct sigaction action {};
    action.sa_handler = EndBySignal;
    sigemptyset(&action.sa_mask);
    for (const int signal : EndingSignals)
        sigaddset(&action.sa_mask, signal);
    for (const int signal : EndingSignals) {
        struct sigaction old;
        const bool isIgnored = sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN;
        if (!isIgnored)
            sigaction(signal, &action, nullptr);
    }
}

}  // namespace OperatingSystem
