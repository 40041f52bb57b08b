// Detects builds with AddressSanitizer.
#pragma once

#if defined(__has_feature)
#  if __has_feature(address_sanitizer)
#    define VANCOREXML_ADDRESS_SANITIZER
#  endif
#elif defined(__SANITIZE_ADDRESS__)
#  define VANCOREXML_ADDRESS_SANITIZER
#endif

// True in builds with AddressSanitizer. Pools then do not recycle memory, because recycled memory hides
// use-after-free from the sanitizer.
#ifdef VANCOREXML_ADDRESS_SANITIZER
constexpr bool HasAddressSanitizer = true;
#else
constexpr bool HasAddressSanitizer = false;
#endif

#undef VANCOREXML_ADDRESS_SANITIZER
