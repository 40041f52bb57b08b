// Whether this build uses AddressSanitizer.
#pragma once

#if defined(__has_feature)
#  if __has_feature(address_sanitizer)
#    define VANCOREXML_ADDRESS_SANITIZER
#  endif
#elif defined(__SANITIZE_ADDRESS__)
#  define VANCOREXML_ADDRESS_SANITIZER
#endif

// Recycled memory hides use-after-free from AddressSanitizer, so pools stop recycling when this
// is true.
#ifdef VANCOREXML_ADDRESS_SANITIZER
constexpr bool HasAddressSanitizer = true;
#else
constexpr bool HasAddressSanitizer = false;
#endif

#undef VANCOREXML_ADDRESS_SANITIZER
