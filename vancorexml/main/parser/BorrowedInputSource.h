// Documents in the memory of the caller.
#pragma once

#include <memory>
#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Borrows the caller's bytes without a copy. They must stay unchanged and outlive the source and
// every view given to the parser.
class BorrowedInputSource final : public Utf8InputSource {
public:
    // With TextEncoding::Utf8, the bytes are UTF-8 and the encoding in their XML declaration is ignored.
    BorrowedInputSource(const std::string& bytes,
        const VString& id,
        bool skipLeadingWhitespace,
        TextEncoding encoding = TextEncoding::Detected)
        // The shared pointer owns nothing, and the bytes are never written to, so the cast is safe.
        : Utf8InputSource(std::shared_ptr<std::string>(std::shared_ptr<void>(), const_cast<std::string*>(&bytes)),
              id,
              skipLeadingWhitespace,
              encoding == TextEncoding::Utf8)
    {}
};
