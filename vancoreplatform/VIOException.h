// The exception of failed operations on files and texts.
#pragma once

#include <exception>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// GetMessage is also a macro of windows.h, which a source may include before or after this header.
#pragma push_macro("GetMessage")
#undef GetMessage

namespace VIO {

// Thrown by failed operations on files and on the encodings of texts. The message names the file if there is one.
class VANCOREPLATFORM_API Exception : public std::exception {
public:
    explicit Exception(const VString& message);
    ~Exception() override;

    const VString& GetMessage() const noexcept { return m_message; }
    // Returns the message as UTF-8. Valid while the exception lives.
    const char* what() const noexcept override;
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

private:
    VString m_message;
    std::string m_utf8;
};

}  // namespace VIO

#pragma pop_macro("GetMessage")
