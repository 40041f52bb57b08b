// `METRICS2_API` exports a symbol from the library `metrics2`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(METRICS2_BUILD)
#    define METRICS2_API __declspec(dllexport)
#  else
#    define METRICS2_API __declspec(dllimport)
#  endif
#else
#  define METRICS2_API __attribute__((visibility("default")))
#endif
