// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Levels.h"

namespace qx {

/// What each channel counts for, the range of channels taken out.
struct LumaWeights {
    float red, green, blue;
};

/// Rows of pixels to their luminance, green * its weight + red * its weight + blue * its weight; alpha does not count.
struct FlowLuminance {
    using Row = void (*)(const void* pixels, std::int32_t count, const LumaWeights& weights, float* out);
    Row argb8, argb16, argb32, bgr8, bgr16, bgr32;
};
QX_DECLARE_LEVELS(FlowLuminance, flow_luminance)

}  // namespace qx
