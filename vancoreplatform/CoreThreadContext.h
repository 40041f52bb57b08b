// The objects of the session that a thread works for.
#pragma once

#include <boost/any.hpp>

#include <functional>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

namespace CoreThreadContext {

// Whether the calling thread works for a session. Answers false until the host sets
// another function; set it before other threads ask.
VANCOREPLATFORM_API extern std::function<bool()> HasSessionId;

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
