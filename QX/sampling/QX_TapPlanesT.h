// SPDX-License-Identifier: Apache-2.0
// Taps of many samples as they are stored, and their channels apart as numbers, for one level.
#pragma once

#include "QX/sampling/QX_RunT.h"
#include "QX/sampling/QX_SampleMixT.h"

namespace qx::QX_ISA {

template <class Real, class I> QX_INLINE Real to_real(I v) {
    if constexpr (sizeof(NumberOf<Real>) == 8) {
        return to_double(v);
    } else {
        return to_float(v);
    }
}

/// A tap of each sample; `I` are lanes of four bytes.
template <class Pixel, class I> struct Tap;
template <class I> struct Tap<QX_Pixel8, I> {
    I bits;
    QX_INLINE I alpha() const { return bits & 255; }
    template <class Real> QX_INLINE Planes<Real> planes() const {
        const auto channel = [&](int shift) QX_LAMBDA { return to_real<Real>(bits >> shift & 255); };
        return {channel(0), channel(8), channel(16), channel(24)};
    }
    QX_INLINE friend Tap operator^(Tap x, Tap y) { return {x.bits ^ y.bits}; }
    QX_INLINE friend Tap operator|(Tap x, Tap y) { return {x.bits | y.bits}; }
    QX_INLINE auto is_zero() const { return bits == 0; }
};
template <class I> struct Tap<QX_Pixel16, I> {
    I ar, gb;
    QX_INLINE I alpha() const { return ar & 0xFFFF; }
    template <class Real> QX_INLINE Planes<Real> planes() const {
        const auto low = [](I v) QX_LAMBDA { return to_real<Real>(v & 0xFFFF); };
        const auto high = [](I v) QX_LAMBDA { return to_real<Real>(v >> 16 & 0xFFFF); };
        return {low(ar), high(ar), low(gb), high(gb)};
    }
    QX_INLINE friend Tap operator^(Tap x, Tap y) { return {x.ar ^ y.ar, x.gb ^ y.gb}; }
    QX_INLINE friend Tap operator|(Tap x, Tap y) { return {x.ar | y.ar, x.gb | y.gb}; }
    QX_INLINE auto is_zero() const { return (ar | gb) == 0; }
};
template <class I> struct Tap<QX_PixelFloat, I> {
    Planes<FloatLanes<I>> channels;
    template <class Real> QX_INLINE Planes<Real> planes() const { return channels; }
};

/// Neighbours in a row, from the first tap on.
template <class Pixel, class I, int N, class At>
QX_INLINE void load_row(const At& places, int row, Tap<Pixel, I> (&taps)[N]) {
    if constexpr (sizeof(Pixel) == 4 && N == 2) {
        load_pairs(places.from(row, 0), taps[0].bits, taps[1].bits);
    } else if constexpr (sizeof(Pixel) == 4) {
        static_assert(N == 4);
        const Planes<I> four = load_turned<I>(places.from(row, 0));
        taps[0].bits = four.a, taps[1].bits = four.r, taps[2].bits = four.g, taps[3].bits = four.b;
    } else if constexpr (sizeof(Pixel) == 8) {
        for (int i = 0; i < N; i += 2) {
            const Planes<I> two = load_turned<I>(places.from(row, 8 * i));
            taps[i] = {two.a, two.r};
            taps[i + 1] = {two.g, two.b};
        }
    } else {
        for (int i = 0; i < N; ++i) taps[i].channels = load_turned<FloatLanes<I>>(places.from(row, 16 * i));
    }
}

/// sampling::keeping_mix of every lane.
template <class F> QX_INLINE Planes<F> keeping_mix(const Planes<F> (&p)[4], const F (&w)[4], float limit) {
    using sampling::sum4;
    const auto mixed = [&](const F(&share)[4], F Planes<F>::*c) QX_LAMBDA {
        return sum4<F>(share[0] * p[0].*c, share[1] * p[1].*c, share[2] * p[2].*c, share[3] * p[3].*c);
    };
    const auto alike = (p[0].a == p[1].a) & (p[0].a == p[2].a) & (p[0].a == p[3].a);
    if (all(alike)) return {p[0].a, mixed(w, &Planes<F>::r), mixed(w, &Planes<F>::g), mixed(w, &Planes<F>::b)};
    F share[4];
    for (int i = 0; i < 4; ++i) share[i] = w[i] * p[i].a;
    const F sum = sum4<F>(share[0], share[1], share[2], share[3]), one = splat<F>(1);
    const F alpha = sum < limit ? sum : splat<F>(limit);
    const auto plain = alike | (sum == 0);
    const F scale = plain ? one : one / alpha;
    for (int i = 0; i < 4; ++i) share[i] = plain ? w[i] : share[i];
    return {alike ? p[0].a : (plain ? F{} : alpha), mixed(share, &Planes<F>::r) * scale,
            mixed(share, &Planes<F>::g) * scale, mixed(share, &Planes<F>::b) * scale};
}

}  // namespace qx::QX_ISA
