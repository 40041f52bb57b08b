#include "vancoreplatform/ReadError.h"

#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VIOException.h"

void ThrowReadError(const VString& name, const VString& reason)
{
    throw VIO::Exception(VFormatString("Cannot read \"%1\": %2").arg(name).arg(reason));
}
