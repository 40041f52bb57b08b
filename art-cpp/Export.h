// Marks what `art-cpp` offers to other modules: everything else stays hidden.
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
