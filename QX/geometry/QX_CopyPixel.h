// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

#include "QX/indep/QX_DepthSteps.h"

namespace qx {

/// A pixel at the depth of another world, as the copies of rectangles convert it: from float all four channels are
/// limited, alpha too.
template <class To, class From> To copied_pixel(const From& p) {
    if constexpr (std::is_same_v<From, QX_PixelFloat> && !std::is_same_v<To, From>) {
        return {colour_from_float<To>(p.alpha), colour_from_float<To>(p.red), colour_from_float<To>(p.green),
                colour_from_float<To>(p.blue)};
    } else {
        return convert_pixel<To, float>(p);
    }
}

}  // namespace qx
