// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/tesselcore_Guid.h"

bool operator==(const Guid& a, const Guid& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

namespace tesselcore::utility {
namespace {

constexpr std::uint64_t kFirst = 0x87c37b91114253d5, kSecond = 0x4cf5ad432745937f;

std::uint64_t word(const std::uint8_t* bytes) {
    std::uint64_t v;
    std::memcpy(&v, bytes, sizeof v);
    return v;
}
std::uint64_t scrambled_first(std::uint64_t k) { return std::rotl(k * kFirst, 31) * kSecond; }
std::uint64_t scrambled_second(std::uint64_t k) { return std::rotl(k * kSecond, 33) * kFirst; }

std::uint64_t avalanche(std::uint64_t h) {
    h = (h ^ h >> 33) * 0xff51afd7ed558ccd;
    h = (h ^ h >> 33) * 0xc4ceb9fe1a85ec53;
    return h ^ h >> 33;
}

}  // namespace

void GuidToBytes(const Guid& guid, std::uint8_t bytes[16]) {
    for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(guid.first >> (24 - 8 * i));
    for (unsigned i = 0; i < 2; ++i) {
        bytes[4 + i] = static_cast<std::uint8_t>(guid.second >> (8 - 8 * i));
        bytes[6 + i] = static_cast<std::uint8_t>(guid.third >> (8 - 8 * i));
    }
    std::copy_n(guid.rest, 8, bytes + 8);
}

void Murmur3Mixer::mix_block(const std::uint8_t* block) {
    state_[0] = (std::rotl(state_[0] ^ scrambled_first(word(block)), 27) + state_[1]) * 5 + 0x52dce729;
    state_[1] = (std::rotl(state_[1] ^ scrambled_second(word(block + 8)), 31) + state_[0]) * 5 + 0x38495ab5;
}

void Murmur3Mixer::Mix(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    while (count > 0) {
        const std::size_t held = length_ % pending_.size(), part = std::min(count, pending_.size() - held);
        std::memcpy(pending_.data() + held, from, part);
        from += part, count -= part, length_ += part;
        if (held + part == pending_.size()) {
            mix_block(pending_.data());
            pending_.fill(0);
        }
    }
}

Guid Murmur3Mixer::ToGuid() const {
    std::uint64_t a = state_[0] ^ scrambled_first(word(pending_.data())) ^ length_;  // of clear bytes that is nothing
    std::uint64_t b = state_[1] ^ scrambled_second(word(pending_.data() + 8)) ^ length_;
    a += b, b += a;
    a = avalanche(a), b = avalanche(b);
    a += b, b += a;
    const std::uint64_t words[] = {a, b};
    Guid guid;
    std::memcpy(&guid, words, sizeof guid);
    return guid;
}

}  // namespace tesselcore::utility
