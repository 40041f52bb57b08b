// Loads and unloads libraries while the program runs, on POSIX and on Windows.
#pragma once

#if defined(_WIN32)
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

namespace DynamicLibrary {

// Returns null if the library cannot be loaded. `path` is ASCII.
inline void* Load(const char* path)
{
#if defined(_WIN32)
    return LoadLibraryA(path);
#else
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
#endif
}

inline bool Unload(void* library)
{
#if defined(_WIN32)
    return FreeLibrary(static_cast<HMODULE>(library)) != FALSE;
#else
    return dlclose(library) == 0;
#endif
}

inline bool IsLoaded(const char* path)
{
#if defined(_WIN32)
    return GetModuleHandleA(path) != nullptr;
#else
    void* const library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr)
        dlclose(library);
    return library != nullptr;
#endif
}

// Returns the function `name`, or null if the library does not have it.
template <typename Function>
Function* Find(void* library, const char* name)
{
#if defined(_WIN32)
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name)));
#else
    return reinterpret_cast<Function*>(dlsym(library, name));
#endif
}

}  // namespace DynamicLibrary
