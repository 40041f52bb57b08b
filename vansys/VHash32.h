// Hashes of strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"

// Hashes the code units; the result is the same in every run. Linear. Use it for trusted texts only: an
// attacker can construct collisions.
VANSYS_API std::uint32_t VHash32(const VString& text, std::uint32_t seed = 0xDEADBEEF) noexcept;

// Hashes the code units with a random key, which is drawn once per process. A document cannot contain texts
// chosen to collide, because its author does not know the key. The result differs from run to run. Linear.
VANSYS_API std::uint64_t VSeededHash(const VString& text) noexcept;

// The hash function for the standard's unordered containers.
struct VStringHash {
    std::size_t operator()(const VString& text) const noexcept { return static_cast<std::size_t>(VSeededHash(text)); }
};
