// SPDX-License-Identifier: Apache-2.0
// What the engine's texts for levels have in common: positions and reads of images of floats.
#pragma once

#include "lanes/Level.h"
#include "lanes/PixelAccess.h"
#include "opticalflow/src/Position.h"

namespace qx::QX_ISA {

using Floats = Wide<float>;
using Ints = Wide<std::int32_t>;

/// Integer parts of positions, the lower ones for negatives too, and what is above them: place_of in lanes.
struct Places {
    Ints whole;
    Floats fraction;
};
QX_INLINE Places places_of(Floats position) {
    const Floats far = splat<Floats>(solvan_of::kFarAway);
    const Floats within = position < far ? position : far;  // a NaN becomes what it must not yet
    const Floats near = position >= -far ? within : -far;
    const Floats below = floor_of(near);
    return {truncate_to_int(below), near - below};
}

QX_INLINE Ints limited(Ints index, std::int32_t size) { return lesser(greater(index, Ints{}), splat<Ints>(size - 1)); }
QX_INLINE Floats mix(Floats a, Floats b, Floats f) { return a + (b - a) * f; }

/// Without a sign.
template <class F> QX_INLINE F size_of(F x) {
    if constexpr (is_wide<F>) {
        return (F)((Vector<std::int32_t, sizeof(F)>)x & 0x7FFFFFFF);
    } else {
        return __builtin_fabsf(x);
    }
}

/// Calls body(at, count) for each bundle of a row; the last one may have fewer than a register's.
template <class Body> QX_INLINE void for_lanes(std::int32_t count, const Body& body) {
    for (std::int32_t at = 0; at < count; at += lanes_in<Floats>) body(at, lesser(count - at, lanes_in<Floats>));
}
template <class V, class T> QX_INLINE V load_some(const T* from, std::int32_t count) {
    if (count == lanes_in<V>) return load_lanes<V>(from);
    T some[lanes_in<V>]{};
    for (std::int32_t i = 0; i < count; ++i) some[i] = from[i];
    return load_lanes<V>(some);
}
template <class T, class V> QX_INLINE void store_some(T* to, V v, std::int32_t count) {
    if (count == lanes_in<V>) return store_lanes(to, v);
    T some[lanes_in<V>];
    store_lanes(some, v);
    for (std::int32_t i = 0; i < count; ++i) to[i] = some[i];
}

/// An all-clear or all-set mask, of vectors or of one number.
using Mask = decltype(Floats{} < Floats{});
QX_INLINE Mask both(Mask a, Mask b) { return a & b; }
QX_INLINE Mask either(Mask a, Mask b) { return a | b; }
QX_INLINE bool any(Mask mask) { return !all(mask == Mask{}); }

/// True where 0 <= index < size.
QX_INLINE Mask lies_in(Ints index, std::int32_t size) { return both(index >= Ints{}, index < splat<Ints>(size)); }

}  // namespace qx::QX_ISA
