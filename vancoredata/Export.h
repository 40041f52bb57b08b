// `VANCOREDATA_API` exports a symbol from the library `vancoredata`. All other symbols are hidden.
#pragma once

#include "vancoreplatform/Export.h"

#if defined(VANCOREDATA_BUILD)
#  define VANCOREDATA_API VANCORE_EXPORT
#else
#  define VANCOREDATA_API VANCORE_IMPORT
#endif
