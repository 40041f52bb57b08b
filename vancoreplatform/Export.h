// `VANCOREPLATFORM_API` exports a symbol from the library `vancoreplatform`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(VANCOREPLATFORM_BUILD)
#    define VANCOREPLATFORM_API __declspec(dllexport)
#  else
#    define VANCOREPLATFORM_API __declspec(dllimport)
#  endif
#else
#  define VANCOREPLATFORM_API __attribute__((visibility("default")))
#endif
