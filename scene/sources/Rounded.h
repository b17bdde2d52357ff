// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cmath>
#include <type_traits>

#include "QX/indep/QX_Depth.h"

namespace qx::scene {

/// A colour from 0 to 1, alpha first, rounded once to the depth of a pixel.
template <class Pixel> Pixel rounded(const std::array<double, 4>& colour) {
    using Channel = QX_ChannelOf<Pixel>;
    const auto channel = [&](std::size_t i) {
        if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
            return static_cast<Channel>(colour[i]);
        } else {
            return static_cast<Channel>(std::floor(colour[i] * DepthOf<Pixel>::full + 0.5));
        }
    };
    return {channel(0), channel(1), channel(2), channel(3)};
}

}  // namespace qx::scene
