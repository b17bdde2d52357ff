// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowPicture.h"

namespace qx {

/// Taps of a sinc under a raised cosine that reaches ten pixels to either side of a position.
inline constexpr std::int32_t kSincRadius = 10, kSincTaps = 2 * kSincRadius + 1;

struct FlowSinc {
    /// The weights of the pixels whose distances from the position are k - fraction, for k from -10 to 10, over their
    /// sum.
    /// @param fraction  0 and up, below 1
    void (*taps)(float fraction, float* weights);
    /// Rows of the picture, both frames sampled by the taps, along x and then along y; pixels whose positions are
    /// within a hundredth of a pixel's middle are taken as they are.
    FlowPicture::Row rows8, rows16, rows32;
};
QX_DECLARE_LEVELS(FlowSinc, flow_sinc)

/// True within a hundredth of a pixel's middle, for the fraction of a position less half a pixel.
constexpr bool is_near_middle(float fraction) { return fraction < 0.01f || fraction > 0.99f; }

}  // namespace qx
