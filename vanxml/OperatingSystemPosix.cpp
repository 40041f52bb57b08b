#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "vancoreplatform/FileReplacement.h"

namespace fs = std::filesystem;

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

// Returns the error in errno if `succeeded` is false.
std::error_code ErrorUnless(bool succeeded) noexcept
{
    return succeeded ? std::error_code() : std::error_code(errno != 0 ? errno : EIO, std::generic_category());
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

std::error_code Write(Stream stream, std::string_view bytes) noexcept
{
    errno = 0;
    std::FILE* const file = stream == Stream::Output ? stdout : stderr;
    return ErrorUnless(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
}

std::error_code FlushOutput() noexcept
{
    errno = 0;
    return ErrorUnless(std::fflush(stdout) == 0 && !std::ferror(stdout));
}

bool IsTerminal(Stream stream) noexcept
{
    const char* const type = std::getenv("TERM");
    const bool hasSequences = type && *type != '\0' && std::string_view(type) != "dumb";
    return hasSequences && isatty(stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO) == 1;
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

fs::file_type TypeOf(const fs::path& path, Links links) noexcept
{
    std::error_code ignored;
    return (links == Links::Follow ? fs::status(path, ignored) : fs::symlink_status(path, ignored)).type();
}

std::string ToUtf8(const fs::path& path)
{
    return path.native();
}

fs::path WithoutLinks(const fs::path& path)
{
    std::error_code error;
    const fs::path found = fs::canonical(path, error);
    return error ? path : found;
}

std::error_code VisitFolder(const fs::path& folder, const std::function<void(const FolderEntry& entry)>& visit)
{
    std::error_code error;
    fs::directory_iterator entries(folder.empty() ? fs::path(".") : folder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        std::error_code ignored;
        const fs::path name = entries->path().filename();
        visit({name, entries->status(ignored).type(), entries->is_symlink(ignored), name.native().starts_with('.')});
    }
    return error;
}

std::optional<Stream> FindStream(const fs::path& file) noexcept
{
    struct stat named;
    if (stat(file.c_str(), &named) != 0)
        return std::nullopt;
    const auto writesToFile = [&](int stream) {
        struct stat status;
        // PrepareStreams reserves the number of a closed stream with a device that cannot be written.
        return fstat(stream, &status) == 0 && status.st_dev == named.st_dev && status.st_ino == named.st_ino &&
            (fcntl(stream, F_GETFL) & O_ACCMODE) != O_RDONLY;
    };
    if (writesToFile(STDOUT_FILENO))
        return Stream::Output;
    return writesToFile(STDERR_FILENO) ? std::optional(Stream::Error) : std::nullopt;
}

void WriteDevice(const fs::path& device, std::string_view bytes)
{
    errno = 0;
    std::ofstream stream(device, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category());
}

}  // namespace OperatingSystem
