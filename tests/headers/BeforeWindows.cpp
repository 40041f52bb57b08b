// Includes all public headers before windows.h. Callers can still call GetMessage, which then is a macro.
#include "all-public-headers.h"

#if defined(_WIN32)
#  include <windows.h>
#endif

bool HaveEqualMessages(const VantoraException& left, const VIO::Exception& right)
{
    return left.GetMessage() == right.GetMessage();
}
