// `VANCOREPLATFORM_API` exports a symbol from the library `vancoreplatform`. All other symbols are hidden. Static
// libraries export nothing.
#pragma once

// The export macros of all modules use these two macros, so only this header contains attributes of a compiler.
#if defined(VANCOREXML_STATIC)
#  define VANCORE_EXPORT
#  define VANCORE_IMPORT
#elif defined(_WIN32)
#  define VANCORE_EXPORT __declspec(dllexport)
#  define VANCORE_IMPORT __declspec(dllimport)
#else
#  define VANCORE_EXPORT __attribute__((visibility("default")))
#  define VANCORE_IMPORT VANCORE_EXPORT
#endif

#if defined(VANCOREPLATFORM_BUILD)
#  define VANCOREPLATFORM_API VANCORE_EXPORT
#else
#  define VANCOREPLATFORM_API VANCORE_IMPORT
#endif
