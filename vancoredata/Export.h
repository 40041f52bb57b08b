// `VANCOREDATA_API` exports a symbol from the library `vancoredata`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(VANCOREDATA_BUILD)
#    define VANCOREDATA_API __declspec(dllexport)
#  else
#    define VANCOREDATA_API __declspec(dllimport)
#  endif
#else
#  define VANCOREDATA_API __attribute__((visibility("default")))
#endif
