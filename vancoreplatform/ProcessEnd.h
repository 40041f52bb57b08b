// The end of the process.
#pragma once

#include "vancoreplatform/Export.h"

// Returns true while the process ends. Destructors of static objects then run, but must neither lock nor release
// anything. They need to run to the end only if a library is unloaded before.
//
// Windows first stops all other threads. A stopped thread may hold a lock for ever. The function returns true when the
// DLLs are unloaded.
//
// On other systems the other threads still run, and may use every static object. The function returns true as soon as
// the process runs exit handlers and destructors of static objects that were registered before the last call of
// WatchProcessEnd.
//
// Thread-safe.
VANCOREPLATFORM_API bool IsProcessEnding() noexcept;

// Makes IsProcessEnding return true in the destructors of all static objects that exist already. Each call takes a few
// bytes of the process's list of exit handlers. Does nothing on Windows. Thread-safe.
VANCOREPLATFORM_API void WatchProcessEnd() noexcept;
