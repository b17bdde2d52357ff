// SPDX-License-Identifier: Apache-2.0
#include "platform/tesselcore_Guid.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "platform/tesselcore_MixHash.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;
using tesselcore::utility::Murmur3Mixer;

Guid guid_of(std::uint64_t first, std::uint64_t second) {
    const std::uint64_t words[] = {first, second};
    Guid guid;
    std::memcpy(&guid, words, sizeof guid);
    return guid;
}

TEST(Murmur3Mixer, GivesThePublishedValuesHoweverTheBytesAreCut) {
    const Cases<std::string, std::uint64_t, std::uint64_t> published{
        {"", 0, 0},
        {"hello", 0xcbd8a7b341bd9b02, 0x5b1e906a48ae1d19},
        {"hello, world", 0x342fac623a5ebc8e, 0x4cdcbc079642414d},
        {"19 Jan 2038 at 3:14:07 AM", 0xb89e5988b737affc, 0x664fc2950231b2cb},
        {"The quick brown fox jumps over the lazy dog.", 0xcd99481f9ee902c9, 0x695da1a38987b6e7},
    };
    for (const auto& [text, first, second] : published) {
        for (std::size_t cut = 0; cut <= text.size(); ++cut) {
            Murmur3Mixer mixer(0, 0);
            mixer.Mix(text.data(), cut);
            mixer.Mix(text.data() + cut, text.size() - cut);
            EXPECT_TRUE(mixer.ToGuid() == guid_of(first, second)) << text << " " << cut;
        }
    }
    Murmur3Mixer one(1, 2), other(2, 1);
    one.Mix("a", 1), other.Mix("a", 1);
    EXPECT_TRUE(one.ToGuid() != other.ToGuid());
}

TEST(Guid, BytesAreInTheOrderOfWriting) {
    const Guid guid{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
    std::uint8_t bytes[16];
    tesselcore::utility::GuidToBytes(guid, bytes);
    for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(bytes[i], i + 1);
}

/// The steps of the rule, with the library's hash of one block.
TEST(MixHash, GoesByItsRule) {
    tesselcore::utility::MixHash mix(14);
    std::vector<std::uint8_t> state(16);
    state[12] = 14;
    std::uint32_t count = 14;
    for (const std::string& piece :
         {std::string("Solvan Vectors"), std::string(), std::string(700, 'x'), std::string("y")}) {
        mix.MixInData(piece.data(), static_cast<std::uint32_t>(piece.size()));
        state.insert(state.end(), piece.begin(), piece.end());
        const XXH128_hash_t hash = XXH3_128bits(state.data(), state.size());
        count += static_cast<std::uint32_t>(piece.size());
        state.clear();
        for (int i = 0; i < 8; ++i) state.push_back(static_cast<std::uint8_t>(hash.low64 >> 8 * i));
        for (int i = 0; i < 4; ++i) state.push_back(static_cast<std::uint8_t>(hash.high64 >> 8 * i));
        for (int i = 0; i < 4; ++i) state.push_back(static_cast<std::uint8_t>(count >> 8 * i));
        std::uint8_t bytes[16];
        tesselcore::utility::GuidToBytes(mix.ToGuid(), bytes);
        for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(bytes[i], state[i / 4 * 4 + 3 - i % 4]) << i;  // words turned over
    }
}

}  // namespace
