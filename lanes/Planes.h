// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Lanes.h"

namespace qx {

/// Pixels in work, their channels apart: one pixel (V is a number) or as many as V has lanes.
template <class V> struct Planes {
    using Lane = V;
    V a, r, g, b;
};

/// Pixels of 8 bits in lanes of 16: alpha in both lanes of its pixel; alpha and green; red and blue. What mixes the
/// colours of a pixel needs planes.
template <class V> struct Pairs {
    using Lane = V;
    V a, ag, rb;
};

/// Puts alphas into the lanes of a pair that hold one.
template <class V> QX_INLINE V insert_alpha(V ag, V alpha) {
    using I = Vector<std::int32_t, sizeof(V)>;
    return (V)(((I)ag & ~0xFFFF) | ((I)alpha & 0xFFFF));
}

/// A pixel of this alpha, with f(colour of s, colour of t) as its colours.
template <class V, class F>
QX_INLINE Planes<V> with_colours(V alpha, const Planes<V>& s, const Planes<V>& t, const F& f) {
    return {alpha, f(s.r, t.r), f(s.g, t.g), f(s.b, t.b)};
}

template <class V, class F> QX_INLINE Pairs<V> with_colours(V alpha, const Pairs<V>& s, const Pairs<V>& t, const F& f) {
    return {alpha, insert_alpha(f(s.ag, t.ag), alpha), f(s.rb, t.rb)};
}

/// A pixel of f(channel of s, channel of t), alpha as the colours.
template <class V, class F> QX_INLINE Planes<V> with_channels(const Planes<V>& s, const Planes<V>& t, const F& f) {
    return {f(s.a, t.a), f(s.r, t.r), f(s.g, t.g), f(s.b, t.b)};
}
template <class V, class F> QX_INLINE Pairs<V> with_channels(const Pairs<V>& s, const Pairs<V>& t, const F& f) {
    return {f(s.a, t.a), f(s.ag, t.ag), f(s.rb, t.rb)};
}

/// The same pixel with another alpha.
template <class V> QX_INLINE Planes<V> with_alpha(V alpha, const Planes<V>& p) { return {alpha, p.r, p.g, p.b}; }
template <class V> QX_INLINE Pairs<V> with_alpha(V alpha, const Pairs<V>& p) {
    return {alpha, insert_alpha(p.ag, alpha), p.rb};
}

/// `x` where the condition holds, else `y`.
template <class M, class V> QX_INLINE Planes<V> select(M mask, const Planes<V>& x, const Planes<V>& y) {
    return {mask ? x.a : y.a, mask ? x.r : y.r, mask ? x.g : y.g, mask ? x.b : y.b};
}

template <class M, class V> QX_INLINE Pairs<V> select(M mask, const Pairs<V>& x, const Pairs<V>& y) {
    return {mask ? x.a : y.a, mask ? x.ag : y.ag, mask ? x.rb : y.rb};
}

/// `x` where `v` equals `number`, else y(); without its work where all do. The condition of a single pixel decides what
/// is worked out.
template <class V, class P, class F> QX_INLINE P unless_equal(V v, NumberOf<V> number, const P& x, const F& y) {
    if (all_equal(v, number)) return x;
    if constexpr (is_wide<V>) {
        return select(v == number, x, y());
    } else {
        return y();
    }
}

}  // namespace qx
