// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/Platform_Export.h"

struct Guid {
    std::uint32_t first;
    std::uint16_t second, third;
    std::uint8_t rest[8];
};
static_assert(sizeof(Guid) == 16);

PLATFORM_EXPORT bool operator==(const Guid& a, const Guid& b);
inline bool operator!=(const Guid& a, const Guid& b) { return !(a == b); }

namespace tesselcore::utility {

/// The 16 bytes in the order in which a person writes them: each number's high byte first.
PLATFORM_EXPORT void GuidToBytes(const Guid& guid, std::uint8_t bytes[16]);

/// Hashes all bytes that are mixed, one after another, to 128 bits, equal on every machine: MurmurHash3 in its form of
/// 128 bits for 64-bit processors, whose two words of state start with a seed each.
class PLATFORM_EXPORT Murmur3Mixer {
public:
    Murmur3Mixer(std::uint64_t first_seed, std::uint64_t second_seed) : state_{first_seed, second_seed} {}
    void Mix(const void* bytes, std::size_t count);
    /// The first word of state and then the second, low byte first.
    Guid ToGuid() const;

private:
    void mix_block(const std::uint8_t* block);

    std::uint64_t state_[2];
    std::uint64_t length_ = 0;
    std::array<std::uint8_t, 16> pending_{};  ///< the bytes that make no whole block yet
};

}  // namespace tesselcore::utility
