// Parts of the messages of diagnostics.
#pragma once

#include <cstddef>
#include <vector>

#include "vancoreplatform/VString.h"

// Thread-safe. All functions are linear.
namespace MessageWords {

// Returns the text, or about its first `longest` UTF-16 code units and "…" if it is longer. Splits neither a character
// nor the prefix of the colon sanitizer.
VString Clip(const VString& text, std::size_t longest);
// Returns the text in single quotes. Clips it to 60 UTF-16 code units.
VString Quote(const VString& text);
// Returns several names in quotes: "'a'", or "one of 'a', 'b'". Names at most 10 of them.
VString ListNames(const std::vector<VString>& names);
// Appends "; did you mean 'customer'?" if there is a suggestion.
VString WithSuggestion(const VString& message, const VString& suggestion);
// Returns a message of Xerces in the form of diagnostics: with a lower-case first letter and without a full stop.
VString Adapt(const VString& message);

}  // namespace MessageWords
