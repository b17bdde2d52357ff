// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/world/QX_World.h"

namespace qx::pictures {

using qx::row_of;

/// `work.operator()<Pixel>()` for the type of the world's pixels.
template <class Work> decltype(auto) with_pixel_of(const QX_World& world, const Work& work) {
    return for_depth(world.Depth(), work,
                     [&]() -> decltype(auto) { return work.template operator()<QX_PixelFloat>(); });
}

/// True when `is(pixel, x, y)` holds for some pixel; in row order, up to the first.
template <class Pixel, class Is> bool any_pixel(const QX_World& world, const Is& is) {
    for (int y = 0; y < world.height; ++y) {
        Pixel* row = row_of<Pixel>(world, y);
        for (int x = 0; x < world.width; ++x) {
            if (is(row[x], x, y)) return true;
        }
    }
    return false;
}
template <class Is> bool any_pixel(const QX_World& world, const Is& is) {
    return with_pixel_of(world, [&]<class Pixel>() { return any_pixel<Pixel>(world, is); });
}

/// Calls `visit(pixel, x, y)` for all pixels in row order.
template <class Pixel, class Visit> void each_pixel(const QX_World& world, const Visit& visit) {
    any_pixel<Pixel>(world, [&](Pixel& p, int x, int y) {
        visit(p, x, y);
        return false;
    });
}

}  // namespace qx::pictures
