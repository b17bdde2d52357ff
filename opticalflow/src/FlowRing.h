// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Levels.h"

namespace qx {

/// An image of floats without gaps between its rows.
struct FlowImage {
    const float* pixels;
    std::int32_t width, height;
};

/// Samples for single pixels.
struct FlowRing {
    /// At positions in pixels whose middles lie at halves. Corners up to one pixel outside are those of the edge; what
    /// lies farther off is INVALID_VECTOR, which takes part in the arithmetic as the number that it is.
    void (*samples)(const FlowImage& image, std::int32_t count, const float* x, const float* y, float* out);
};
QX_DECLARE_LEVELS(FlowRing, flow_ring)

}  // namespace qx
