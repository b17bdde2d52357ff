// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/PixelAccess.h"

/// Registers whose parts come from places of their own. `place(i)` gives the address of the i-th part.
namespace qx {

/// A register of part(0), part(1) and so on, each of sixteen bytes.
template <class V, class Part> QX_INLINE V joined(const Part& part) {
    if constexpr (sizeof(V) == 16) {
        return (V)part(0);
    } else if constexpr (sizeof(V) == 32) {
        return (V)_mm256_inserti128_si256(_mm256_castsi128_si256(part(0)), part(1), 1);
    } else {
        using Half = Vector<long long, sizeof(V) / 2>;
        const auto low = joined<Half>(part), high = joined<Half>([&](int k) QX_LAMBDA { return part(k + 2); });
        return (V)_mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
    }
}

/// Sixteen bytes a place.
template <class V, class Place> QX_INLINE V load_sixteens(const Place& place) {
    return joined<V>([&](int i) QX_LAMBDA { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(place(i))); });
}

QX_INLINE __m128i load_eight(const void* place) { return _mm_loadl_epi64(static_cast<const __m128i*>(place)); }
/// Eight bytes of two places.
template <class Place> QX_INLINE __m128i load_two_eights(const Place& place, int i) {
    const auto low = _mm_castsi128_ps(load_eight(place(i)));
    return _mm_castps_si128(_mm_loadh_pi(low, reinterpret_cast<const __m64*>(place(i + 1))));
}

/// Pixels of four, eight or sixteen bytes, in their order.
template <class V, std::size_t Bytes, class Place> QX_INLINE V load_scattered(const Place& place) {
    if constexpr (Bytes == 16) {
        return load_sixteens<V>(place);
    } else if constexpr (Bytes == 8) {
        return joined<V>([&](int k) QX_LAMBDA { return load_two_eights(place, 2 * k); });
    } else {
        const auto load = [&](int i) QX_LAMBDA { return _mm_loadu_si32(place(i)); };
        const auto two = [&](int i) QX_LAMBDA { return _mm_unpacklo_epi32(load(i), load(i + 1)); };
        return joined<V>([&](int k) QX_LAMBDA { return _mm_unpacklo_epi64(two(4 * k), two(4 * k + 2)); });
    }
}

/// Four words of each place, in lanes of four bytes.
template <class V, class Place> QX_INLINE V load_words(const Place& place) {
    if constexpr (sizeof(V) == 16) {
        return (V)_mm_cvtepu16_epi32(load_eight(place(0)));
    } else {
        static_assert(sizeof(V) == 32);
        return (V)_mm256_cvtepu16_epi32(load_two_eights(place, 0));
    }
}

/// Sixteen bytes a lane, turned over: in `a` the first four of every lane, then the next ones.
template <class V, class Place> QX_INLINE Planes<V> load_turned(const Place& place) {
    const auto part = [&](int k)
                          QX_LAMBDA { return load_sixteens<V>([&](int i) QX_LAMBDA { return place(4 * i + k); }); };
    return transposed(part(0), part(1), part(2), part(3));
}

/// Eight bytes a lane: the first four of every lane, and the others.
template <class V, class Place> QX_INLINE void load_pairs(const Place& place, V& first, V& second) {
    const auto part = [&](int odd) QX_LAMBDA {
        return joined<V>([&](int k) QX_LAMBDA { return load_two_eights(place, 4 * k + 2 * odd); });
    };
    const V u = part(0), v = part(1);
    first = shuffle<0, 2, 0, 2>(u, v);
    second = shuffle<1, 3, 1, 3>(u, v);
}

/// Which pixel of a bundle a lane of its planes holds, as load_pixels and store_pixels have it.
template <class P, class Pixel> constexpr int pixel_of_lane(int lane) {
    constexpr int n = pixels_in<P>, bytes = sizeof(Pixel);
    const int block = lane / 4, place = lane % 4;
    if (n < 4 || bytes == 4) return lane;
    return bytes == 8 ? place / 2 * (n / 2) + block * 2 + place % 2 : place * (n / 4) + block;
}

/// Lanes of planes that were loaded from such pixels, in the order of the pixels.
template <class P, class Pixel> QX_INLINE typename P::Lane in_pixel_order(typename P::Lane lanes) {
    using V = typename P::Lane;
    [[maybe_unused]] Vector<std::int32_t, sizeof(V)> lane_of{};
    for (int i = 0; i < lanes_in<V>; ++i) lane_of[pixel_of_lane<P, Pixel>(i)] = i;
    if constexpr (sizeof(V) == 16) {
        return lanes;  // as they are
#ifdef __AVX2__
    } else if constexpr (sizeof(V) == 32) {
        return (V)_mm256_permutevar8x32_epi32((__m256i)lanes, (__m256i)lane_of);
#endif
#ifdef __AVX512F__
    } else if constexpr (sizeof(V) == 64) {
        return (V)_mm512_permutexvar_epi32((__m512i)lane_of, (__m512i)lanes);
#endif
    }
}

}  // namespace qx
