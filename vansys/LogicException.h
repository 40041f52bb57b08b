// Failed logic assertions.
#pragma once

#include <cstdint>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"
#include "vansys/VantoraException.h"

// A failed logic assertion: the caller misused an operation. A fault in a document never raises one.
// The message is the text of the asserted expression.
class VANSYS_API LogicException : public VantoraException {
public:
    LogicException(const VString& file, int line, const VString& expression, const VError::ErrorInfo& info);
    LogicException(const LogicException& other);
    LogicException& operator=(const LogicException& other);
    ~LogicException() override;

    VantoraException* Clone() const override;
    [[noreturn]] void Throw() const override;

    // The source file of the assertion: its path from the root of the sources, with backslashes and without
    // extension, such as "vancorexml\main\parser\DOM".
    const VString& GetFile() const noexcept { return m_file; }
    int GetLine() const noexcept { return m_line; }
    const VString& GetExpression() const noexcept { return GetMessage(); }

private:
    VString m_file;
    int m_line;
};

// The identity of a logic assertion: its source, line, text and code. Logs refer to an assertion by these four, so
// they never change; the line stays the same when the source grows.
//
// How to add an assertion:
//
// 1. A source lists its sites at its top, in the namespace `Assertions` inside the unnamed namespace. Add a site to
//    this list. Name the site for the broken promise, such as `UnknownOptions`.
// 2. `file` is the path that LogicException::GetFile returns. `line` is the line of the check when it is added.
//    `text` is the condition that must hold, or a sentence.
// 3. Choose a random `code` of eight hexadecimal digits that no other site has, and write the comment `own code` at
//    the site. A site without this comment has a code that the product prescribes.
// 4. If no caller can break the promise, write the comment `Unreachable` at the site, with the reason.
// 5. Raise it with ThrowLogicException, and name LogicException in the comment of the operation.
// 6. Test it with testsupport::ExpectLogicException, unless it is unreachable.
//
//     namespace Assertions {
//     constexpr AssertionSite UnknownOptions{"vansys\\VReadWriteLock", 103, "options == 0", 0x6B20F4D1};  // own code
//     }
//
//     if (options != 0)
//         ThrowLogicException(Assertions::UnknownOptions);
struct AssertionSite {
    const char* file;
    int line;
    const char* text;  // UTF-8
    std::uint32_t code;
};

// Throws the LogicException of the site. Its error has the source Product and the status Internal.
[[noreturn]] VANSYS_API void ThrowLogicException(const AssertionSite& site);

// The same for a text that is known only at run time.
[[noreturn]] VANSYS_API void ThrowLogicException(
    const VString& file, int line, const VString& expression, const VantoraError::ErrorCode& error);

// Makes the error of a logic assertion. Its key is "LogicException_LogicAssert_0x", followed by the code in
// eight upper-case hexadecimal digits.
VANSYS_API VantoraError::ErrorCode MakeLogicError(std::uint32_t code);
