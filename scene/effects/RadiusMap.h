// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

#include "QX/indep/QX_Depth.h"
#include "pictures/Pixels.h"

namespace qx::scene {

/// The factor of the radius at a place of the layer as its file has it; beyond a map's edge that of the edge.
template <class Pixel> double map_factor(const QX_World* map, int x, int y) {
    using D = DepthOf<Pixel>;
    if (map == nullptr) return 1;
    const Pixel& p = row_of<Pixel>(*map, std::clamp(y, 0, map->height - 1))[std::clamp(x, 0, map->width - 1)];
    using N = typename D::Lane;
    const double luma = static_cast<double>(D::luma(N{p.red}, N{p.green}, N{p.blue})) / static_cast<double>(D::full);
    return luma > 0 ? std::min(luma, 1.0) : 0;
}

}  // namespace qx::scene
