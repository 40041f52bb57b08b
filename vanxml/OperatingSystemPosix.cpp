#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vancoreplatform/FileReplacement.h"

namespace {

// Returns the signals that end a process by default, except SIGPIPE, which is ignored (see PrepareStreams), and
// SIGKILL, which nobody can handle.
std::vector<int> EndingSignals()
{
    std::vector<int> signals{SIGABRT,
        SIGALRM,
        SIGBUS,
        SIGFPE,
        SIGHUP,
        SIGILL,
        SIGINT,
        SIGPROF,
        SIGQUIT,
        SIGSEGV,
        SIGSYS,
        SIGTERM,
        SIGTRAP,
        SIGUSR1,
        SIGUSR2,
        SIGVTALRM,
        SIGXCPU,
        SIGXFSZ};
#if defined(__linux__)
    signals.insert(signals.end(), {SIGIO, SIGPWR, SIGSTKFLT});
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
        signals.push_back(signal);
#endif
    return signals;
}

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
    // A closed stream would get the number of the next file that is opened, and messages would be written into that
    // file. The access is the wrong one, so reading and writing the stream still fail.
    const auto reserve = [](int stream, int access) {
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", access);
    };
    // In this order, because a file gets the lowest free number.
    reserve(STDIN_FILENO, O_WRONLY);
    reserve(STDOUT_FILENO, O_RDONLY);
    reserve(STDERR_FILENO, O_RDONLY);
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
    sigfillset(&action.sa_mask);
    for (const int signal : EndingSignals()) {
        // The parent process may ignore a signal, and a sanitizer may handle it.
        struct sigaction old;
        const bool isDefault = sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_DFL;
        if (isDefault)
            sigaction(signal, &action, nullptr);
    }
}

}  // namespace OperatingSystem
