// The identity of an error.
#pragma once

#include <cstdint>

#include "vancoreplatform/VLog.h"
#include "vancoreplatform/VString.h"
#include "vansys/Export.h"

namespace VantoraError {

// The code and the key that identify an error in logs and for the product's support.
struct ErrorCode {
    std::uint32_t code = 0;
    VString key;
};

VANSYS_API ErrorCode MakeError(std::uint32_t code, const VString& key);

}  // namespace VantoraError

namespace VError {

// The party that caused the error.
enum class ErrorSource : int { Unspecified = 0, Caller = 1, Product = 2 };

// The gRPC status codes that the product uses, with their numbers.
enum class StatusCode : int { Ok = 0, Cancelled = 1, Unknown = 2, InvalidArgument = 3, NotFound = 5, Internal = 13 };

// The identity, source and status of a diagnostic or an exception. A value.
class VANSYS_API ErrorInfo {
public:
    ErrorInfo() = default;
    explicit ErrorInfo(const VantoraError::ErrorCode& error,
        ErrorSource source = ErrorSource::Unspecified,
        StatusCode status = StatusCode::Unknown);

    // Used for messages without an identity: code 0, empty key.
    static const ErrorInfo NoError;

    std::uint32_t GetCode() const noexcept { return m_error.code; }
    const VString& GetKey() const noexcept { return m_error.key; }
    ErrorSource GetSource() const noexcept { return m_source; }
    StatusCode GetStatus() const noexcept { return m_status; }

    friend VANSYS_API bool operator==(const ErrorInfo& a, const ErrorInfo& b);
    friend bool operator!=(const ErrorInfo& a, const ErrorInfo& b) { return !(a == b); }

private:
    VantoraError::ErrorCode m_error;
    ErrorSource m_source = ErrorSource::Unspecified;
    StatusCode m_status = StatusCode::Ok;
};

}  // namespace VError

// Logs a message. `site` identifies the place in the sources that logs it. Thread-safe.
VANSYS_API void LogMessage(VLog::Severity severity, const VString& message, const VError::ErrorInfo& site);
