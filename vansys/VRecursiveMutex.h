// A mutex that its holder may take again.
#pragma once

#include <mutex>

using VRecursiveMutex = std::recursive_mutex;
using VRecursiveMutexLocker = std::lock_guard<VRecursiveMutex>;
