// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>

#include "QX/indep/QX_Depth.h"
#include "QX/world/QX_World.h"

/// The frame of the benches. With several threads each works on a band of its own of one frame.
namespace qx::bench {

inline constexpr int kWidth = 3840, kHeight = 2160;

inline std::unique_ptr<QX_World> new_frame(int depth) {
    return std::unique_ptr<QX_World>(QX_World::New(kWidth, kHeight, static_cast<short>(depth), 1));
}

inline std::size_t frame_bytes(const QX_World& world) {
    return static_cast<std::size_t>(kHeight) * static_cast<std::size_t>(world.rowbytes);
}

/// The rows of thread `index` of `count`.
inline M_LRect band(int index, int count) {
    return {0, kHeight * index / count, kWidth, kHeight * (index + 1) / count};
}

inline std::int64_t pixels_of(const M_LRect& r) { return std::int64_t{r.right - r.left} * (r.bottom - r.top); }

inline std::byte* row_of(const QX_World& world, int y) {
    return static_cast<std::byte*>(world.data) + std::ptrdiff_t{y} * world.rowbytes;
}

/// A channel from a random number.
template <class D> typename D::Channel random_channel(std::minstd_rand& random) {
    return static_cast<typename D::Channel>(static_cast<double>(random() % 32769) / 32768 * D::full);
}

/// Random pixels, a third of them clear and a third opaque.
template <class Pixel> void fill_frame(const QX_World& world, std::minstd_rand& random) {
    using D = DepthOf<Pixel>;
    const auto channel = [&] { return random_channel<D>(random); };
    for (int y = 0; y < kHeight; ++y) {
        auto* const row = reinterpret_cast<Pixel*>(row_of(world, y));
        for (int x = 0; x < kWidth; ++x) {
            const auto kind = random() % 3;
            const auto alpha = kind == 0   ? typename D::Channel{}
                               : kind == 1 ? static_cast<typename D::Channel>(D::full)
                                           : channel();
            row[x] = {alpha, channel(), channel(), channel()};
        }
    }
}

/// A frame and one that is made from it, both filled.
template <class Pixel> struct FramePair {
    std::unique_ptr<QX_World> src = new_frame(DepthOf<Pixel>::number), dst = new_frame(DepthOf<Pixel>::number);
    FramePair() {
        std::minstd_rand random(1);
        fill_frame<Pixel>(*src, random);
        fill_frame<Pixel>(*dst, random);
    }
    static FramePair& get() {
        static FramePair one;
        return one;
    }
};

}  // namespace qx::bench
