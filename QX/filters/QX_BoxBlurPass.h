// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/filters/QX_BlurLine.h"
#include "QX/indep/QX_Export.h"

namespace qx {

/// The box of one pass. Weights count in units of 1/1024 of a pixel.
struct QX_EXPORT BoxWindow {
    std::int64_t reach;        ///< taps to either side
    std::int32_t end_short;    ///< what the two end taps lack of 1024
    std::uint32_t conv_flags;  ///< as the blur has them

    BoxWindow(float radius, std::uint32_t flags);
    bool normalises_edges() const { return (conv_flags & 16) != 0; }
    std::int64_t full() const { return 2 * (512 * (2 * reach + 1) - end_short); }
};

}  // namespace qx

/// One pass of a box along a line: pixel 0 of `out` lies at position `offset` of `in`, outside of which nothing is. The
/// plain form, which others are held to. Takes an `out` of neighbouring pixels alone; else it reports and throws 3.
template <class Pixel>
QX_EXPORT void QXp_BoxBlurPass(const qx::BoxWindow& window, const qx::BlurLine<Pixel>& in, std::int64_t offset,
                               const qx::BlurLine<Pixel>& out);
