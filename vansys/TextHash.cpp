#include "vansys/TextHash.h"

#include "vansys/SipHash.h"

std::size_t HashBytes(const void* bytes, std::size_t length) noexcept
{
    static const SipKey key = SipKey::Draw();
    return static_cast<std::size_t>(SipHash<1, 3>::Hash(key, bytes, length));
}
