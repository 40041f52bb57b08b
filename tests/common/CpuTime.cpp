#include "tests/common/CpuTime.h"

#if defined(_WIN32)
#  include <cstdint>

#  include <windows.h>
#else
#  include <sys/resource.h>
#endif

double testsupport::CpuSeconds()
{
#if defined(_WIN32)
    FILETIME created;
    FILETIME ended;
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    constexpr double unitsPerSecond = 1e7;
    return static_cast<double>(std::uint64_t{user.dwHighDateTime} << 32 | user.dwLowDateTime) / unitsPerSecond;
#else
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_utime.tv_usec) / 1e6;
#endif
}
