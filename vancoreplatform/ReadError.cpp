#include "vancoreplatform/ReadError.h"

#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

VString FormatReadError(const VString& name, const VString& reason)
{
    return VFormatString("Cannot read \"%1\": %2").arg(name).arg(reason);
}

void ThrowReadError(const VString& name, const VString& reason)
{
    throw VIO::Exception(FormatReadError(name, reason));
}
