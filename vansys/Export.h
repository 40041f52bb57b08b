// `VANSYS_API` exports a symbol from the library `vansys`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(VANSYS_BUILD)
#    define VANSYS_API __declspec(dllexport)
#  else
#    define VANSYS_API __declspec(dllimport)
#  endif
#else
#  define VANSYS_API __attribute__((visibility("default")))
#endif
