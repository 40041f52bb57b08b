// The base of the product's exceptions.
#pragma once

#include <exception>
#include <string>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"
#include "vansys/VError.h"

// A message with the identity of the error. Catch it by reference; a derived class
// overrides Clone and Throw so that its type survives a copy.
class VANSYS_API VantoraException : public std::exception {
public:
    VantoraException(const VString& message, const VError::ErrorInfo& info);
    VantoraException(const VantoraException& other);
    VantoraException& operator=(const VantoraException& other);
    ~VantoraException() override;

    // A copy on the heap, of the derived type; the caller owns it.
    virtual VantoraException* Clone() const;
    // Throws a copy of this exception, of the derived type.
    [[noreturn]] virtual void Throw() const;
    // The message, or the description that a derived class gives, as UTF-8; valid while the
    // exception lives.
    const char* what() const noexcept override;

    const VString& GetMessage() const noexcept { return m_message; }
    // All messages of the exception, a line each; one unless a class has more.
    virtual VString GetConcatenatedMessages() const;
    const VError::ErrorInfo& GetErrorInfo() const noexcept { return m_info; }

protected:
    // For a class whose message alone does not say what went wrong: what() gives `description`.
    VantoraException(const VString& message, const VError::ErrorInfo& info, const VString& description);

private:
    VString m_message;
    VError::ErrorInfo m_info;
    std::string m_utf8;
};
