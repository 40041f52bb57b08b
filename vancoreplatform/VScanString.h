// Scanning a text from the left.
#pragma once

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// A position in a text that moves forward over what it is asked to skip.
// Refers to the text, which must outlive it and stay unchanged.
class VANCOREPLATFORM_API VScanString {
public:
    explicit VScanString(const VString& text) noexcept : m_position(text.begin()), m_end(text.end()) {}

    // Moves past white space as VCType::isSpace has it. Linear in what it skips.
    void skipWhitespace() noexcept;
    bool IsAtEnd() const noexcept { return m_position == m_end; }

private:
    VString::const_iterator m_position;
    VString::const_iterator m_end;
};
