// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HCL_CMX.h"

/// What the colour engine calls the pixels of worlds.
namespace qx {

/// Channels of a pixel side by side, and pixels too.
inline constexpr std::uint32_t kPixelLayout = CMX_Code("ctpk");

constexpr std::uint32_t colour_format(int depth) {
    return depth == 8 ? CMX_Code("prgb") : depth == 16 ? CMX_Code("PRGB") : CMX_Code("fRGB");
}
constexpr std::uint32_t cmyk_format(int depth) { return depth == 8 ? CMX_Code("cmyw") : CMX_Code("CMYK"); }

/// Intents have the numbers of the ICC.
inline constexpr std::int32_t kRelativeColorimetric = 1;
inline constexpr std::int32_t kAbsoluteColorimetric = 3;

}  // namespace qx
