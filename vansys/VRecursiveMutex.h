// A mutex that its holder can lock again.
#pragma once

#include <mutex>

using VRecursiveMutex = std::recursive_mutex;
using VRecursiveMutexLocker = std::lock_guard<VRecursiveMutex>;
