// The exception of failed operations on files and texts.
#pragma once

#include <exception>
#include <string>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

namespace VIO {

// Thrown by failed operations on files and on the encodings of texts. The message names the file if there is one.
class VANCOREPLATFORM_API Exception : public std::exception {
public:
    explicit Exception(const VString& message);
    ~Exception() override;

    const VString& GetMessage() const noexcept { return m_message; }
    // Returns the message as UTF-8. Valid while the exception lives.
    const char* what() const noexcept override;

private:
    VString m_message;
    std::string m_utf8;
};

}  // namespace VIO
