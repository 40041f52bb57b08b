// The exception of bytes that are no text.
#pragma once

#include <cstddef>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VIOException.h"
#include "vancoreplatform/VString.h"

namespace VIO {

// Bytes of a text that are no character in its encoding.
struct BadBytes {
    VString fileName;
    VString encoding;             // such as "UTF-8" or "US-ASCII"; "UTF-16" and "UTF-32" without their byte order
    std::size_t offset = 0;       // of the first bad byte in the file, from 0
    std::string bytes;            // the bad bytes
    bool isAtEnd = false;         // the text ends behind the bad bytes, in the middle of a character
    std::string text;             // UTF-8: the text before the bad bytes, the bad bytes, and the rest of their line
    std::size_t textOffset = 0;   // of the bad bytes in `text`, in bytes from 0
    std::size_t shownLength = 0;  // of the bad bytes in `text`: they are U+FFFD if the encoding has larger code units
};

// Thrown when the bytes of a file are invalid in its encoding.
class VANCOREPLATFORM_API DecodingException : public Exception {
public:
    DecodingException(const VString& message, BadBytes badBytes);
    ~DecodingException() override;

    // Returns the first bad bytes. Valid while the exception lives.
    const BadBytes& GetBadBytes() const noexcept { return m_badBytes; }

private:
    BadBytes m_badBytes;
};

}  // namespace VIO
