// SPDX-License-Identifier: Apache-2.0
// Unclipped bilinear samples, for one level.
#pragma once

#include "QX/sampling/QX_TapPlanesT.h"

namespace qx::QX_ISA {

template <class Pixel, class I> struct Square {
    Tap<Pixel, I> at[4];  // top left, top right, bottom left, bottom right

    template <class At> QX_INLINE explicit Square(const At& places) {
        Tap<Pixel, I> top[2], bottom[2];
        load_row<Pixel>(places, 0, top);
        load_row<Pixel>(places, 1, bottom);
        at[0] = top[0], at[1] = top[1], at[2] = bottom[0], at[3] = bottom[1];
    }
    QX_INLINE Tap<Pixel, I> differences() const { return (at[0] ^ at[1]) | (at[0] ^ at[2]) | (at[0] ^ at[3]); }
    template <class Real> QX_INLINE void planes(Planes<Real> (&p)[4]) const {
        for (int i = 0; i < 4; ++i) p[i] = at[i].template planes<Real>();
    }
};

template <class Real, class I> QX_INLINE Real fraction(I position) {
    return to_real<Real>(position & 0xFFFF) * static_cast<NumberOf<Real>>(0x1p-16);
}

template <class Real> QX_INLINE void weights_of(Real fx, Real fy, Real (&w)[4]) {
    w[3] = fx * fy;
    w[1] = fx - w[3];
    w[2] = fy - w[3];
    w[0] = ((1 - w[1]) - w[2]) - w[3];
}

/// Sums over four taps, channel by channel.
template <class Real> QX_INLINE Real sum_of(const Planes<Real> (&p)[4], Real Planes<Real>::*c, const Real (&w)[4]) {
    return sampling::sum4<Real>(w[0] * p[0].*c, w[1] * p[1].*c, w[2] * p[2].*c, w[3] * p[3].*c);
}

QX_INLINE auto rounded(Wide<float> v) { return truncate_to_int(v + 0.5f); }
QX_INLINE auto rounded(Wide<double> v) { return narrowed_to_int(v + 0.5); }

/// The pixels of noclip_two_stage.
struct Bilinear8 {
    using I = Wide<std::int32_t>;
    using F = Wide<float>;
    using Bundle = Planes<I>;
    static constexpr int before = 0, rows = 2;

    /// Colours by their share in alpha; none survive under an alpha that rounds to nothing.
    QX_INLINE static Bundle by_alpha(const Planes<F> (&p)[4], F fx, F fy) {
        F w[4];
        weights_of(fx, fy, w);
        for (int i = 0; i < 4; ++i) w[i] = w[i] * p[i].a;
        const F alpha = sampling::sum4<F>(w[0], w[1], w[2], w[3]);
        const auto visible = alpha >= 0.5f;
        const F share = 1.0f / (visible ? alpha : splat<F>(1));
        const auto colour = [&](F Planes<F>::*c) QX_LAMBDA {
            return visible ? lesser(rounded(sum_of(p, c, w) * share), splat<I>(255)) : I{};
        };
        return {visible ? rounded(alpha) : I{}, colour(&Planes<F>::r), colour(&Planes<F>::g), colour(&Planes<F>::b)};
    }
    /// With equal alphas: the mix of colours, down, then across, under the alpha that is there.
    QX_INLINE static Bundle under_alpha(I alpha, const Planes<F> (&p)[4], F fx, F fy) {
        const auto colour = [&](F Planes<F>::*c) QX_LAMBDA {
            const F left = p[0].*c + (p[2].*c - p[0].*c) * fy, right = p[1].*c + (p[3].*c - p[1].*c) * fy;
            return alpha == 0 ? I{} : rounded((right - left) * fx + left);
        };
        return {alpha, colour(&Planes<F>::r), colour(&Planes<F>::g), colour(&Planes<F>::b)};
    }

    template <class At> QX_INLINE static Bundle sample(const At& places, I x, I y) {
        const Square<QX_Pixel8, I> square(places);
        const auto differences = square.differences();
        const auto as_it_is = differences.is_zero() | (((x | y) & 0xFFFF) == 0);
        const auto one_alpha = differences.alpha() == 0;
        const I alpha = square.at[0].alpha();
        const F fx = fraction<F>(x), fy = fraction<F>(y);
        Planes<F> p[4];
        square.planes(p);
        const Bundle out = all(one_alpha | as_it_is) ? under_alpha(alpha, p, fx, fy)
                           : all(~one_alpha | as_it_is)
                               ? by_alpha(p, fx, fy)
                               : select(one_alpha, under_alpha(alpha, p, fx, fy), by_alpha(p, fx, fy));
        const I bits = square.at[0].bits;
        return select(as_it_is, Bundle{bits & 255, bits >> 8 & 255, bits >> 16 & 255, bits >> 24 & 255}, out);
    }
};

/// Upper halves, rounded, of x * by_x + y * by_y in lanes of four bytes without a sign, whose sum fits eight.
template <class I> QX_INLINE I rounded_upper_half(I x, I by_x, I y, I by_y) {
    using U = Vector<std::uint64_t, sizeof(I)>;
    const auto sum = [&](int shift) QX_LAMBDA {
        const auto lane = [=](I v) QX_LAMBDA { return (U)v >> shift; };
        return lower_half_product(lane(x), lane(by_x)) + lower_half_product(lane(y), lane(by_y)) + 0x80000000;
    };
    return (I)(sum(0) >> 32 | (sum(32) & 0xFFFFFFFF00000000));
}

/// Where the alphas of a pixel's taps are equal, the sums of single samples are exact, so that integers give them too:
/// a weight has 32 bits, a product 48. Where they differ doubles hold what passes a float's precision.
struct Bilinear16 {
    using I = Wide<std::int32_t>;
    using Bundle = Planes<I>;
    using Half = Vector<std::int32_t, kRegister / 2>;
    using D = Wide<double>;
    static constexpr int before = 0, rows = 2;

