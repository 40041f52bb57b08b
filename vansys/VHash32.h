// Hashes of strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "vancoreplatform/VString.h"
#include "vansys/Export.h"

// The hash of the code units, the same in every run. Only for trusted keys: hostile input can
// construct collisions.
VANSYS_API std::uint32_t VHash32(const VString& text, std::uint32_t seed = 0xDEADBEEF) noexcept;

// A keyed hash of the code units whose key is drawn once per process, so that texts
// from a document cannot be chosen to collide. Differs from run to run.
VANSYS_API std::uint64_t VSeededHash(const VString& text) noexcept;

// For the standard's hashed containers.
struct VStringHash {
    std::size_t operator()(const VString& text) const noexcept { return static_cast<std::size_t>(VSeededHash(text)); }
};
