// `VANCOREXML_API` exports a symbol from the library `vancorexml`. All other symbols are hidden.
#pragma once

#include "vancoreplatform/Export.h"

#if defined(VANCOREXML_BUILD)
#  define VANCOREXML_API VANCORE_EXPORT
#else
#  define VANCOREXML_API VANCORE_IMPORT
#endif
