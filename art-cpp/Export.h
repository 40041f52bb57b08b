// `ARTCPP_API` exports a symbol from the library `art-cpp`. All other symbols are hidden.
#pragma once

#if defined(_WIN32)
#  if defined(ARTCPP_BUILD)
#    define ARTCPP_API __declspec(dllexport)
#  else
#    define ARTCPP_API __declspec(dllimport)
#  endif
#else
#  define ARTCPP_API __attribute__((visibility("default")))
#endif