    /// A clear pixel is kept where it is one tap alone, or all are.
    template <class V> QX_INLINE static auto stays(const Tap<QX_Pixel16, V> (&at)[4], V x, V y) {
        const auto differences = (at[0] ^ at[1]) | (at[0] ^ at[2]) | (at[0] ^ at[3]);
        return differences.is_zero() | (((x | y) & 0xFFFF) == 0);
    }

    QX_INLINE static Bundle under_alpha(const Tap<QX_Pixel16, I> (&at)[4], I x, I y) {
        const I fx = x & 0xFFFF, fy = y & 0xFFFF, gx = kFixedOne - fx, gy = kFixedOne - fy;
        const auto mix = [&](const auto& channel) QX_LAMBDA {
            const I left = channel(at[0]) * gy + channel(at[2]) * fy, right = channel(at[1]) * gy + channel(at[3]) * fy;
            return rounded_upper_half(left, gx, right, fx);
        };
        using Taps = Tap<QX_Pixel16, I>;
        const Bundle mixed{at[0].alpha(), mix([](const Taps& t) QX_LAMBDA { return t.ar >> 16 & 0xFFFF; }),
                           mix([](const Taps& t) QX_LAMBDA { return t.gb & 0xFFFF; }),
                           mix([](const Taps& t) QX_LAMBDA { return t.gb >> 16 & 0xFFFF; })};
        const auto visible = mixed.a > 0;
        if (all(visible)) return mixed;
        return select(visible | stays(at, x, y), mixed, Bundle{});
    }

    /// Colours by their share in alpha.
    QX_INLINE static Planes<Half> by_alpha(const Tap<QX_Pixel16, Half> (&at)[4], Half x, Half y) {
        Planes<D> p[4];
        for (int i = 0; i < 4; ++i) p[i] = at[i].template planes<D>();
        D w[4], share[4];
        weights_of(fraction<D>(x), fraction<D>(y), w);
        for (int i = 0; i < 4; ++i) share[i] = w[i] * p[i].a;
        const D alpha = sampling::sum4<D>(share[0], share[1], share[2], share[3]);
        const auto alike = (p[0].a == p[1].a) & (p[0].a == p[2].a) & (p[0].a == p[3].a);
        for (int i = 0; i < 4; ++i) share[i] = alike ? w[i] : share[i];
        const D scale = alike ? splat<D>(1) : 1 / alpha;
        const auto colour = [&](D Planes<D>::*c) QX_LAMBDA { return rounded(sum_of(p, c, share) * scale); };
        const Planes<Half> mixed{rounded(alpha), colour(&Planes<D>::r), colour(&Planes<D>::g), colour(&Planes<D>::b)};
        const auto visible = mixed.a > 0;
        if (all(visible)) return mixed;
        const Tap<QX_Pixel16, Half> first = at[0];
        const auto as_it_is = stays(at, x, y);
        const Half ar = as_it_is ? first.ar : Half{}, gb = as_it_is ? first.gb : Half{};
        return select(visible, mixed, Planes<Half>{ar, ar >> 16, gb, gb >> 16});
    }

    template <class At> QX_INLINE static Bundle sample(const At& places, I x, I y) {
        const Square<QX_Pixel16, I> square(places);
        if (all(square.differences().alpha() == 0)) return under_alpha(square.at, x, y);
        Half taps[4][2][2], position[2][2], channels[4][2];
        __builtin_memcpy(taps, square.at, sizeof taps);
        __builtin_memcpy(position[0], &x, sizeof x);
        __builtin_memcpy(position[1], &y, sizeof y);
        for (int k = 0; k < 2; ++k) {
            Tap<QX_Pixel16, Half> at[4];
            for (int i = 0; i < 4; ++i) at[i] = {taps[i][0][k], taps[i][1][k]};
            const Planes<Half> p = by_alpha(at, position[0][k], position[1][k]);
            channels[0][k] = p.a, channels[1][k] = p.r, channels[2][k] = p.g, channels[3][k] = p.b;
        }
        Bundle out;
        __builtin_memcpy(&out, channels, sizeof out);
        return out;
    }
};

struct BilinearFloat {
    using I = Wide<std::int32_t>;
    using F = Wide<float>;
    using Bundle = Planes<F>;
    static constexpr int before = 0, rows = 2;

    template <class At> QX_INLINE static Bundle sample(const At& places, I x, I y) {
        const Square<QX_PixelFloat, I> square(places);
        Planes<F> p[4];
        square.planes(p);
        F w[4];
        weights_of(fraction<F>(x), fraction<F>(y), w);
        return keeping_mix(p, w, 1.0f);
    }
};

}  // namespace qx::QX_ISA
