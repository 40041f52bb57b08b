// The reasons of failed calls to the operating system, as text.
#pragma once

#include <system_error>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// Returns the reason for a message, such as "No such file or directory". Use it instead of std::error_code::message,
// which on Windows returns bytes in the code page of the machine.
//
// Windows: the reason is in English, like all messages of this library, and the common reasons have the same words as
// on POSIX systems. An error without such words gets the system's own message, in the language of the user if the
// system has no English messages.
//
// POSIX: the reason is the system's message in the locale of the process.
//
// Thread-safe.
VANCOREPLATFORM_API VString GetSystemReason(const std::error_code& error);
