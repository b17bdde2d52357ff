// SPDX-License-Identifier: Apache-2.0
#include "pictures/Light.h"

namespace qx::pictures {
namespace {

/// Calls `see(pixel, index)` for all pixels in row order.
template <class Pixel, class See> void each_pixel(const QX_World& world, const See& see) {
    std::size_t index = 0;
    for (int y = 0; y < world.height; ++y) {
        const Pixel* row = row_of<Pixel>(world, y);
        for (int x = 0; x < world.width; ++x) see(row[x], index++);
    }
}

template <class See> void each_pixel(const QX_World& world, const See& see) {
    if (world.Depth() == 8) {
        each_pixel<QX_Pixel8>(world, see);
    } else if (world.Depth() == 16) {
        each_pixel<QX_Pixel16>(world, see);
    } else {
        each_pixel<QX_PixelFloat>(world, see);
    }
}

}  // namespace

void mark_light(Picture& picture) {
    const QX_World& world = *picture.world;
    each_pixel(world, [&](const auto& p, std::size_t index) {
        if (p.alpha != 0 || (p.red == 0 && p.green == 0 && p.blue == 0)) return;
        if (picture.light.empty()) {
            picture.light.resize(static_cast<std::size_t>(world.width) * static_cast<std::size_t>(world.height));
        }
        picture.light[index] = true;
    });
}

bool covers_light(const Picture& picture) {
    if (picture.light.empty()) return false;
    bool covered = false;
    each_pixel(*picture.world,
               [&](const auto& p, std::size_t index) { covered |= p.alpha != 0 && picture.light[index]; });
    return covered;
}

}  // namespace qx::pictures
