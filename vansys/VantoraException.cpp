#include "vansys/VantoraException.h"

VantoraException::VantoraException(const VString& message, const VError::ErrorInfo& info)
    : VantoraException(message, info, message)
{}

VantoraException::VantoraException(const VString& message, const VError::ErrorInfo& info, const VString& description)
    : m_message(message),
      m_info(info),
      m_utf8(description.toStdString())
{}

VantoraException::VantoraException(const VantoraException& other) = default;

VantoraException& VantoraException::operator=(const VantoraException& other) = default;

VantoraException::~VantoraException() = default;

VantoraException* VantoraException::Clone() const
{
    return new VantoraException(*this);
}

void VantoraException::Throw() const
{
    throw VantoraException(*this);
}

const char* VantoraException::what() const noexcept
{
    return m_utf8.c_str();
}

VString VantoraException::GetConcatenatedMessages() const
{
    return m_message;
}
