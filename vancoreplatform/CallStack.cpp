#include "vancoreplatform/CallStack.h"

#include <algorithm>
#include <cstddef>

#if defined(_WIN32)
#  include <windows.h>
#elif defined(__linux__) || defined(__APPLE__)
#  include <pthread.h>
#endif

namespace {

// The memory of a stack. The size is 0 if it is unknown.
struct Range {
    std::uintptr_t start = 0;
    std::size_t size = 0;
};

#if defined(_WIN32)

Range FindRange() noexcept
{
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    return {low, high - low};
}

#elif defined(__linux__)

Range FindRange() noexcept
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return {};
    void* start = nullptr;
    std::size_t size = 0;
    const bool isKnown = pthread_attr_getstack(&attributes, &start, &size) == 0;
    pthread_attr_destroy(&attributes);
    return isKnown ? Range{reinterpret_cast<std::uintptr_t>(start), size} : Range();
}

#elif defined(__APPLE__)

Range FindRange() noexcept
{
    const std::size_t size = pthread_get_stacksize_np(pthread_self());
    return {reinterpret_cast<std::uintptr_t>(pthread_get_stackaddr_np(pthread_self())) - size, size};
}

#else

Range FindRange() noexcept
{
    return {};
}

#endif

}  // namespace

std::uintptr_t CallStack::FindLowestAddress() noexcept
{
    constexpr std::size_t Reserve = 131'072;
    const Range range = FindRange();
    const std::uintptr_t address = GetAddress();
    if (address < range.start || address - range.start >= range.size)
        return 0;
    return range.start + std::min(Reserve, range.size / 4);
}
