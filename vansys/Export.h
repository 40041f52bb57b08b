// `VANSYS_API` exports a symbol from the library `vansys`. All other symbols are hidden.
#pragma once

#include "vancoreplatform/Export.h"

#if defined(VANSYS_BUILD)
#  define VANSYS_API VANCORE_EXPORT
#else
#  define VANSYS_API VANCORE_IMPORT
#endif
