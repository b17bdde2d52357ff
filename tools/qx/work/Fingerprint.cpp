// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/Fingerprint.h"

#include <xxhash.h>

#include <bit>
#include <memory>
#include <new>
#include <vector>

#include "pictures/Carried.h"

namespace qx::tool {
namespace {

static_assert(std::endian::native == std::endian::little, "values are hashed as they lie in memory");

using State = std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)>;

template <class Value> void add(XXH3_state_t& state, const std::vector<Value>& values) {
    XXH3_128bits_update(&state, values.data(), values.size() * sizeof(Value));
}

void add_rows(XXH3_state_t& state, const QX_World& world) {
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        std::vector<QX_ChannelOf<Pixel>> values;
        for (int y = 0; y < world.height; ++y) {
            values.clear();
            const Pixel* row = pictures::row_of<Pixel>(world, y);
            for (int x = 0; x < world.width; ++x) {
                values.insert(values.end(), {row[x].red, row[x].green, row[x].blue, row[x].alpha});
            }
            add(state, values);
        }
    });
}

std::string in_digits(const XXH128_hash_t& hash) {
    XXH128_canonical_t digest;
    XXH128_canonicalFromHash(&digest, hash);
    std::string text;
    for (const unsigned char byte : digest.digest) {
        constexpr char digits[] = "0123456789abcdef";
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

}  // namespace

std::string fingerprint(const std::string& path, const pictures::Picture& picture) {
    const QX_World& world = *picture.world;
    const State state(XXH3_createState(), XXH3_freeState);
    if (state == nullptr) throw std::bad_alloc();
    XXH3_128bits_reset(state.get());
    add(*state,
        std::vector<std::uint32_t>{static_cast<std::uint32_t>(world.width), static_cast<std::uint32_t>(world.height),
                                   static_cast<std::uint32_t>(world.Depth())});
    if (world.Depth() == 16) {
        add_rows(*state, *pictures::pixels_of_file16(path, picture));
    } else {
        add_rows(*state, world);
    }
    return in_digits(XXH3_128bits_digest(state.get()));
}

std::string fingerprint(const std::string& text) { return in_digits(XXH3_128bits(text.data(), text.size())); }

}  // namespace qx::tool
