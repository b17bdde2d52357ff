// SPDX-License-Identifier: Apache-2.0
// Body of the filters and of the alpha merge, for one level named by QX_ISA; bundles as in
// QX_XferRowsT.h, and `Bundles<Pixel>::Alphas` for the merge (void: one pixel a step).

#include "QX/compositing/QX_Levels.h"
#include "QX/compositing/QX_Pivots.h"
#include "QX/compositing/QX_PixelAccess.h"

namespace qx::QX_ISA {

template <Pivot Kind, bool Forward, class D, class P, class Pixel>
QX_INLINE void filter_step(const Pixel* src, Pixel* dst) {
    using V = typename P::Lane;
    const P p = load_pixels<P>(src);
    store_pixels(dst, with_colours(p.a, p, p, [&](V c, V) QX_LAMBDA {
                     return Forward ? premix<Kind, D>(c, p.a) : unmix<Kind, D>(c, p.a);
                 }));
}

template <Pivot Kind, bool Forward, class D, class Pixel = typename D::Pixel>
int filter_row(std::int32_t count, const Pixel* src, Pixel* dst) {
    using P = typename Bundles<Pixel>::Middle;
    if (src == nullptr) src = dst;
    std::int32_t i = 0;
    for (; i + pixels_in<P> <= count; i += pixels_in<P>) filter_step<Kind, Forward, D, P>(src + i, dst + i);
    for (; i < count; ++i) filter_step<Kind, Forward, D, typename Bundles<Pixel>::Tail>(src + i, dst + i);
    return 0;
}

/// Black forward at 8 bits in lanes of 16 bits, two channels to a lane of 32; alpha takes the factor that keeps it.
template <class V> QX_INLINE V multiplied8(V v) {
    typedef std::uint16_t Half [[gnu::vector_size(sizeof(V))]];
    const V a = v & 255;
    const V even = (V)Depth8::mul<Half>((Half)(v & 0x00FF00FF), (Half)(a << 16 | 255));
    const V odd = (V)Depth8::mul<Half>((Half)(v >> 8 & 0x00FF00FF), (Half)(a << 16 | a));
    return even | odd << 8;
}

inline int multiply_row8(std::int32_t count, const QX_Pixel8* src, QX_Pixel8* dst) {
    using P = typename Bundles<QX_Pixel8>::Middle;
    if (src == nullptr) src = dst;
    std::int32_t i = 0;
    if constexpr (is_wide<typename P::Lane>) {
        for (; i + pixels_in<P> <= count; i += pixels_in<P>) {
            store_lanes(dst + i, multiplied8(load_lanes<typename P::Lane>(src + i)));
        }
    }
    using Tail = typename Bundles<QX_Pixel8>::Tail;
    for (; i < count; ++i) filter_step<Pivot::black, true, Depth8, Tail>(src + i, dst + i);
    return 0;
}

/// e = mul(mul(a, opacity), mask): the order of the products is not that of the rows' s.
template <class D, bool Masked, class V> QX_INLINE V merged(V a, V opacity, V mask, V d) {
    V e = D::mul(a, opacity);
    if constexpr (Masked) e = D::mul(e, mask);
    return D::combine(e, d);
}

template <class D, bool Masked, class Pixel>
QX_INLINE void merge_run(std::int32_t count, const Pixel* src, QX_ChannelOf<Pixel> opacity, const Pixel* mask,
                         Pixel* dst) {
    std::int32_t i = 0;
    using A = typename Bundles<Pixel>::Alphas;
    if constexpr (!std::is_void_v<A>) {
        using V = typename A::Lane;
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
