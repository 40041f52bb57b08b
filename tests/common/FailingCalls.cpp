// Replaces the system calls that read and write files. Preload it into a program as a library, or compile it into a
// test. These environment variables control it:
//   FAILING_CALL   the call that fails: open, read, input, create, write, chown, chmod, attribute, flush, link, close,
//                  or rename
//   FAILING_ERROR  the error number of the failure
//   FAILING_AFTER  the number of calls that succeed before the first failure; 0 if it is not set
//   FAILING_TIMES  the number of calls that fail; if it is not set, every call fails
//   RAISED_SIGNAL  if it is set, the process gets this signal before the call, and the call does not fail
//   OVERFLOW       if it is set, the process exhausts its stack before the call
//   CHANGED_FILE   if it is set, the file with this name gets the size CHANGED_SIZE before the call, or is removed if
//                  the size is negative, and the call does not fail
//   MOST_BYTES     the largest number of bytes that a read returns; no limit if it is not set
//   ONLY_NAMED     if it is set, the file system has no files without a name
//   CALLS_FILE     a file to which the name of each call is appended, one on each line
// A call while FAILING_CALL is not set begins a new count.
//
// The calls open and read concern regular files that are opened for reading only. The call input reads standard input
// through the streams of C; a program must not read it before this library is loaded. The calls write, flush and close
// are recorded and fail only for regular files that are open for writing. The flush of a folder is recorded as "flush
// folder" and never fails. The call attribute sets an extended attribute, and the call link gives a name to a file. A
// created file that becomes standard input, output or error is recorded as "create a standard stream".
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

void Record(const char* call)
{
    const char* name = std::getenv("CALLS_FILE");
    if (name == nullptr)
        return;
    const long file = syscall(SYS_openat, AT_FDCWD, name, O_WRONLY | O_APPEND | O_CREAT, 0600);
    syscall(SYS_write, file, call, std::strlen(call));
    syscall(SYS_write, file, "\n", 1);
    syscall(SYS_close, file);
}

// Fills the stack until the system ends the process.
int ExhaustStack(int depth)
{
    volatile char page[4096];
    page[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : ExhaustStack(depth + 1) + page[0];
}

// Records the call. Returns true, with errno set, if the call must fail.
bool Fails(const char* call)
{
    Record(call);
    static int count = 0;
    const char* failing = std::getenv("FAILING_CALL");
    if (failing == nullptr)
        count = 0;
    if (failing == nullptr || std::strcmp(failing, call) != 0)
        return false;
    const char* after = std::getenv("FAILING_AFTER");
    const char* times = std::getenv("FAILING_TIMES");
    const int first = after != nullptr ? std::atoi(after) : 0;
    const int number = count++;
    if (number < first || (times != nullptr && number >= first + std::atoi(times)))
        return false;
    if (const char* signal = std::getenv("RAISED_SIGNAL")) {
        kill(getpid(), std::atoi(signal));
        return false;
    }
    if (std::getenv("OVERFLOW") != nullptr)
        ExhaustStack(0);
    if (const char* changed = std::getenv("CHANGED_FILE")) {
        const long size = std::atol(std::getenv("CHANGED_SIZE"));
        if (size < 0)
            syscall(SYS_unlink, changed);
        else
            syscall(SYS_truncate, changed, size);
        return false;
    }
    errno = std::atoi(std::getenv("FAILING_ERROR"));
    return true;
}

bool IsOutputFile(int file)
{
    struct stat status;
    const long flags = syscall(SYS_fcntl, file, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

bool IsInputFile(int file)
{
    struct stat status;
    const long flags = syscall(SYS_fcntl, file, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) == O_RDONLY && fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

size_t LimitRead(size_t count)
{
    const char* most = std::getenv("MOST_BYTES");
    return most != nullptr ? std::min<size_t>(count, static_cast<size_t>(std::atol(most))) : count;
}

ssize_t ReadInput(void*, char* bytes, size_t count)
{
    if (Fails("input"))
        return -1;
    return syscall(SYS_read, STDIN_FILENO, bytes, LimitRead(count));
}

// The streams of C call the kernel in a way that no library can replace. So standard input becomes a stream that calls
// ReadInput. Other programs keep their stream, because this one has no descriptor.
struct InputReplacement {
    InputReplacement()
    {
        const char* failing = std::getenv("FAILING_CALL");
        if (failing != nullptr && std::strcmp(failing, "input") == 0)
            stdin = fopencookie(nullptr, "r", {ReadInput, nullptr, nullptr, nullptr});
    }
};

const InputReplacement inputReplacement;

bool IsFolder(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
}

int Flush(int file)
{
    if (IsFolder(file))
        Record("flush folder");
    else if (Fails("flush"))
        return -1;
    return static_cast<int>(syscall(SYS_fsync, file));
}

}  // namespace

// Tests are compiled with hidden symbols, which would not replace those of the system.
#pragma GCC visibility push(default)
extern "C" {

int open(const char* name, int flags, ...)
{
    std::va_list rest;
    va_start(rest, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(rest, int) : 0;
    va_end(rest);
    struct stat status;
    const bool isInput = flags == (O_RDONLY | O_CLOEXEC) && stat(name, &status) == 0 && S_ISREG(status.st_mode);
    if (isInput && Fails("open"))
        return -1;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, name, flags, mode));
}

ssize_t read(int file, void* bytes, size_t count)
{
    if (!IsInputFile(file))
        return syscall(SYS_read, file, bytes, count);
    return Fails("read") ? -1 : syscall(SYS_read, file, bytes, LimitRead(count));
}

int openat(int folder, const char* name, int flags, ...)
{
    std::va_list rest;
    va_start(rest, flags);
    const bool isUnnamed = (flags & O_TMPFILE) == O_TMPFILE;
    const int mode = (flags & O_CREAT) != 0 || isUnnamed ? va_arg(rest, int) : 0;
    va_end(rest);
    if (isUnnamed && std::getenv("ONLY_NAMED") != nullptr) {
        errno = EOPNOTSUPP;
        return -1;
    }
    const bool isCreated = isUnnamed || (flags & O_EXCL) != 0;
    if (isCreated && Fails("create"))
        return -1;
    const int file = static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
    if (isCreated && file >= 0 && file <= STDERR_FILENO)
        Record("create a standard stream");
    return file;
}

ssize_t write(int file, const void* bytes, size_t count)
{
    if (IsOutputFile(file) && Fails("write"))
        return -1;
    return syscall(SYS_write, file, bytes, count);
}

int fsync(int file)
{
    return Flush(file);
}

int fdatasync(int file)
{
    return Flush(file);
}

// Closes the file even when it reports a failure, as Linux does.
int close(int file)
{
    const bool fails = IsOutputFile(file) && Fails("close");
    const int error = errno;
    const long result = syscall(SYS_close, file);
    if (!fails)
        return static_cast<int>(result);
    errno = error;
    return -1;
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return Fails("link") ? -1 : static_cast<int>(syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    if (Fails("rename"))
        return -1;
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

int fchown(int file, uid_t owner, gid_t group) noexcept
{
    return Fails("chown") ? -1 : static_cast<int>(syscall(SYS_fchown, file, owner, group));
}

int fchmod(int file, mode_t mode) noexcept
{
    return Fails("chmod") ? -1 : static_cast<int>(syscall(SYS_fchmod, file, mode));
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept
{
    return Fails("attribute") ? -1 : static_cast<int>(syscall(SYS_fsetxattr, file, name, value, size, flags));
}

}  // extern "C"
#pragma GCC visibility pop
