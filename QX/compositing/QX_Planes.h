// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Depth.h"

/// For lambdas in kernels: like every function there, they are inlined always (see QX_Lanes.h).
#define QX_LAMBDA __attribute__((always_inline))

namespace qx {

/// Pixels in work, their channels apart: one pixel (V is a number) or as many as V has lanes.
template <class V> struct Planes {
    using Lane = V;
    V a, r, g, b;
};

/// Float pixels in one register, four lanes each, with a pixel's alpha in all its lanes beside it.
template <class V> struct Register {
    using Lane = V;
    V a, argb;
};

/// Puts alphas into their lanes of float pixels.
template <class V> QX_INLINE V insert_alpha(V argb, V alpha) {
    decltype(argb < alpha) alpha_lane{};
    for (unsigned i = 0; i < sizeof(V) / sizeof(float); i += 4) alpha_lane[i] = -1;
    return alpha_lane ? alpha : argb;
}

/// A pixel of this alpha, with f(colour of s, colour of t) as its colours.
template <class V, class F>
QX_INLINE Planes<V> with_colours(V alpha, const Planes<V>& s, const Planes<V>& t, const F& f) {
    return {alpha, f(s.r, t.r), f(s.g, t.g), f(s.b, t.b)};
}
template <class V, class F>
QX_INLINE Register<V> with_colours(V alpha, const Register<V>& s, const Register<V>& t, const F& f) {
    return {alpha, insert_alpha<V>(f(s.argb, t.argb), alpha)};
}

/// The same pixel with another alpha.
template <class V> QX_INLINE Planes<V> with_alpha(V alpha, const Planes<V>& p) { return {alpha, p.r, p.g, p.b}; }
template <class V> QX_INLINE Register<V> with_alpha(V alpha, const Register<V>& p) {
    return {alpha, insert_alpha<V>(p.argb, alpha)};
}

/// `x` where the condition holds, else `y`.
template <class M, class V> QX_INLINE Planes<V> select(M mask, const Planes<V>& x, const Planes<V>& y) {
    return {mask ? x.a : y.a, mask ? x.r : y.r, mask ? x.g : y.g, mask ? x.b : y.b};
}
template <class M, class V> QX_INLINE Register<V> select(M mask, const Register<V>& x, const Register<V>& y) {
    return {mask ? x.a : y.a, mask ? x.argb : y.argb};
}

/// The same without the work where the condition is one number: `y` alone when it is known not to hold.
template <class M, class P, class F> QX_INLINE P unless_all(M mask, const P& x, const F& y) {
    if (all(mask)) return x;
    if constexpr (is_wide<M>) {
        return select(mask, x, y());
    } else {
        return y();
    }
}

}  // namespace qx
