#include "vancoreplatform/CoreThreadContext.h"

#include <map>
#include <utility>

#include <boost/any.hpp>

namespace CoreThreadContext {

namespace {

using ObjectMap = std::map<VString, boost::any>;

ObjectMap& ThreadObjects()
{
    static thread_local ObjectMap objects;
    return objects;
}

struct ProcessObjects {
    std::mutex mutex;
    ObjectMap objects;  // guarded by mutex
};

ProcessObjects& GetProcessObjects()
{
    static ProcessObjects objects;
    return objects;
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

SessionCheck HasSessionId([] { return false; });

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
    ProcessObjects& store = GetProcessObjects();
    ObjectMap::node_type removed;  // destroyed after the lock is released
    const std::lock_guard lock(store.mutex);
    removed = store.objects.extract(name);
}

}  // namespace CoreThreadContext
