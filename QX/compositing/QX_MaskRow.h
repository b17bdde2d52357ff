// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/PixelAccess.h"

namespace qx {

/// Kinds 0 and 2 clip what is drawn to the mask's bounds.
constexpr bool mask_clips(const QX_MaskWorld& mask) { return (mask.flags & 1) == 0; }

/// Empty or inverted for a mask without pixels and for one that would pass the last number.
constexpr M_LRect mask_bounds(const QX_MaskWorld& mask) {
    return M_OffsetLRect({0, 0, std::max(mask.world.width, 0), std::max(mask.world.height, 0)}, mask.x, mask.y);
}

/// Cells [from, to) of a row of coverage are those of a mask's pixels, the first of which is `mask`; what lies before
/// and behind is outside, where an inverse mask is full and others are nothing. Of pixels alpha alone is written.
template <class Pixel>
void cover_row(std::int32_t count, std::int32_t from, std::int32_t to, const Pixel* mask, std::uint32_t kind,
               Pixel* row) {
    using D = DepthOf<Pixel>;
    const bool inverse = (kind & 1) != 0, luma = (kind & 2) != 0;
    const auto outside = static_cast<QX_ChannelOf<Pixel>>(inverse ? D::full : 0);
    for (std::int32_t i = 0; i < from; ++i) row[i].alpha = outside;
    for (std::int32_t i = from; i < to; ++i) {
        const auto p = load_pixels<Planes<typename D::Lane>>(mask + (i - from));
        const auto value = luma ? D::mul(D::luma(p.r, p.g, p.b), p.a) : p.a;
        row[i].alpha = static_cast<QX_ChannelOf<Pixel>>(inverse ? D::comp(value) : value);
    }
    for (std::int32_t i = to; i < count; ++i) row[i].alpha = outside;
}

/// The mask of a transfer in destination coordinates. Gives a row's coverage as pixels of which only alpha counts.
template <class Pixel> class MaskRows {
public:
    MaskRows(const QX_MaskWorld& mask, Pixel* row) : mask_(mask), computed_(row) {}

    /// Coverage of columns [left, right) of row y: in place in the mask's world where alpha counts as it stands, else
    /// computed. Nothing is drawn outside of a mask that clips.
    const Pixel* row(std::int32_t left, std::int32_t right, std::int32_t y) {
        const M_LRect b = mask_bounds(mask_);
        if (mask_.flags == kQX_MaskAlpha) return pixel(left, y);
        const bool beside = y < b.top || y >= b.bottom;
        const std::int32_t from = beside ? right : std::clamp(b.left, left, right);
        const std::int32_t to = beside ? right : std::clamp(b.right, from, right);
        const Pixel* const first = from < to ? pixel(from, y) : nullptr;
        cover_row(right - left, from - left, to - left, first, mask_.flags, computed_);
        return computed_;
    }

private:
    const Pixel* pixel(std::int32_t x, std::int32_t y) const {
        return pixel_at<const Pixel>(mask_.world, x - mask_.x, y - mask_.y);
    }

    const QX_MaskWorld mask_;
    Pixel* computed_;
};

}  // namespace qx
