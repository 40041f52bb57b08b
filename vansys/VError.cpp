#include "vansys/VError.h"

namespace VantoraError {

ErrorCode MakeError(std::uint32_t code, const VString& key)
{
    return {code, key};
}

}  // namespace VantoraError

namespace VError {

const ErrorInfo ErrorInfo::NoError;

ErrorInfo::ErrorInfo(const VantoraError::ErrorCode& error, ErrorSource source, StatusCode status)
    : m_error(error),
      m_source(source),
      m_status(status)
{}

bool operator==(const ErrorInfo& a, const ErrorInfo& b)
{
    return a.m_error.code == b.m_error.code && a.m_error.key == b.m_error.key && a.m_source == b.m_source &&
        a.m_status == b.m_status;
}

}  // namespace VError

void LogMessage(VLog::Severity severity, const VString& message, const VError::ErrorInfo& site)
{
    VLog::Record record;
    record.severity = severity;
    record.message = message;
    record.key = site.GetKey();
    record.code = site.GetCode();
    record.errorSource = static_cast<int>(site.GetSource());
    record.statusCode = static_cast<int>(site.GetStatus());
    LogMessage(record);
}
