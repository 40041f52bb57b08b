#include "vancorexml/main/parser/XercesPlatform.h"

#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <new>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "vansys/InitOnce.h"

namespace {

struct Platform {
    // Recursive: if Xerces cannot be initialised, it exits the process, and OnExit locks the mutex again.
    std::recursive_mutex mutex;
    bool isInitialised = false;  // guarded by mutex, like the other members
    bool isExiting = false;
    int uses = 0;
};

Platform& GetPlatform()
{
    // Never destroyed, because static objects that are destroyed later may still release Xerces. Not on the
    // heap, because each unload of the library would leak it.
    alignas(Platform) static std::byte place[sizeof(Platform)];
    static Platform* const platform = new (place) Platform;
    return *platform;
}

// The caller must hold the mutex.
void TerminateWhenUnused(Platform& platform)
{
    if (platform.isExiting && platform.isInitialised && platform.uses == 0) {
        xercesc::XMLPlatformUtils::Terminate();
        platform.isInitialised = false;
    }
}

void OnExit()
{
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    platform.isExiting = true;
    TerminateWhenUnused(platform);
}

void RegisterExitHook()
{
    static InitOnce once;
    once([] { std::atexit(OnExit); });
}

}  // namespace

XercesInitializer::XercesInitializer()
{
    RegisterExitHook();
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    if (!platform.isInitialised) {
        xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale);
        platform.isInitialised = true;
    }
    ++platform.uses;
}

XercesInitializer::~XercesInitializer()
{
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    --platform.uses;
    TerminateWhenUnused(platform);
}
