// Logging.
#pragma once

#include <cstdint>
#include <functional>

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

// While a capture exists, its sink receives the records that all threads log, and Qt's log does not. For tests and for
// hosts that have their own log. If there are several captures, only the newest receives the records. The sink
// is called under a lock and must not log.
class VANCOREPLATFORM_API Capture {
public:
    explicit Capture(std::function<void(const Record&)> sink);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

private:
    std::function<void(const Record&)> m_sink;
};

}  // namespace VLog

// Logs to the newest capture or, without a capture, to Qt's logging category "vancorexml". Debug is off in that
// category unless the host turns it on. Thread-safe.
VANCOREPLATFORM_API void LogMessage(const VLog::Record& record);
VANCOREPLATFORM_API void LogMessage(VLog::Severity severity, const VString& message);
