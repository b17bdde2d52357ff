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

/// The mask of a transfer in destination coordinates. Gives a row's coverage as pixels of which only alpha counts.
template <class Pixel> class MaskRows {
    using D = DepthOf<Pixel>;

public:
    MaskRows(const QX_MaskWorld& mask, Pixel* row) : mask_(mask), computed_(row) {}

    /// Coverage of columns [left, right) of row y: in place in the mask's world where alpha counts as it stands, else
    /// computed. Outside the mask it is full.
    const Pixel* row(std::int32_t left, std::int32_t right, std::int32_t y) {
        const M_LRect b = mask_bounds(mask_);
        if (mask_.flags == kQX_MaskAlpha) return pixel(left, y);
        const bool beside = y < b.top || y >= b.bottom;
        const std::int32_t from = beside ? right : std::clamp(b.left, left, right);
        const std::int32_t to = beside ? right : std::clamp(b.right, from, right);
        constexpr auto full = static_cast<QX_ChannelOf<Pixel>>(D::full);
        for (std::int32_t x = left; x < from; ++x) computed_[x - left].alpha = full;
        for (std::int32_t x = from; x < to; ++x) computed_[x - left].alpha = coverage(*pixel(x, y));
        for (std::int32_t x = to; x < right; ++x) computed_[x - left].alpha = full;
        return computed_;
    }

private:
    const Pixel* pixel(std::int32_t x, std::int32_t y) const {
        return pixel_at<const Pixel>(mask_.world, x - mask_.x, y - mask_.y);
    }

    QX_ChannelOf<Pixel> coverage(const Pixel& from) const {
        const auto p = load_pixels<Planes<typename D::Lane>>(&from);
        const auto value = (mask_.flags & 2) != 0 ? D::mul(D::luma(p.r, p.g, p.b), p.a) : p.a;
        return static_cast<QX_ChannelOf<Pixel>>((mask_.flags & 1) != 0 ? D::comp(value) : value);
    }

    const QX_MaskWorld mask_;
    Pixel* computed_;
};

}  // namespace qx
