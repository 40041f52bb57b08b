#include "vansys/VantoraException.h"

VantoraException::VantoraException(const VString& message, const VError::ErrorInfo& info) : m_message(message), m_info(info), m_utf8(message.toStdString()) {}

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
