// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cfloat>
#include <cstdint>
#include <type_traits>

#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_Pixel.h"
#include "lanes/Lanes.h"

namespace qx {

/// The arithmetic of a depth, written once. `V` is one lane or a vector of lanes.
///   mul     product of two channels            combine  alpha of two layers, one over the other
///   comp    full - x                           div      v divided by an alpha, limited to full at integer depths
///   lerp    signed difference times a weight   smul     the same with mul's rounding
///   luma    weighted sum of a pixel's colours  wrap     low bits that a stored channel keeps
///   reduced a product of two channels at integer depths, divided by full to the nearest
/// The single-channel steps between depths for colours and arguments are in QX_DepthSteps.h.
struct Depth8 {
    using Pixel = QX_Pixel8;
    using Channel = std::uint8_t;
    using Lane = std::int32_t;  // holds a signed product of two channels
    static constexpr int number = 8;
    static constexpr Lane full = 255, half = 128;

    /// (t + (t >> 8)) >> 8 is t * 257 >> 16, which lanes of 16 bits have at once.
    template <class V> QX_LANE V reduced(V product) {
        const V t = product + 128;
        if constexpr (is_short<V>) {
            return upper_product(t, splat<V>(257));
        } else {
            return (t + (t >> 8)) >> 8;
        }
    }
    /// Factors are not below 0 in lanes of 16 bits, where products count as unsigned.
    template <class V> QX_LANE V mul(V x, V y) {
        if constexpr (is_short<V>) {
            return (V)reduced((UnsignedLanes<V>)x * (UnsignedLanes<V>)y);
        } else {
            return reduced<V>(x * y);
        }
    }
    template <class V> QX_LANE V comp(V x) { return full - x; }
    template <class V> QX_LANE V combine(V s, V d) { return comp(mul(comp(s), comp(d))); }
    /// from + mul(to - from, w), of channels. Lanes of 16 bits, which do not hold that product, reduce the sum of both
    /// weighted: reduced() is the nearest integer, of which there is one, but products below zero that lie 127/255
    /// above an integer go to the one above. One more takes them there, and no others.
    template <class V> QX_LANE V mix(V from, V to, V w) {
        if constexpr (is_short<V>) {
            return (V)reduced(plus_one_where(to < from, weighted(from, to, w)));
        } else {
            return from + mul(to - from, w);
        }
    }
    template <class V> QX_LANE V lerp(V from, V to, V w) { return mix(from, to, w); }
    /// The same with the size of the difference, which is added or taken off.
    template <class V> QX_LANE V mix_evenly(V from, V to, V w) {
        if constexpr (is_short<V>) {
            return (V)reduced(weighted(from, to, w));
        } else {
            return to < from ? from - mul(from - to, w) : from + mul(to - from, w);
        }
    }
    template <class V> QX_LANE V wrap(V x) { return x & 255; }
    template <class V> QX_LANE V luma(V r, V g, V b) { return (r * 9798 + g * 19235 + b * 3735 + 16384) >> 15; }

    /// The table's law: min(255, (v * 255 + a / 2) / a), and 255 for an alpha of 0.
    template <class V> QX_LANE V div(V v, V a) {
        if constexpr (is_short<V>) {
            return short_div(v, a, short_reciprocals(a));
        } else if constexpr (is_wide<V>) {
            const V q = small_quotient<V>(v * 255 + (a >> 1), a);
            return ((a == 0) | (q > 255)) ? splat<V>(255) : q;
        } else {
            return QXp_G_fcd_table[a * 256 + v];
        }
    }
    /// By the alpha of a bundle's pixels.
    template <class V> QX_LANE V div_by_alpha(V v, V a) {
        if constexpr (is_short<V>) return short_div(v, a, short_reciprocals_of_twins(a));
        return div(v, a);
    }
    /// The same of lanes that are not above theirs; those of an alpha of 0 are not used.
    template <class V> QX_LANE V share(V v, V a) {
        if constexpr (is_short<V>) return (V)scaled_quotient(v, a, short_reciprocals_of_twins(a));
        return div(v, a);
    }

private:
    template <class V> QX_LANE UnsignedLanes<V> weighted(V from, V to, V w) {
        using U = UnsignedLanes<V>;
        return (U)to * (U)w + (U)from * (U)comp(w);
    }
    template <class V> QX_LANE UnsignedLanes<V> scaled_quotient(V v, V a, UnsignedLanes<V> reciprocal) {
        using U = UnsignedLanes<V>;
        return short_quotient((U)v * 255 + ((U)a >> 1), (U)a, reciprocal);
    }
    template <class V> QX_LANE V short_div(V v, V a, UnsignedLanes<V> reciprocal) {
        const auto q = scaled_quotient(v, a, reciprocal);
        return a == 0 ? splat<V>(255) : (V)lesser(q, splat<UnsignedLanes<V>>(255));
    }
};

struct Depth16 {
    using Pixel = QX_Pixel16;
    using Channel = std::uint16_t;
    using Lane = std::int32_t;
    static constexpr int number = 16;
    static constexpr Lane full = 32768, half = 16384;

