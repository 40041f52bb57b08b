#include <QString>

#include "vancoreplatform/SystemError.h"

VString GetSystemReason(const std::error_code& error)
{
    return VString(QString::fromLocal8Bit(error.message().c_str()));
}
