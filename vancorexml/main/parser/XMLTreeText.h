// Writes trees as text.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "vancoreplatform/VString.h"

class DOMElement;

// Writes exactly the text that XMLFormatter::FormatDOM writes through an XMLStringFormatter in FormatModeContent, but
// without calling a writer. So it takes a fraction of the time, and fits where no caller can override an operation of
// the writer.
//
// Linear. The call stack does not grow with the depth of the tree. Throws std::bad_alloc if memory runs out.
namespace XMLTreeText {

// The parts of the text.
struct Content {
    const DOMElement* element = nullptr;  // null for a document without elements
    const VString* comment = nullptr;     // null for none
    bool header = false;
};

// Throws std::length_error if the text is too long for a VString.
VString ToUtf16(const Content& content);
// An unpaired surrogate that is not escaped becomes U+FFFD. Throws std::length_error if the text is too long for a
// std::string.
std::string ToUtf8(const Content& content);
// Passes the same bytes to `write` in pieces of at most 128 KB. Exceptions of `write` propagate. Memory: a fixed size,
// plus three pointers for each level of the tree, a pointer for each attribute of an element, and the comment.
void WriteUtf8(const Content& content, const std::function<void(std::string_view)>& write);

}  // namespace XMLTreeText
