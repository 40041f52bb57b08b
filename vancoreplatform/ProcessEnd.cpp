#include "vancoreplatform/ProcessEnd.h"

#if defined(_WIN32)

#  include <windows.h>

namespace {

using ShutdownQuery = BOOLEAN(NTAPI*)();

// The import libraries of some compilers lack this function. Looking it up loads nothing, because each process has
// this DLL.
ShutdownQuery FindShutdownQuery() noexcept
{
    const FARPROC address = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress");
    return reinterpret_cast<ShutdownQuery>(reinterpret_cast<void*>(address));
}

// Looked up when the library is loaded. The first call of IsProcessEnding may come when a stopped thread holds the lock
// that a static object of that function needs.
const ShutdownQuery isShutdownInProgress = FindShutdownQuery();

}  // namespace

bool IsProcessEnding() noexcept
{
    return isShutdownInProgress != nullptr && isShutdownInProgress() != FALSE;
}

void WatchProcessEnd() noexcept {}

#else

#  include <cstdlib>

#  include <cxxabi.h>
#  include <semaphore.h>

namespace {

// Counts the exit handlers that have run. Never freed, because the handlers outlive this library.
sem_t* MakeCounter() noexcept
{
    auto* const counter = static_cast<sem_t*>(std::malloc(sizeof(sem_t)));
    if (counter != nullptr)
        sem_init(counter, 0, 0);
    return counter;
}

sem_t* GetCounter() noexcept
{
    static sem_t* const counter = MakeCounter();
    return counter;
}

}  // namespace

bool IsProcessEnding() noexcept
{
    sem_t* const counter = GetCounter();
    int count = 0;
    return counter != nullptr && sem_getvalue(counter, &count) == 0 && count > 0;
}

// An exit handler of a library is called when the library is unloaded. The counter stands for a library that never is.
// The handler itself must not be in the code of a library that can be unloaded, so it is sem_post.
void WatchProcessEnd() noexcept
{
    sem_t* const counter = GetCounter();
    const auto handler = reinterpret_cast<void (*)(void*)>(reinterpret_cast<void (*)()>(&sem_post));
    if (counter != nullptr)
        abi::__cxa_atexit(handler, counter, counter);
}

#endif
