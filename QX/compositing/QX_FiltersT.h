// SPDX-License-Identifier: Apache-2.0
// Body of the filters and of the alpha merge, for one level.
#pragma once

#include "QX/compositing/QX_Pivots.h"
#include "QX/compositing/QX_XferRowsT.h"

namespace qx::QX_ISA {

/// Out of multiplied colour. By a full alpha nothing is divided.
template <Pivot Kind, class D, class P> QX_INLINE P straightened(const P& p) {
    using V = typename P::Lane;
    if constexpr (is_wide<V>) {
        if (all_equal(p.a, D::full)) {
            return with_colours(p.a, p, p, [&](V c, V) QX_LAMBDA {
                return unmix<Kind, D>(c, [](V v) QX_LAMBDA { return undivided<D>(v); });
            });
        }
    }
    return with_colours(p.a, p, p, [&](V c, V) QX_LAMBDA {
        return unmix<Kind, D>(c, [&](V v) QX_LAMBDA { return D::div_by_alpha(v, p.a); });
    });
}

template <Pivot Kind, bool Forward, class D, class Pixel> QX_INLINE void filter_step(const Pixel* src, Pixel* dst) {
    using V = typename Colours<D, kRegister>::Lane;
    const auto p = load_pixels<Colours<D, kRegister>>(src);
    if constexpr (Forward) {
        store_pixels(dst, with_colours(p.a, p, p, [&](V c, V) QX_LAMBDA { return premix<Kind, D>(c, p.a); }));
    } else {
        store_pixels(dst, straightened<Kind, D>(p));
    }
}

template <Pivot Kind, bool Forward, class D, class Pixel = typename D::Pixel>
int filter_row(std::int32_t count, const Pixel* src, Pixel* dst) {
    if (src == nullptr) src = dst;
    for_bundles<Colours<D, kRegister>, Pixel>(
        count, src, dst, [](const Pixel* from, Pixel* to) QX_LAMBDA { filter_step<Kind, Forward, D>(from, to); });
    return 0;
}

/// e = mul(mul(a, opacity), mask): the order of the products is not that of the rows' s.
template <class D, bool Masked, class V> QX_INLINE V merged(V a, V opacity, V mask, V d) {
    V e = D::mul(a, opacity);
    if constexpr (Masked) e = D::mul(e, mask);
    return D::combine(e, d);
}

template <class D, class V> struct AlphasOf { using Type = AlphaLanesFloat<V>; };
template <class V> struct AlphasOf<Depth8, V> { using Type = AlphaLanes8<V>; };
template <class V> struct AlphasOf<Depth16, V> { using Type = AlphaLanes16<V>; };

template <class D, bool Masked, class Pixel>
QX_INLINE void merge_run(std::int32_t count, const Pixel* src, QX_ChannelOf<Pixel> opacity, const Pixel* mask,
                         Pixel* dst) {
    std::int32_t i = 0;
    if constexpr (kRegister > 0) {
        using V = Wide<typename D::Lane>;
        using A = typename AlphasOf<D, V>::Type;
        constexpr int step = sizeof(V) / sizeof(Pixel);
        for (; i + step <= count; i += step) {
            const V d = load_lanes<V>(dst + i);
            V m{};
            if constexpr (Masked) m = A::alpha(load_lanes<V>(mask + i));
            const V r = merged<D, Masked>(A::alpha(load_lanes<V>(src + i)), splat<V>(opacity), m, A::alpha(d));
            store_lanes(dst + i, A::with_alpha(d, r));
        }
    }
    using P = Planes<typename D::Lane>;
    for (; i < count; ++i) {
        typename D::Lane m{};
        if constexpr (Masked) m = load_alpha<P>(mask + i);
        const auto r = merged<D, Masked>(load_alpha<P>(src + i), static_cast<typename D::Lane>(opacity), m,
                                         load_alpha<P>(dst + i));
        dst[i].alpha = static_cast<QX_ChannelOf<Pixel>>(r);
    }
}

template <class D, class Pixel = typename D::Pixel>
int merge_row(std::int32_t count, const Pixel* src, QX_ChannelOf<Pixel> opacity, const Pixel* mask, Pixel* dst) {
    if (opacity == 0) return 0;
    if (mask != nullptr) {
        merge_run<D, true>(count, src, opacity, mask, dst);
    } else {
        merge_run<D, false>(count, src, opacity, mask, dst);
    }
    return 0;
}

template <class D>
inline constexpr FilterSet<typename D::Pixel> filter_set{
    {&filter_row<Pivot::black, true, D>, &filter_row<Pivot::black, false, D>, &filter_row<Pivot::white, true, D>,
     &filter_row<Pivot::white, false, D>, &filter_row<Pivot::grey, true, D>, &filter_row<Pivot::grey, false, D>},
    &merge_row<D>};

}  // namespace qx::QX_ISA
