// Objects by name, for each thread and for the process.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// Objects are held in boost::any. Only a caller of the functions that use it needs Boost, and includes
// <boost/any.hpp> itself.
namespace boost {
class any;
}  // namespace boost

namespace CoreThreadContext {

// A function that the host can replace. Thread-safe: one thread may replace the function while others call it. A
// running call still uses the old function.
class VANCOREPLATFORM_API SessionCheck {
public:
    explicit SessionCheck(std::function<bool()> function);
    SessionCheck(const SessionCheck& other);
    SessionCheck& operator=(const SessionCheck& other);
    SessionCheck& operator=(std::function<bool()> function);

    // Calls the function without holding a lock. Throws std::bad_function_call if the function is empty.
    // Exceptions of the function propagate.
    bool operator()() const;
    explicit operator bool() const;

private:
    std::shared_ptr<const std::function<bool()>> Function() const;

    mutable std::mutex m_mutex;
    std::shared_ptr<const std::function<bool()>> m_function;  // guarded by m_mutex; never null
};

// Returns whether the calling thread works for a session. Returns false until the host sets another function.
VANCOREPLATFORM_API extern SessionCheck& HasSessionId;

// Returns the calling thread's object called `name`, or an empty object if there is none.
//
// The objects of a thread are destroyed when it ends. On Windows, each fiber has its objects, which are destroyed
// when the fiber is deleted. Unloading this library there destroys the objects of all threads and fibers, in
// the thread that unloads it.
VANCOREPLATFORM_API boost::any GetGenericObject(const VString& name);
VANCOREPLATFORM_API void SetGenericObject(const VString& name, const boost::any& object);

// Returns the process-wide object called `name`. The first call makes the object with `create`; if `create`
// throws, the next call tries again. Thread-safe. `create` runs under the store's lock and must not call
// GetProcessObject or RemoveProcessObject.
//
// The store destroys its objects when this library is unloaded, but not when the process ends, because other threads
// may still use them. If the destructor of an object is in the code of a library, the library must remove the object
// before it is unloaded. To do this, define a static guard object inside `create`, whose destructor calls
// RemoveProcessObject.
VANCOREPLATFORM_API boost::any GetProcessObject(const VString& name, const std::function<boost::any()>& create);

// Removes the object called `name` from the store; does nothing if there is none, or while the process ends.
// Thread-safe.
VANCOREPLATFORM_API void RemoveProcessObject(const VString& name);

}  // namespace CoreThreadContext
