// The headers that most programs include. The section "Cost of the headers" of docs/design.md has the measurements.
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

// The include guards of libstdc++. Other standard libraries use other names, and pass.
#if defined(_GLIBCXX_MUTEX) || defined(_GLIBCXX_SHARED_MUTEX) || defined(_GLIBCXX_CHRONO)
#  error "a header includes <mutex>, <shared_mutex> or <chrono>"
#elif defined(_GLIBCXX_STACK) || defined(_GLIBCXX_DEQUE) || defined(_GLIBCXX_REGEX) || defined(_GLIBCXX_IOSTREAM)
#  error "a header includes <stack>, <deque>, <regex> or <iostream>"
#endif
