#include "vancoreplatform/DecodingException.h"

#include <utility>

namespace VIO {

DecodingException::DecodingException(const VString& message, BadBytes badBytes)
    : Exception(message),
      m_badBytes(std::move(badBytes))
{}

DecodingException::~DecodingException() = default;

}  // namespace VIO
