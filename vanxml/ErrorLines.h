// The lines that go to standard error.
#pragma once

#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"

// The text without anything that a terminal acts upon, for one line. Control characters (C0,
// DEL and C1), line and paragraph separators and the marks of bidirectional text become `\n`,
// `\r`, `\t`, `\x1b` (ASCII) or `\u009b` (beyond ASCII). A byte that is not UTF-8 becomes
// `\xff`. Everything else stays, backslashes included, so paths of Windows stay readable; the
// result cannot be turned back into the text for that reason. Linear.
std::string EscapeControlCharacters(std::string_view text);

// "NAME: message" with a line feed: an error of the document `name`. Name and message are escaped.
std::string FormatErrorLine(const VString& name, const VString& message);

// "vanxml: message" with a line feed: any other error. The message is escaped.
std::string FormatErrorLine(std::string_view message);
