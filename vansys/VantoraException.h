// The base class of the product's exceptions.
#pragma once

#include <exception>
#include <string>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"
#include "vansys/VError.h"

// GetMessage is also a macro of windows.h, which a source may include before or after this header.
#pragma push_macro("GetMessage")
#undef GetMessage

// An exception with a message and the identity of the error. Catch it by reference. A derived class overrides
// Clone and Throw, so that copies keep its type.
class VANSYS_API VantoraException : public std::exception {
public:
    VantoraException(const VString& message, const VError::ErrorInfo& info);
    VantoraException(const VantoraException& other);
    VantoraException& operator=(const VantoraException& other);
    ~VantoraException() override;

    // Returns a copy of the derived type on the heap. The caller owns it.
    virtual VantoraException* Clone() const;
    // Throws a copy of the derived type.
    [[noreturn]] virtual void Throw() const;
    // Returns the message, or the description that a derived class sets, as UTF-8. Valid while the exception lives.
    const char* what() const noexcept override;

    const VString& GetMessage() const noexcept { return m_message; }
    // Returns all messages of the exception, one per line. This class has one message; a derived class may have more.
    virtual VString GetConcatenatedMessages() const;
    const VError::ErrorInfo& GetErrorInfo() const noexcept { return m_info; }
#if defined(_WIN32)
    // A call of GetMessage becomes a call of one of these if the source includes windows.h.
    const VString& GetMessageA() const noexcept
    {
        return m_message;
    }
    const VString& GetMessageW() const noexcept
    {
        return m_message;
    }
#endif

protected:
    // For derived classes whose message does not describe the error. what() then returns `description`.
    VantoraException(const VString& message, const VError::ErrorInfo& info, const VString& description);

private:
    VString m_message;
    VError::ErrorInfo m_info;
    std::string m_utf8;
};

#pragma pop_macro("GetMessage")
