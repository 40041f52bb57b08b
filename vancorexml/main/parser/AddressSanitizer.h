// Whether the address sanitizer watches.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VANCOREXML_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VANCOREXML_ADDRESS_SANITIZER
#endif

// Memory that is kept to be given out again hides from the sanitizer that it was freed, so what
// keeps some does not while this is true.
#ifdef VANCOREXML_ADDRESS_SANITIZER
constexpr bool HasAddressSanitizer = true;
#else
constexpr bool HasAddressSanitizer = false;
#endif

#undef VANCOREXML_ADDRESS_SANITIZER