    template <class V> QX_LANE V reduced(V product) { return (product + half) >> 15; }
    /// 16383: full * y stays y.
    template <class V> QX_LANE V mul(V x, V y) { return (x * y + 16383) >> 15; }
    template <class V> QX_LANE V comp(V x) { return full - x; }
    template <class V> QX_LANE V combine(V s, V d) { return comp(mul(comp(s), comp(d))); }
    template <class V> QX_LANE V mix(V from, V to, V w) { return from + mul(to - from, w); }
    template <class V> QX_LANE V lerp(V from, V to, V w) { return from + (((to - from) * w) >> 15); }
    template <class V> QX_LANE V mix_evenly(V from, V to, V w) {
        return to < from ? from - mul(from - to, w) : from + mul(to - from, w);
    }
    template <class V> QX_LANE V wrap(V x) { return x & 0xFFFF; }
    template <class V> QX_LANE V luma(V r, V g, V b) { return (r * 9798 + g * 19235 + b * 3735 + 16384) >> 15; }
    template <class V> QX_LANE V div(V v, V a) {
        if constexpr (is_wide<V>) {
            return v >= a ? splat<V>(full) : large_quotient<V>(v * 32768 + (a >> 1), a);
        } else {
            return v >= a ? full : (v * 32768 + (a >> 1)) / a;
        }
    }
    template <class V> QX_LANE V div_by_alpha(V v, V a) { return div(v, a); }
};

struct DepthFloat {
    using Pixel = QX_PixelFloat;
    using Channel = float;
    using Lane = float;
    static constexpr int number = 32;
    static constexpr Lane full = 1.0f, half = 0.5f;

    template <class V> QX_LANE V mul(V x, V y) { return x * y; }
    template <class V> QX_LANE V comp(V x) { return 1.0f - x; }
    template <class V> QX_LANE V combine(V s, V d) { return 1.0f - (1.0f - s) * (1.0f - d); }
    template <class V> QX_LANE V mix(V from, V to, V w) { return from + (to - from) * w; }
    template <class V> QX_LANE V lerp(V from, V to, V w) { return mix(from, to, w); }
    template <class V> QX_LANE V wrap(V x) { return x; }
    template <class V> QX_LANE V luma(V r, V g, V b) { return (r * 0.299f + g * 0.587f) + b * 0.114f; }

    /// True for zeros and denormals, by which nothing is divided.
    template <class V> QX_LANE auto vanishes(V a) { return (a < FLT_MIN) & (a > -FLT_MIN); }
    template <class V> QX_LANE V div(V x, V a) { return vanishes(a) ? splat<V>(1.0f) : x / a; }
    template <class V> QX_LANE V div_by_alpha(V x, V a) { return div(x, a); }
};

/// Float alpha kept on the scale; what vanishes becomes 0.
template <class V> QX_INLINE constexpr V limited_alpha(V v) {
    return v > 1.0f ? splat<V>(1.0f) : v < 1e-16f ? splat<V>(0.0f) : v;
}

/// The laws that the rounding exists for.
static_assert(Depth8::mul(255, 77) == 77 && Depth8::mul(255, 255) == 255 && Depth8::mul(1, 1) == 0);
static_assert(Depth16::mul(32768, 77) == 77 && Depth16::mul(32768, 32768) == 32768 && Depth16::mul(1, 1) == 0);

template <class D>
concept Depth = requires(typename D::Lane x) {
    typename D::Pixel;
    typename D::Channel;
    D::full;
    D::mul(x, x);
    D::div(x, x);
};

/// The depth of a pixel type.
template <class Pixel>
using DepthOf = std::conditional_t<std::is_same_v<Pixel, QX_Pixel8>, Depth8,
                                   std::conditional_t<std::is_same_v<Pixel, QX_Pixel16>, Depth16, DepthFloat>>;

}  // namespace qx
