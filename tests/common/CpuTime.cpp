#include "tests/common/CpuTime.h"

#if defined(_WIN32)
#  include <cstdint>

#  include <windows.h>
#else
#  include <ctime>
#endif

double testsupport::CpuSeconds()
{
#if defined(_WIN32)
    FILETIME created;
    FILETIME ended;
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        constexpr double unitsPerSecond = 1e7;
        return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) / unitsPerSecond;
    };
    return seconds(kernel) + seconds(user);
#else
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
#endif
}
