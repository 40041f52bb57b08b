// The exception of files that cannot be read; internal to the module.
#pragma once

#include "vancoreplatform/VString.h"

// Returns the message: Cannot read "NAME": REASON.
VString FormatReadError(const VString& name, const VString& reason);

// Throws VIO::Exception with this message.
[[noreturn]] void ThrowReadError(const VString& name, const VString& reason);
