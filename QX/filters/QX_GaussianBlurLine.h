// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/filters/QX_BlurLine.h"

namespace qx {

/// What all lines of a Gaussian blur share.
struct GaussianLines {
    std::int64_t reach;           ///< taps to either side
    const std::int32_t* weights;  ///< from the centre on, reach + 1
    /// Of each pixel of a destination line the sum of the weights that it divides by: of all, or of those whose taps
    /// lie in the source line.
    const std::int32_t* divisors;
    std::int64_t offset;  ///< from a destination pixel to its source pixel
    std::uint32_t conv_flags;

    bool selects_all() const { return (conv_flags & 15) == 15; }
};

/// Blurs one line. The plain form, which others are held to.
/// @param taps  the source line, its colours multiplied where they are to be
/// @param raw   the source line as it is
template <class Pixel>
void gaussian_blur_line(const GaussianLines& lines, const BlurLine<Pixel>& taps, const BlurLine<Pixel>& raw,
                        const BlurLine<Pixel>& out);

}  // namespace qx
