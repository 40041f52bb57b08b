// Documents in the memory of the caller.
#pragma once

#include <memory>
#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/Utf8InputSource.h"

// Borrows the caller's bytes without a copy. They must stay unchanged and outlive the source and
// every view given to the parser.
class BorrowedInputSource final : public Utf8InputSource {
public:
    // The shared pointer owns nothing, and the bytes are never written to, so the cast is safe.
    BorrowedInputSource(const std::string& bytes, const VString& id, bool skipLeadingWhitespace)
        : Utf8InputSource(std::shared_ptr<std::string>(std::shared_ptr<void>(), const_cast<std::string*>(&bytes)),
              id,
              skipLeadingWhitespace,
              false)
    {}
};
