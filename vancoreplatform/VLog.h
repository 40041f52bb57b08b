// Logging.
#pragma once

#include <cstdint>
#include <functional>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

namespace VLog {

enum Severity { Debug, Info, Warn, Error };

// One logged message, with the identity of the place that logged it where it has one.
struct Record {
    Severity severity = Info;
    VString message;
    VString key;             // empty without an identity
    std::uint32_t code = 0;  // of the identity
    int errorSource = 0;
    int statusCode = 0;
};

// Every record logged while it lives, by any thread, goes to the sink and no
// further; captures nest, the youngest receives. For tests and for hosts that have
// their own log. The sink is called under a lock and must not log.
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

// To the youngest capture, or else to Qt's logging category "vancorexml", where Debug
// is off unless the host turns it on. Callable from any thread.
VANCOREPLATFORM_API void LogMessage(const VLog::Record& record);
VANCOREPLATFORM_API void LogMessage(VLog::Severity severity, const VString& message);
