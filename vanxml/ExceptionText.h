// Telling the user why a command ended.
#pragma once

#include <string>

#include "vancoreplatform/VString.h"

// The message (UTF-8) for the exception that is being handled; call it in a catch clause only.
// `document` is the file that was being processed, empty when unknown. The message names the
// cause, and for a logic assertion its key, file, line and text.
std::string DescribeException(const VString& document);
