// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Position.h"

namespace solvan_of {

/// Taps of a sinc under a raised cosine that reaches ten pixels to either side, for one axis of a position.
struct SincTaps {
    static constexpr int kRadius = 10, kCount = 2 * kRadius + 1;

    std::int32_t first;     ///< pixel of the first tap
    float weights[kCount];  ///< of sum 1, but for rounding
};

/// What of an axis a position between pixels reads. `place` is that of the position less half a pixel.
SincTaps sinc_taps(const Place& place);

/// True within a hundredth of a pixel's middle, whose number `nearest_pixel` then tells.
inline bool is_near_middle(const Place& place) { return place.fraction < 0.01f || place.fraction > 0.99f; }
inline std::int32_t nearest_pixel(const Place& place) { return place.whole + (place.fraction > 0.99f ? 1 : 0); }

}  // namespace solvan_of
