// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Lanes.h"

namespace qx {

/// Pixels in work, their channels apart: one pixel (V is a number) or as many as V has lanes.
template <class V> struct Planes {
    using Lane = V;
    V a, r, g, b;
};

/// A pixel of this alpha, with f(colour of s, colour of t) as its colours.
template <class V, class F>
QX_INLINE Planes<V> with_colours(V alpha, const Planes<V>& s, const Planes<V>& t, const F& f) {
    return {alpha, f(s.r, t.r), f(s.g, t.g), f(s.b, t.b)};
}

/// The same pixel with another alpha.
template <class V> QX_INLINE Planes<V> with_alpha(V alpha, const Planes<V>& p) { return {alpha, p.r, p.g, p.b}; }

/// `x` where the condition holds, else `y`.
template <class M, class V> QX_INLINE Planes<V> select(M mask, const Planes<V>& x, const Planes<V>& y) {
    return {mask ? x.a : y.a, mask ? x.r : y.r, mask ? x.g : y.g, mask ? x.b : y.b};
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
