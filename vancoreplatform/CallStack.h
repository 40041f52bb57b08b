// The call stack of the current thread.
#pragma once

#include <cstdint>

#include "vancoreplatform/Export.h"

#if defined(_MSC_VER)
#  include <intrin.h>
#endif

namespace CallStack {

// Returns an address in the frame of the caller.
inline std::uintptr_t GetAddress() noexcept
{
#if defined(_MSC_VER)
    return reinterpret_cast<std::uintptr_t>(_AddressOfReturnAddress());
#else
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
#endif
}

// Returns the lowest address that a frame of the current thread should have. Below it, there are 128 KiB for functions
// that report an error, or a quarter of the stack if that is less. Returns 0 if the system does not tell the size of
// the stack, or if the caller runs on another stack, such as the one of a coroutine. Thread-safe. Cost: on Linux, the
// main thread reads a file of the system.
VANCOREPLATFORM_API std::uintptr_t FindLowestAddress() noexcept;

}  // namespace CallStack
