// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "lanes/Lanes.h"

/// Lanes and bytes in another order, in registers of any width.
namespace qx {

/// In each lane that lane of `x`, or of `y`, whose lanes count on behind those of `x`, which place(lane) names. `place`
/// is a lambda that captures nothing.
template <class V, class Place, int... Lane>
QX_INLINE V reordered(V x, V y, Place, std::integer_sequence<int, Lane...>) {
    return __builtin_shufflevector(x, y, Place{}(Lane)...);
}
template <class V, class Place> QX_INLINE V reordered(V x, V y, Place place) {
    return reordered(x, y, place, std::make_integer_sequence<int, lanes_in<V>>{});
}

/// Shuffles within each 16 bytes of two registers of four-byte lanes: two lanes of `x`, then two of `y`.
template <int I0, int I1, int I2, int I3, class V> QX_INLINE V shuffle(V x, V y) {
    constexpr int which = I0 | I1 << 2 | I2 << 4 | I3 << 6;
    QX_RETURN_BY_WIDTH(V, sizeof(V), shuffle_ps, (FloatLanes<V>)x, (FloatLanes<V>)y, which)
}
/// The lower or the upper two lanes of each 16 bytes of two registers, by turns.
template <bool Upper, class V> QX_INLINE V interleave(V x, V y) {
    if constexpr (Upper) {
        QX_RETURN_BY_WIDTH(V, sizeof(V), unpackhi_ps, (FloatLanes<V>)x, (FloatLanes<V>)y)
    } else {
        QX_RETURN_BY_WIDTH(V, sizeof(V), unpacklo_ps, (FloatLanes<V>)x, (FloatLanes<V>)y)
    }
}

/// The lower or the upper half of a register where so many bytes are half of it, all of it where they are all.
template <std::size_t bytes, int at, class V> QX_INLINE Vector<NumberOf<V>, bytes> part_of(V v) {
    using Part [[maybe_unused]] = Vector<NumberOf<V>, bytes>;
    if constexpr (bytes == sizeof v) {
        return v;
#ifdef __AVX2__
    } else if constexpr (sizeof v == 32) {
        return (Part)_mm256_extractf128_pd((__m256d)v, at);
#endif
#ifdef __AVX512F__
    } else {
        return (Part)_mm512_extractf64x4_pd((__m512d)v, at);
#endif
    }
}
/// Two registers as one of twice their width.
template <class H> QX_INLINE auto of_both(H low, H high) {
    using V = Vector<NumberOf<H>, 2 * sizeof(H)>;
#ifdef __AVX2__
    if constexpr (sizeof(H) == 16) {
        return (V)_mm256_insertf128_pd(_mm256_castpd128_pd256((__m128d)low), (__m128d)high, 1);
#ifdef __AVX512F__
    } else {
        return (V)_mm512_insertf64x4(_mm512_castpd256_pd512((__m256d)low), (__m256d)high, 1);
#endif
    }
#else
    return V{low[0], high[0]};
#endif
}

/// The same sixteen bytes all along.
template <class V> QX_INLINE V repeated(__m128i sixteen) {
    if constexpr (sizeof(V) == 16) {
        return (V)sixteen;
#ifdef __AVX2__
    } else if constexpr (sizeof(V) == 32) {
        return (V)_mm256_broadcastsi128_si256(sixteen);
#endif
#ifdef __AVX512F__
    } else if constexpr (sizeof(V) == 64) {
        return (V)_mm512_broadcast_i32x4(sixteen);
#endif
    }
}
/// Bytes of each sixteen by their places there; zero for a negative place.
template <int... places, class V> QX_INLINE V shuffle_bytes(V v) {
    const auto which = repeated<Register<V>>(_mm_setr_epi8(places...));
    QX_RETURN_BY_WIDTH(V, sizeof(V), shuffle_epi8, (Register<V>)v, which)
}

}  // namespace qx
