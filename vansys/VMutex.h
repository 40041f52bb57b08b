// A mutex for objects of which a process makes many.
#pragma once

#include <mutex>

#ifdef __MINGW32__
#  include <pthread.h>

// mingw-w64 allocates the memory of a std::mutex when it is locked first, and never frees it. This one frees it.
class VMutex : public std::mutex {
public:
    VMutex() = default;
    ~VMutex() { pthread_mutex_destroy(native_handle()); }
};

#else

using VMutex = std::mutex;

#endif
