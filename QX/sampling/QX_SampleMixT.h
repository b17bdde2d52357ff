// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/sampling/QX_SampleLanesT.h"
#include "QX/sampling/QX_SampleTapsT.h"

/// Weights and mixing rules. Sums over four taps are (t3 + t2) + (t1 + t0) at every depth, and weight times alpha comes
/// before the colour.
namespace qx::sampling {

/// Weights of the four corners: top left, top right, bottom left, bottom right. The subtractions make them sum to one.
template <class Real> struct Weights {
    Real w[4];

    QX_INLINE static Weights of(Real fx, Real fy) {
        const Real w3 = fx * fy, w1 = fx - w3, w2 = fy - w3;
        return {{((1 - w1) - w2) - w3, w1, w2, w3}};
    }
    QX_INLINE static Weights of(const Position& p) { return of(fraction(p.fx), fraction(p.fy)); }
    QX_INLINE static Weights given(const double* weights) {
        return {{static_cast<Real>(weights[0]), static_cast<Real>(weights[1]), static_cast<Real>(weights[2]),
                 static_cast<Real>(weights[3])}};
    }
    QX_INLINE static Real fraction(std::int32_t f) { return static_cast<Real>(f) * static_cast<Real>(0x1p-16); }
};

template <class T> QX_INLINE T sum4(const T& t0, const T& t1, const T& t2, const T& t3) {
    return (t3 + t2) + (t1 + t0);
}

template <class Real> QX_INLINE Quad<Real> plain_mix(const Quad<Real> (&p)[4], const Real (&w)[4]) {
    return sum4<Quad<Real>>(splat4(w[0]) * p[0], splat4(w[1]) * p[1], splat4(w[2]) * p[2], splat4(w[3]) * p[3]);
}

/// Alpha and the sums of colours by their share in it, not yet divided.
template <class Real> struct AlphaMix {
    Real alpha;
    Quad<Real> sums;  // colours alone have a meaning

    QX_INLINE AlphaMix(const Quad<Real> (&p)[4], const Real (&w)[4]) {
        const Real a[4] = {w[0] * alpha_of(p[0]), w[1] * alpha_of(p[1]), w[2] * alpha_of(p[2]), w[3] * alpha_of(p[3])};
        alpha = sum4(a[0], a[1], a[2], a[3]);
        sums = plain_mix<Real>(p, a);
    }
    QX_INLINE Quad<Real> colours() const { return sums * splat4(1 / alpha); }
};

/// The rule of bicubic and float samples: colour is kept under an alpha of 0, and nothing is limited but an alpha that
/// differs among the taps, to `limit`.
QX_INLINE Float4 keeping_mix(const Float4 (&p)[4], const float (&w)[4], bool alphas_equal, float limit) {
    if (alphas_equal) return with_alpha(plain_mix<float>(p, w), alpha_of(p[0]));
    AlphaMix<float> mix(p, w);
    if (mix.alpha == 0) return with_alpha(plain_mix<float>(p, w), 0.0f);
    mix.alpha = mix.alpha < limit ? mix.alpha : limit;
    return with_alpha(mix.colours(), mix.alpha);
}

QX_INLINE bool equal_alphas(const Float4 (&p)[4]) {
    const float a = alpha_of(p[0]);
    return a == alpha_of(p[1]) && a == alpha_of(p[2]) && a == alpha_of(p[3]);
}

}  // namespace qx::sampling
