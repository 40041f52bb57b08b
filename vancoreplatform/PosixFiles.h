// Calls and handles of files on POSIX systems. Only the sources of the library for POSIX include this header.
#pragma once

#include <cerrno>
#include <system_error>
#include <utility>

#include <unistd.h>

// Throws std::system_error for a value of errno.
[[noreturn]] inline void ThrowSystemError(int error)
{
    throw std::system_error(error, std::generic_category());
}

// Throws the error in errno if `succeeded` is false.
inline void CheckCall(bool succeeded)
{
    if (!succeeded)
        ThrowSystemError(errno);
}

// Repeats a call while signals interrupt it. Calls to network file systems and to those of other processes can be
// interrupted.
template <typename Call>
auto RepeatIfInterrupted(const Call& call)
{
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

// Owns a file descriptor.
class FileHandle {
public:
    // Throws the error of the call that returned `handle` if that is negative.
    explicit FileHandle(int handle) : m_handle(handle) { CheckCall(handle >= 0); }
    ~FileHandle()
    {
        if (m_handle >= 0)
            close(m_handle);
    }
    FileHandle(FileHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}
    FileHandle& operator=(FileHandle&& other) = delete;

    int Get() const noexcept { return m_handle; }
    // Closes the handle, even if it throws. If a signal interrupts the call, the handle is closed too.
    void Close() { CheckCall(close(std::exchange(m_handle, -1)) == 0 || errno == EINTR); }

private:
    int m_handle;
};
