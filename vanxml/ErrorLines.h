// Formats lines for standard error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"

// Escapes the characters of a UTF-8 text that control a terminal, so the result is one harmless line.
// Control characters (C0, DEL and C1), line and paragraph separators and the marks of bidirectional
// text become `\n`, `\r`, `\t`, `\x1b` (ASCII) or `\u009b` (beyond ASCII). A byte that is not valid
// UTF-8 becomes `\xff`. Backslashes stay, so that paths of Windows stay readable; therefore the
// escaping cannot be reversed. Linear.
std::string EscapeControlCharacters(std::string_view text);

// The number of UTF-16 code units of a text that ClipText does not clip.
constexpr std::size_t longestUnclipped = 100;

// Returns the text, or its first 100 UTF-16 code units and "…" if it is longer. Does not split a character.
VString ClipText(const VString& text);

// False for a warning.
bool IsError(const ParseDiagnostic& diagnostic) noexcept;

// Returns "PLACE: MESSAGE" and a line feed. `place` is the name of a document, possibly with a line and a column.
// Escapes the place and the message.
std::string FormatDocumentLine(const VString& place, const VString& message);

// Returns "NAME: error: MESSAGE" and a line feed, for an error of the document `name`. Escapes the name and the
// message.
std::string FormatErrorLine(const VString& name, const VString& message);

// Returns "vanxml: MESSAGE" and a line feed, for any other error. Escapes the message.
std::string FormatErrorLine(std::string_view message);
