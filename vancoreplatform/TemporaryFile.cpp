#include "vancoreplatform/TemporaryFile.h"

#include <algorithm>
#include <random>

TemporaryFile::Name TemporaryFile::FormatName(std::uint64_t number) noexcept
{
    constexpr std::string_view prefix = ".vanxml-";
    Name name{};
    char* out = std::copy(prefix.begin(), prefix.end(), name.data());
    for (int shift = 44; shift >= 0; shift -= 4)
        *out++ = "0123456789abcdef"[number >> shift & 0xF];
    return name;
}

std::uint64_t TemporaryFile::RandomNumber()
{
    std::random_device random;
    return std::uint64_t{random()} << 16 ^ random() % 0x10000;
}
