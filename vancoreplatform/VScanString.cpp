#include "vancoreplatform/VScanString.h"

#include <algorithm>

#include "vancoreplatform/VCType.h"

void VScanString::skipWhitespace() noexcept
{
    m_position = std::find_if_not(m_position, m_end, VCType::isSpace);
}
