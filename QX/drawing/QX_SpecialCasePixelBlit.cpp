// SPDX-License-Identifier: Apache-2.0
#include "QX/drawing/QX_SpecialCasePixelBlit.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/world/QX_WorldX.h"
#include "lanes/PixelAccess.h"

namespace {

using namespace qx;

/// One colour at the depth of the source, and as it is written where nothing covers it.
template <class D> struct Backdrop {
    Planes<typename D::Lane> colour;
    QX_Pixel8 shown;
};

template <class D> Backdrop<D> backdrop(const QX_PixelFloat& c) {
    const auto at8 = [](float v) { return alpha_from_float<QX_Pixel8>(v); };
    const auto lane = [](float v) -> typename D::Lane {
        if constexpr (D::number == 32) {
            return v;
        } else {
            return std::min<typename D::Lane>(alpha_from_float<typename D::Pixel>(v), D::full);
        }
    };
    return {{lane(c.alpha), lane(c.red), lane(c.green), lane(c.blue)},
            {at8(c.alpha), at8(c.red), at8(c.green), at8(c.blue)}};
}

template <class D> std::uint8_t to8(typename D::Lane v) {
    if constexpr (D::number == 8) {
        return static_cast<std::uint8_t>(v);
    } else if constexpr (D::number == 16) {
        return narrow_16_to_8(static_cast<std::uint32_t>(v));
    } else {
        return colour_from_float<QX_Pixel8>(v);
    }
}

struct Blit {
    const QX_World* src;
    QX_WorldX<QX_Pixel8>* dst;
    M_LPoint offset;  ///< from destination to source
    M_LRect rect;     ///< clipped to both worlds
    QX_SpecialCaseBlitStyle style;
    bool swap_rb;
    M_LPoint checker_origin;
    std::int32_t checker_mask;
    QX_PixelFloat colour_a, colour_b;
};

template <class D> class RowBlit {
    using Pixel = typename D::Pixel;
    using Lane = typename D::Lane;
    using Source = Planes<Lane>;

public:
    explicit RowBlit(const Blit& blit)
        : blit_(blit), a_(backdrop<D>(blit.colour_a)), b_(backdrop<D>(blit.colour_b)), weight_(a_.colour.a) {
        const bool black = a_.colour.r == 0 && a_.colour.g == 0 && a_.colour.b == 0;
        over_black_ = black && blit.style != kQX_BlitCheckerboard && blit.style != kQX_BlitMatte;
    }

    void row(std::int32_t y) {
        const auto* from = pixel_at<const Pixel>(*blit_.src, blit_.offset.x, y + blit_.offset.y);
        QX_Pixel8* to = blit_.dst->Row(y);
        for (std::int32_t x = blit_.rect.left; x < blit_.rect.right; ++x) {
            const Source s = load_pixels<Source>(from + x);
            if (blit_.style == kQX_BlitMatte) {
                matte(s, to[x]);
            } else if (over_black_) {
                write(to[x], with_colours(s.a, s, s, [&](Lane c, Lane) { return D::mul(c, s.a); }));
            } else {
                flatten(s, behind(x, y), to[x]);
            }
        }
    }

private:
    const Backdrop<D>& behind(std::int32_t x, std::int32_t y) const {
        if (blit_.style != kQX_BlitCheckerboard) return a_;
        const std::int32_t column = wrapping_difference(x, blit_.checker_origin.x);
        const std::int32_t line = wrapping_difference(y, blit_.checker_origin.y);
        return ((column ^ line) & blit_.checker_mask) != 0 ? a_ : b_;
    }

    /// The colours alone; the destination's alpha stays.
    void write(QX_Pixel8& to, const Source& p) const {
        to.red = to8<D>(blit_.swap_rb ? p.b : p.r);
        to.green = to8<D>(p.g);
        to.blue = to8<D>(blit_.swap_rb ? p.r : p.b);
    }

    void flatten(const Source& s, const Backdrop<D>& under, QX_Pixel8& to) const {
        if (s.a <= 0) {  // the backdrop as it is, alpha included
            const QX_Pixel8& p = under.shown;
            to = blit_.swap_rb ? QX_Pixel8{p.alpha, p.blue, p.green, p.red} : p;
        } else if (s.a >= D::full) {
            write(to, s);
        } else {
            write(to, with_colours(s.a, s, under.colour, [&](Lane c, Lane b) { return D::lerp(b, c, s.a); }));
        }
    }

    /// Kept: the weight is carried on from pixel to pixel and from row to row of a part.
    void matte(const Source& s, QX_Pixel8& to) {
        if (s.a >= D::full) return write(to, s);
        weight_ = D::mul(D::comp(s.a), weight_);
        write(to, with_colours(s.a, s, a_.colour, [&](Lane c, Lane m) { return D::lerp(c, m, weight_); }));
    }

    const Blit& blit_;
    Backdrop<D> a_, b_;
    Lane weight_;
    bool over_black_;
};

/// Part i of n takes height / n rows, and the last part also what remains.
template <class D> int blit_part(void* refcon, std::int32_t, std::int32_t i, std::int32_t n) {
    const auto& blit = *static_cast<const Blit*>(refcon);
    const std::int32_t rows = (blit.rect.bottom - blit.rect.top) / n, top = blit.rect.top + i * rows;
    const std::int32_t bottom = i == n - 1 ? blit.rect.bottom : top + rows;
    RowBlit<D> part(blit);
    for (std::int32_t y = top; y < bottom; ++y) part.row(y);
    return 0;
}

QX_IterateGenericFunc part_at_depth(int depth) {
    return must_have_depth(
        depth, Place::blit, []<class Pixel>() -> QX_IterateGenericFunc { return &blit_part<DepthOf<Pixel>>; },
        "Unknown world bitdepth in SpecialCasePixelBlit");
}

}  // namespace

void QX_SpecialCasePixelBlit(const QX_World* src_world, M_LPoint src_point, QX_SpecialCaseBlitStyle style, bool swap_rb,
                             M_LPoint checker_origin, const QX_PixelFloat& colour_a, const QX_PixelFloat& colour_b,
                             std::int32_t checker_mask, const M_LRect& dst_rect, QX_WorldX<QX_Pixel8>* dst_world8) {
    const QX_IterateGenericFunc part = part_at_depth(src_world->Depth());
    if (src_point.x < 0 || src_point.y < 0 || M_EmptyLRect(dst_rect)) return;
    const std::int64_t dx = std::int64_t{src_point.x} - dst_rect.left, dy = std::int64_t{src_point.y} - dst_rect.top;
    if (std::max(dx, dy) > std::numeric_limits<std::int32_t>::max()) return;  // no source reaches the destination
    const M_LPoint offset{static_cast<std::int32_t>(dx), static_cast<std::int32_t>(dy)};
    M_LRect rect;
    if (!M_SectLRect(dst_rect, whole_of(*dst_world8), &rect)) return;
    if (!M_SectLRect(rect, M_OffsetLRect(whole_of(*src_world), -offset.x, -offset.y), &rect)) return;
    Blit blit{src_world, dst_world8, offset, rect, style, swap_rb, checker_origin, checker_mask, colour_a, colour_b};
    throw_if(QX_IterateGeneric(-1, &blit, part));
}
