// `METRICS2_API` exports a symbol from the library `metrics2`. All other symbols are hidden.
#pragma once

#include "vancoreplatform/Export.h"

#if defined(METRICS2_BUILD)
#  define METRICS2_API VANCORE_EXPORT
#else
#  define METRICS2_API VANCORE_IMPORT
#endif
