#include "vancoreplatform/CoreThreadContext.h"

#include <map>
#include <memory>
#include <new>
#include <utility>

#if defined(_WIN32)
#  include <windows.h>
#endif

#include <boost/any.hpp>

#include "vancoreplatform/ProcessEnd.h"
#include "vancoreplatform/StaticObject.h"

namespace CoreThreadContext {

namespace {

using ObjectMap = std::map<VString, boost::any>;

#if defined(_WIN32)

// The objects of each thread, in a slot of Windows. A thread_local map does not work in a DLL that mingw-w64 builds:
// its memory is freed before its destructor runs, and the destructor keeps the DLL loaded until the thread ends.
class ThreadSlot {
public:
    ThreadSlot() : m_index(FlsAlloc(Delete))
    {
        if (m_index == FLS_OUT_OF_INDEXES)
            throw std::bad_alloc();
    }

    // When the DLL is unloaded, destroys the objects of all threads.
    ~ThreadSlot()
    {
        if (!IsProcessEnding())
            FlsFree(m_index);
    }

    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    ObjectMap& Get() const
    {
        if (void* const objects = FlsGetValue(m_index))
            return *static_cast<ObjectMap*>(objects);
        auto objects = std::make_unique<ObjectMap>();
        if (!FlsSetValue(m_index, objects.get()))
            throw std::bad_alloc();
        return *objects.release();
    }

private:
    // Windows calls this when a thread ends.
    static void NTAPI Delete(void* objects)
    {
        if (!IsProcessEnding())
            delete static_cast<ObjectMap*>(objects);
    }

    DWORD m_index;
};

ObjectMap& ThreadObjects()
{
    static const ThreadSlot slot;
    return slot.Get();
}

#else

ObjectMap& ThreadObjects()
{
    static thread_local ObjectMap objects;
    return objects;
}

#endif

struct ProcessObjects {
    std::mutex mutex;
    ObjectMap objects;  // guarded by mutex
};

ProcessObjects& GetProcessObjects()
{
    return GetStaticObject<ProcessObjects>();
}

}  // namespace

SessionCheck::SessionCheck(std::function<bool()> function)
    : m_function(std::make_shared<const std::function<bool()>>(std::move(function)))
{}

SessionCheck::SessionCheck(const SessionCheck& other) : m_function(other.Function()) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): it copies the function before it changes m_function.
SessionCheck& SessionCheck::operator=(const SessionCheck& other)
{
    auto function = other.Function();
    const std::lock_guard lock(m_mutex);
    m_function.swap(function);
    return *this;
}

SessionCheck& SessionCheck::operator=(std::function<bool()> function)
{
    return *this = SessionCheck(std::move(function));
}

bool SessionCheck::operator()() const
{
    return (*Function())();
}

SessionCheck::operator bool() const
{
    return static_cast<bool>(*Function());
}

std::shared_ptr<const std::function<bool()>> SessionCheck::Function() const
{
    const std::lock_guard lock(m_mutex);
    return m_function;
}

namespace {

struct HostSession {
    SessionCheck check{[] { return false; }};
};

}  // namespace

SessionCheck& HasSessionId = GetStaticObject<HostSession>().check;

boost::any GetGenericObject(const VString& name)
{
    const ObjectMap& objects = ThreadObjects();
    const auto found = objects.find(name);
    return found == objects.end() ? boost::any() : found->second;
}

void SetGenericObject(const VString& name, const boost::any& object)
{
    ThreadObjects()[name] = object;
}

boost::any GetProcessObject(const VString& name, const std::function<boost::any()>& create)
{
    ProcessObjects& store = GetProcessObjects();
    const std::lock_guard lock(store.mutex);
    const auto found = store.objects.find(name);
    if (found != store.objects.end())
        return found->second;
    return store.objects.emplace(name, create()).first->second;
}

void RemoveProcessObject(const VString& name)
{
    if (IsProcessEnding())
        return;
    ProcessObjects& store = GetProcessObjects();
    ObjectMap::node_type removed;  // destroyed after the lock is released
    const std::lock_guard lock(store.mutex);
    removed = store.objects.extract(name);
}

}  // namespace CoreThreadContext
