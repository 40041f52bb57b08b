// Logging.
#pragma once

#include <cstdint>
#include <memory>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

namespace VLog {

enum Severity { Debug, Info, Warn, Error };

// A logged message. A message about an error can have the identity of the error, which is a key and a code (see
// vansys/VError.h), and the source and status of the error.
struct Record {
    Severity severity = Info;
    VString message;
    VString key;             // empty without an identity
    std::uint32_t code = 0;  // 0 without an identity
    int errorSource = 0;
    int statusCode = 0;
};

// Receives the records that all threads log. An application derives its own class from this and passes it to SetSink.
//
// Threads: called on the thread that logs. The sinks for the log, activities and metrics are called one at a time, so
// they need no lock. Messages, activities and scopes of the sink itself are not reported. Exceptions that it
// throws are dropped. A sink must not wait for another thread that uses the library.
class VANCOREPLATFORM_API Sink {
public:
    virtual ~Sink();
    // The record is valid only during the call.
    virtual void Write(const Record& record) = 0;
};

// Sets the sink, which then receives the records instead of Qt's log, and returns the previous one. Null, the default,
// stands for Qt's log. Shares ownership of the sink. When the function returns, the previous sink does not run on
// another thread. The sink is not destroyed when the process ends, and other threads may still call it then. So set
// null before anything is destroyed that the sink uses. Thread-safe; a sink may call it too.
VANCOREPLATFORM_API std::shared_ptr<Sink> SetSink(std::shared_ptr<Sink> sink);

}  // namespace VLog

// Passes the record to the sink or, without a sink, to Qt's logging category "vancorexml". Debug is off in that
// category unless the host turns it on. Thread-safe.
VANCOREPLATFORM_API void LogMessage(const VLog::Record& record);
VANCOREPLATFORM_API void LogMessage(VLog::Severity severity, const VString& message);
