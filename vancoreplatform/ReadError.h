// The exception of files that cannot be read; internal to the module.
#pragma once

#include "vancoreplatform/VString.h"

// Throws VIO::Exception with the message: Cannot read "NAME": REASON.
[[noreturn]] void ThrowReadError(const VString& name, const VString& reason);
