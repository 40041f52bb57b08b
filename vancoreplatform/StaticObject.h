// Static objects that other threads may use while the process ends.
#pragma once

#include "vancoreplatform/ProcessEnd.h"

template <typename T>
struct StaticObjectHolder {
    StaticObjectHolder() : object() {}
    ~StaticObjectHolder()
    {
        if (!IsProcessEnding())
            object.~T();
    }
    StaticObjectHolder(const StaticObjectHolder&) = delete;
    StaticObjectHolder& operator=(const StaticObjectHolder&) = delete;

    // A member of a union is not destroyed with it.
    union {
        T object;
    };
};

// Returns the object of type T that the library of the caller has. The first call constructs it. It is destroyed when
// the library is unloaded, but not when the process ends: a process may exit while other threads still use it.
// T should be a class of one source, because all callers in a library share the object. Thread-safe.
template <typename T>
T& GetStaticObject()
{
    static StaticObjectHolder<T> holder;
    // Exit handlers run in reverse order, so this one comes before the destructor of the holder.
    [[maybe_unused]] static const bool isWatched = (WatchProcessEnd(), true);
    return holder.object;
}
