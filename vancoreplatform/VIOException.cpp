#include "vancoreplatform/VIOException.h"

namespace VIO {

Exception::Exception(const VString& message) : m_message(message), m_utf8(message.toStdString()) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept
{
    return m_utf8.c_str();
}

}  // namespace VIO
