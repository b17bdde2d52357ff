// SPDX-License-Identifier: Apache-2.0
// Body of the rows of cross-fades, for one level. Integer channels of multiplied pixels are mixed in vectors, straight
// ones at 8 bits; the others are worked on one by one.
#include "QX/compositing/QX_BlendKernels.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// Weights of 16.16, both above 0.
struct Weights {
    std::int32_t ratio, inverse = 0x10000 - ratio;
};

/// A float channel or alpha under a weight. Kept: truncated, so that floats are mixed in steps of 1 / 65536.
QX_INLINE std::int64_t under(std::int32_t weight, float x) { return truncate_to_int64(static_cast<float>(weight) * x); }
QX_INLINE float float_sum(std::int64_t a, std::int64_t b) {
    return static_cast<float>(static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b)));
}

/// (c2 * ratio + c1 * inverse + 32768) >> 16
template <class V> QX_INLINE V mixed(V c1, V c2, Weights w) {
    if constexpr (is_short<V>) {  // c1 plus difference * ratio >> 16, rounded, as the factors' low 16 bits give it
        using U = UnsignedLanes<V>;
        const U ratio = splat<U>(w.ratio), difference = (U)(c2 - c1);
        const U below_zero = (U)((V)difference >> 15) & ratio;
        return (V)((U)c1 + upper_product(difference, ratio) - below_zero + (difference * ratio >> 15));
    } else if constexpr (std::is_same_v<V, float>) {
        return float_sum(under(w.inverse, c1), under(w.ratio, c2)) * 0x1p-16f;
    } else {  // less than 2^32
        using U = Vector<std::uint32_t, is_wide<V> ? sizeof(V) : 0>;
        const auto ratio = static_cast<std::uint32_t>(w.ratio), inverse = static_cast<std::uint32_t>(w.inverse);
        return (V)(((U)c2 * ratio + (U)c1 * inverse + 32768) >> 16);
    }
}

template <class P, class Pixel>
void premul_row(std::int32_t count, const Pixel* src1, const Pixel* src2, std::int32_t ratio, Pixel* dst) {
    const Weights w{ratio};
    for_bundles<P, Pixel>(count, src1, src2, dst, [&](const Pixel* from1, const Pixel* from2, Pixel* to) QX_LAMBDA {
        const P p = load_pixels<P, Channels::as_stored>(from1), q = load_pixels<P, Channels::as_stored>(from2);
        store_pixels(to, with_channels(p, q, [&](auto c1, auto c2) QX_LAMBDA { return mixed(c1, c2, w); }));
    });
}

/// Colours of lanes of 8-bit pixels by their weights, (c1 * w1 + c2 * w2 + sum / 2) / sum; nothing that is used where
/// the first weighs nothing.
///
/// The sum is below 2^24 and, where both weigh something, at least 2^16. Floats take the quotient with an error below
/// 1/64; 1/32 less than that, truncated, is the quotient or one less, which the remainder tells. That lies below 2^25,
/// whatever wraps on the way.
template <class V> struct Shares8 {
    V w1, w2, sum = w1 + w2;
    FloatLanes<V> share = to_float(w2) * (1.0f / to_float(sum));

    QX_INLINE V colour(V c1, V c2) const {
        const V estimate = truncate_to_int(to_float(c1) + to_float(c2 - c1) * share + 0.46875f);
        const V remainder = (c1 - estimate) * w1 + (c2 - estimate) * w2 + (sum >> 1);
        return estimate - (remainder >= sum);
    }
};

template <class V> QX_INLINE Planes<V> straight(const Planes<V>& p, const Planes<V>& q, Weights w) {
    if constexpr (std::is_same_v<V, float>) {
        const std::int64_t w1 = under(w.inverse, p.a), w2 = under(w.ratio, q.a);
        const float sum = float_sum(w1, w2);
        return with_colours(sum * 0x1p-16f, p, q, [=](float c1, float c2) QX_LAMBDA {
            if (w1 == 0) return c2;
            if (w2 == 0) return c1;
            return (static_cast<float>(w2) * c2 + static_cast<float>(w1) * c1) / sum;
        });
    } else if constexpr (is_wide<V>) {
        const Shares8<V> shares{p.a * w.inverse, q.a * w.ratio};
        return with_colours((shares.sum + 32768) >> 16, p, q,
                            [&](V c1, V c2) QX_LAMBDA { return shares.w1 == 0 ? c2 : shares.colour(c1, c2); });
    } else {
        const std::uint64_t w1 = std::uint64_t(p.a) * std::uint64_t(w.inverse),
                            w2 = std::uint64_t(q.a) * std::uint64_t(w.ratio), sum = w1 + w2;
        return with_colours(V((sum + 32768) >> 16), p, q, [=](V c1, V c2) QX_LAMBDA {
            return w1 == 0 ? c2 : V((std::uint64_t(c1) * w1 + std::uint64_t(c2) * w2 + (sum >> 1)) / sum);
        });
    }
}

template <class P, class Pixel>
void straight_row(std::int32_t count, const Pixel* src1, const Pixel* src2, std::int32_t ratio, Pixel* dst) {
    const Weights w{ratio};
    for_bundles<P, Pixel>(count, src1, src2, dst, [&](const Pixel* from1, const Pixel* from2, Pixel* to) QX_LAMBDA {
        store_pixels(
            to, straight(load_pixels<P, Channels::as_stored>(from1), load_pixels<P, Channels::as_stored>(from2), w));
    });
}

const BlendKernels blend_kernels{
    {&straight_row<Planes<Wide<std::int32_t>>, QX_Pixel8>, &premul_row<Colours<Depth8, kRegister>, QX_Pixel8>},
    {&straight_row<Planes<std::int32_t>, QX_Pixel16>, &premul_row<Colours<Depth16, kRegister>, QX_Pixel16>},
    {&straight_row<Planes<float>, QX_PixelFloat>, &premul_row<Planes<float>, QX_PixelFloat>}};

}  // namespace qx::QX_ISA
