#include "vanxml/OperatingSystem.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

[[noreturn]] void ThrowLastError(const char* call)
{
    throw std::system_error(errno, std::generic_category(), call);
}

int OpenFile(const std::filesystem::path& file, int flags, mode_t mode = 0)
{
    const int handle = open(file.c_str(), O_WRONLY | O_CLOEXEC | flags, mode);
    if (handle < 0)
        ThrowLastError("open");
    return handle;
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

void RequireWritable(const std::filesystem::path& file)
{
    if (access(file.c_str(), W_OK) != 0)
        ThrowLastError("access");
}

bool IsStandardOutput(const std::filesystem::path& file) noexcept
{
    struct stat named;
    struct stat output;
    return stat(file.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &output) == 0 && named.st_dev == output.st_dev &&
        named.st_ino == output.st_ino;
}

void FlushFolder(const std::filesystem::path& folder) noexcept
{
    // Failures are ignored: some file systems cannot flush folders, and some folders may not be read.
    // Without the flush, a crash of the machine can restore the old file, but never a partial one.
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    fsync(handle);
    close(handle);
}

OutputHandle OutputHandle::Create(const std::filesystem::path& file, Access access)
{
    return OutputHandle(OpenFile(file, O_CREAT | O_EXCL, access == Access::Owner ? 0600 : 0666));
}

OutputHandle OutputHandle::Open(const std::filesystem::path& file)
{
    return OutputHandle(OpenFile(file, 0));
}

OutputHandle::~OutputHandle()
{
    if (m_handle >= 0)
        close(static_cast<int>(m_handle));
}

OutputHandle::OutputHandle(OutputHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}

void OutputHandle::Write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(static_cast<int>(m_handle), bytes.data(), bytes.size());
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            ThrowLastError("write");
    }
}

void OutputHandle::Flush()
{
    if (fsync(static_cast<int>(m_handle)) != 0)
        ThrowLastError("fsync");
}

void OutputHandle::Close()
{
    if (close(static_cast<int>(std::exchange(m_handle, -1))) != 0)
        ThrowLastError("close");
}

}  // namespace OperatingSystem
