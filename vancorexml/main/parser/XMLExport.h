// `VANCOREXML_API` exports a symbol from the library `vancorexml`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(VANCOREXML_BUILD)
#    define VANCOREXML_API __declspec(dllexport)
#  else
#    define VANCOREXML_API __declspec(dllimport)
#  endif
#else
#  define VANCOREXML_API __attribute__((visibility("default")))
#endif
