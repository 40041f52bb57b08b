// The objects of the session that a thread works for.
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

// A function of the host, which any thread may replace while others call it. A call that runs already
// ends with the function that it began with.
class VANCOREPLATFORM_API SessionCheck {
public:
    explicit SessionCheck(std::function<bool()> function);
    SessionCheck(const SessionCheck& other);
    SessionCheck& operator=(const SessionCheck& other);
    SessionCheck& operator=(std::function<bool()> function);

    // Calls the function without holding a lock. Throws std::bad_function_call when the function is empty;
    // exceptions of the function propagate.
    bool operator()() const;
    explicit operator bool() const;

private:
    std::shared_ptr<const std::function<bool()>> Function() const;

    mutable std::mutex m_mutex;
    std::shared_ptr<const std::function<bool()>> m_function;  // guarded by m_mutex; never null
};

// Whether the calling thread works for a session. Answers false until the host sets another function.
VANCOREPLATFORM_API extern SessionCheck HasSessionId;

// The calling thread's object of that name, empty when there is none.
VANCOREPLATFORM_API boost::any GetGenericObject(const VString& name);
VANCOREPLATFORM_API void SetGenericObject(const VString& name, const boost::any& object);

// One object of that name for the whole process, made by `create` on the first call.
// Thread-safe; `create` runs under the store's lock and must not call back.
//
// The store destroys its objects when the process exits. A library whose code destroys an object must
// remove it when it is unloaded. Static objects that `create` makes are destroyed before the store.
VANCOREPLATFORM_API boost::any GetProcessObject(const VString& name, const std::function<boost::any()>& create);

// Removes the store's reference to the object; does nothing when there is none. Thread-safe.
VANCOREPLATFORM_API void RemoveProcessObject(const VString& name);

}  // namespace CoreThreadContext
