// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"

/// The modes that look at a pixel's three colours together, after the pass of xfer_behind.
namespace qx::modes {

template <class V> QX_INLINE constexpr V least_colour(const Planes<V>& p) { return lesser(lesser(p.r, p.g), p.b); }
template <class V> QX_INLINE constexpr V greatest_colour(const Planes<V>& p) { return greater(greater(p.r, p.g), p.b); }
template <class D, class V> QX_INLINE constexpr V luma_of(const Planes<V>& p) { return D::luma(p.r, p.g, p.b); }
template <class V> QX_INLINE constexpr V saturation_of(const Planes<V>& p) {
    return greatest_colour(p) - least_colour(p);
}

/// n * m / divisor: truncated towards zero at integer depths. A lane that is not used may have any divisor.
template <class D, class V> QX_INLINE constexpr V scaled(V n, V m, V divisor) {
    if constexpr (D::number == 32) {
        return n * m / divisor;
    } else if constexpr (!is_wide<V>) {
        return n * m / (divisor == 0 ? 1 : divisor);
    } else if constexpr (D::number == 8) {
        return small_signed_quotient<V>(n * m, divisor);
    } else {
        const V product = n * m, q = large_quotient<V>(product < 0 ? -product : product, divisor);
        return product < 0 ? -q : q;
    }
}

/// The largest colour becomes v, the smallest 0, the middle one keeps its place between; a pixel of equal colours
/// becomes 0.
template <class D, class V> QX_INLINE Planes<V> set_saturation(const Planes<V>& p, V v) {
    const V low = least_colour(p), high = greatest_colour(p);
    const auto channel = [&](V c, V) QX_LAMBDA {
        const V middle = scaled<D, V>(c - low, v, high - low);
        return high == low ? splat<V>(0) : c == high ? v : c == low ? splat<V>(0) : middle;
    };
    return with_colours(p.a, p, p, channel);
}

/// Brings colours nearer to l where they lie outside: each distance from l by room / reach.
template <class D, class M, class V> QX_INLINE Planes<V> drawn_in(M outside, const Planes<V>& p, V l, V room, V reach) {
    if (all_equal(outside, 0)) return p;
    return with_colours(p.a, p, p,
                        [&](V c, V) QX_LAMBDA { return outside ? l + scaled<D, V>(c - l, room, reach) : c; });
}

/// Moves the colours to luma l, then brings what left the scale back towards l: first below, then above.
template <class D, class V> QX_INLINE Planes<V> set_luma(const Planes<V>& p, V l) {
    const V step = l - luma_of<D>(p);
    const Planes<V> moved = with_colours(p.a, p, p, [&](V c, V) QX_LAMBDA { return c + step; });
    const V low = least_colour(moved);
    const Planes<V> raised = drawn_in<D>((low < 0) & (l != low), moved, l, l, l - low);
    const V high = greatest_colour(raised);
    return drawn_in<D>((high > D::full) & (high != l), raised, l, D::full - l, high - l);
}

/// Mixes a result into the destination by s; a full s stores it, which the mix of integers does by itself.
template <class D, class P> QX_INLINE P mix_by_alpha(const P& result, typename P::Lane s, const P& dst) {
    using V = typename P::Lane;
    return with_colours(dst.a, result, dst, [&](V c, V cd) QX_LAMBDA {
        const V mixed = D::mix(cd, c, s);
        return D::number == 32 && s == D::full ? c : mixed;
    });
}

/// Frame of the four modes of hue, saturation and luma: `colour(S, D)` gives the pixel that is mixed in.
template <class Self, int Number> struct WholePixel : Mode<Number> {
    static constexpr Switches switches{.behind_first = true, .keeps_alpha = true};
    static constexpr bool mixes_colours = true;
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        return mix_by_alpha<D>(Self::template colour<D>(src, dst), s, dst);
    }
};

struct Hue : WholePixel<Hue, 13> {
    template <class D, class P> QX_LANE P colour(const P& src, const P& dst) {
        return set_luma<D>(set_saturation<D>(src, saturation_of(dst)), luma_of<D>(dst));
    }
};
struct Saturation : WholePixel<Saturation, 14> {
    template <class D, class P> QX_LANE P colour(const P& src, const P& dst) {
        return set_luma<D>(set_saturation<D>(dst, saturation_of(src)), luma_of<D>(dst));
    }
};
struct Colour : WholePixel<Colour, 15> {
    template <class D, class P> QX_LANE P colour(const P& src, const P& dst) {
        return set_luma<D>(src, luma_of<D>(dst));
    }
};
struct Luminosity : WholePixel<Luminosity, 16> {
    template <class D, class P> QX_LANE P colour(const P& src, const P& dst) {
        return set_luma<D>(dst, luma_of<D>(src));
    }
};

/// Frame of the two modes that take the source where its luma wins: `wins(luma of S, luma of D)`.
/// Kept: rows compare with the destination after the pass of xfer_behind, functions of one pixel before it.
template <class Self, int Number> struct LumaChoice : Mode<Number> {
    static constexpr Switches switches{.behind_first = true, .keeps_alpha = true};
    static constexpr bool mixes_colours = true;
    template <class D, class P> QX_LANE auto chosen(const P& src, const P& dst) {
        return Self::wins(luma_of<D>(src), luma_of<D>(dst));
    }
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        return select(chosen<D>(src, dst), mix_by_alpha<D>(src, s, dst), dst);
    }
};

struct LighterColour : LumaChoice<LighterColour, 35> {
    template <class V> QX_LANE auto wins(V s, V d) { return s > d; }
};
struct DarkerColour : LumaChoice<DarkerColour, 36> {
    template <class V> QX_LANE auto wins(V s, V d) { return s < d; }
};

}  // namespace qx::modes
