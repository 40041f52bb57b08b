// Marks what `metrics2` offers to other modules: everything else stays hidden.
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
