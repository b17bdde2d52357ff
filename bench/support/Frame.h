// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

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

}  // namespace qx::bench
