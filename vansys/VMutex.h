// A mutex for objects of which a process makes many.
#pragma once

#include <mutex>

#ifdef __MINGW32__

#  include "vansys/VSharedMutex.h"

// The standard mutex of mingw-w64 has the faults that VSharedMutex avoids.
using VMutex = VSharedMutex;

#else

using VMutex = std::mutex;

#endif
