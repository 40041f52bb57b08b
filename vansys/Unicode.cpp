#include "vansys/Unicode.h"

namespace Unicode {

std::size_t normalizeLineEndings(char* utf8, std::size_t length) noexcept
{
    std::size_t written = 0;
    for (std::size_t read = 0; read < length; ++read) {
        const bool carriageReturn = utf8[read] == '\r';
        if (carriageReturn && read + 1 < length && utf8[read + 1] == '\n')
            ++read;
        utf8[written++] = carriageReturn ? '\n' : utf8[read];
    }
    return written;
}

}  // namespace Unicode
