// Includes all public headers after windows.h. They compile although it defines min, max and GetMessage as macros.
#include <QFile>
#include <QString>
#include <QTranslator>

// Not all of these compile after the macros.
#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <shared_mutex>
#include <stack>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <variant>
#include <vector>

#if defined(_WIN32)
#  include <windows.h>
#endif
#ifndef max
#  define max(a, b) (((a) > (b)) ? (a) : (b))
#endif
#ifndef min
#  define min(a, b) (((a) < (b)) ? (a) : (b))
#endif

#include "all-public-headers.h"

bool HaveEqualMessages(const VantoraException& left, const VIO::Exception& right)
{
    return left.GetMessage() == right.GetMessage();
}
