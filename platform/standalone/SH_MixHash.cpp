// SPDX-License-Identifier: Apache-2.0
#define XXH_STATIC_LINKING_ONLY  // for the size of a state, so that it can stand on the stack
#include <xxhash.h>

#include "platform/tesselcore_MixHash.h"

namespace tesselcore::utility {
namespace {

std::uint32_t low(std::uint64_t v) { return static_cast<std::uint32_t>(v); }
std::uint32_t high(std::uint64_t v) { return static_cast<std::uint32_t>(v >> 32); }

}  // namespace

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);  // the state's words go into the hash as they lie

void MixHash::MixInData(const void* bytes, std::uint32_t count) {
    XXH3_state_t hash;
    XXH3_128bits_reset(&hash);
    XXH3_128bits_update(&hash, state_.data(), sizeof state_);
    XXH3_128bits_update(&hash, bytes, count);
    const XXH128_hash_t mixed = XXH3_128bits_digest(&hash);
    state_ = {low(mixed.low64), high(mixed.low64), low(mixed.high64), state_[3] + count};
}

Guid MixHash::ToGuid() const {
    Guid guid{state_[0], static_cast<std::uint16_t>(state_[1] >> 16), static_cast<std::uint16_t>(state_[1]), {}};
    for (unsigned i = 0; i < 8; ++i) guid.rest[i] = static_cast<std::uint8_t>(state_[2 + i / 4] >> (24 - i % 4 * 8));
    return guid;
}

}  // namespace tesselcore::utility
