// Broken invariants and misuse by the caller.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"
#include "vansys/VantoraException.h"

// A logic assertion that failed: a caller's misuse, never a fault in a document.
// The message is the expression text.
class VANSYS_API LogicException : public VantoraException {
public:
    LogicException(const VString& file, int line, const VString& expression, const VError::ErrorInfo& info);
    LogicException(const LogicException& other);
    LogicException& operator=(const LogicException& other);
    ~LogicException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;

    // The source that asserted, cut to its module, with backslashes:
    // "vancorexml\main\parser\DOM".
    const VString& GetFile() const noexcept { return m_file; }
    int GetLine() const noexcept { return m_line; }
    const VString& GetExpression() const noexcept { return GetMessage(); }

private:
    VString m_file;
    int m_line;
};

// Throws LogicException.
[[noreturn]] VANSYS_API void ThrowLogicException(
    const VString& file, int line, const VString& expression, const VantoraError::ErrorCode& error);

// The error of a logic assertion: the code and the key "LogicException_LogicAssert_0x"
// with the code in eight upper-case hexadecimal digits.
VANSYS_API VantoraError::ErrorCode MakeLogicError(std::uint32_t code);
