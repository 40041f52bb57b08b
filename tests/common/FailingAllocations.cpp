// Makes allocations of a program fail. Preload it as a library. These environment variables control it:
//   FAILING_ALLOCATION  the number of the allocation that fails: the first one after the start of main is 0
//   FAILING_FOREVER     if it is set, all further allocations fail too
// Each thread counts its own allocations. If an allocation has failed, the file FAILED_FILE is created.
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

// The names under which glibc exports its own functions.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

bool isInMain = false;
long failing = -1;
bool failsForever = false;
thread_local long count = 0;

bool Fails() noexcept
{
    if (!isInMain)
        return false;
    const long number = count++;
    if (number != failing && !(failsForever && number > failing))
        return false;
    if (const char* const name = std::getenv("FAILED_FILE"))
        syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, name, O_WRONLY | O_CREAT, 0600));
    errno = ENOMEM;
    return true;
}

int (*programMain)(int, char**, char**) = nullptr;

int StartMain(int argc, char** argv, char** environment)
{
    if (const char* const number = std::getenv("FAILING_ALLOCATION")) {
        failing = std::atol(number);
        failsForever = std::getenv("FAILING_FOREVER") != nullptr;
        isInMain = true;
    }
    const int status = programMain(argc, argv, environment);
    isInMain = false;
    return status;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept
{
    return Fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) noexcept
{
    return Fails() ? nullptr : __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) noexcept
{
    return Fails() ? nullptr : __libc_realloc(memory, size);
}

// The start of a program, which calls main.
int __libc_start_main(int (*main)(int, char**, char**),
    int argc,
    char** argv,
    void (*begin)(),
    void (*end)(),
    void (*finish)(),
    void* stack)
{
    programMain = main;
    const auto start = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(StartMain, argc, argv, begin, end, finish, stack);
}

}  // extern "C"
