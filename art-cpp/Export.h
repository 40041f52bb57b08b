// `ARTCPP_API` exports a symbol from the library `art-cpp`. All other symbols are hidden.
#pragma once

#include "vancoreplatform/Export.h"

#if defined(ARTCPP_BUILD)
#  define ARTCPP_API VANCORE_EXPORT
#else
#  define ARTCPP_API VANCORE_IMPORT
#endif
