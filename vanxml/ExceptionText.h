// Describes exceptions to the user.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"

// Returns the message (UTF-8) for the current exception; call it in a catch clause only. `document` is
// the file that was processed, or empty. The message names the cause, and for a logic assertion its
// key, file, line and text.
std::string DescribeException(const VString& document);
