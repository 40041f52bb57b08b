#include "vansys/LogicException.h"

LogicException::LogicException(const VString& file, int line, const VString& expression, const VError::ErrorInfo& info)
    : VantoraException(expression, info),
      m_file(file),
      m_line(line)
{}

LogicException::LogicException(const LogicException& other) = default;

LogicException& LogicException::operator=(const LogicException& other) = default;

LogicException::~LogicException() = default;

VantoraException* LogicException::Clone() const
{
    return new LogicException(*this);
}

void LogicException::Throw() const
{
    throw LogicException(*this);
}

void ThrowLogicException(const AssertionSite& site)
{
    ThrowLogicException(site.file, site.line, site.text, MakeLogicError(site.code));
}

void ThrowLogicException(const VString& file, int line, const VString& expression, const VantoraError::ErrorCode& error)
{
    throw LogicException(
        file, line, expression, VError::ErrorInfo(error, VError::ErrorSource::Product, VError::StatusCode::Internal));
}

VantoraError::ErrorCode MakeLogicError(std::uint32_t code)
{
    constexpr char16_t digits[] = u"0123456789ABCDEF";
    VString key = "LogicException_LogicAssert_0x";
    for (int shift = 28; shift >= 0; shift -= 4)
        key += digits[(code >> shift) & 0xF];
    return VantoraError::MakeError(code, key);
}
