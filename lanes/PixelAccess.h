// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Planes.h"
#include "lanes/Shuffles.h"

/// Pixels between memory, at any alignment, and lanes. A pixel has four channels, alpha first, of 8 bits, of 16 bits
/// with full scale 32768, or float; lanes have 32 bits, but for pairs. A bundle is what one step of a row works on: its
/// type tells how many pixels it holds, whose order in the lanes is that of shuffles within 16 bytes, the same for all
/// bundles of one type.
namespace qx {

template <class P> inline constexpr int pixels_in = lanes_in<typename P::Lane>;
template <class V> inline constexpr int pixels_in<Pairs<V>> = lanes_in<V> / 2;
template <class P> inline constexpr bool is_pairs = false;
template <class V> inline constexpr bool is_pairs<Pairs<V>> = true;

template <class V, class T> QX_INLINE V load_lanes(const T* from) {
    V v;
    __builtin_memcpy(&v, from, sizeof v);
    return v;
}
template <class V, class T> QX_INLINE void store_lanes(T* to, V v) { __builtin_memcpy(to, &v, sizeof v); }

/// Channels of type T side by side in memory, in lanes of four bytes.
template <class V, class T> QX_INLINE V load_channels(const void* from) {
    constexpr std::size_t bytes = lanes_in<V> * sizeof(T);
    if constexpr (sizeof(T) == 4) {
        return load_lanes<V>(from);
#ifdef __SSE4_1__
    } else if constexpr (bytes == 32) {
        return (V)_mm512_cvtepu16_epi32(load_lanes<Vector<long long, bytes>>(from));
    } else {
        const auto packed = [from]() QX_LAMBDA {
            if constexpr (bytes == 4) return _mm_cvtsi32_si128(load_lanes<int>(from));
            if constexpr (bytes == 8) return _mm_loadl_epi64(static_cast<const __m128i*>(from));
            if constexpr (bytes == 16) return _mm_loadu_si128(static_cast<const __m128i*>(from));
        }();
        if constexpr (sizeof(T) == 1) {
            QX_RETURN_BY_WIDTH(V, sizeof(V), cvtepu8_epi32, packed)
        } else {
            QX_RETURN_BY_WIDTH(V, sizeof(V), cvtepu16_epi32, packed)
        }
#else
    } else {
        return __builtin_convertvector(load_lanes<Vector<T, bytes>>(from), V);
#endif
    }
}

/// Stores the low bits of each lane as channels of type T side by side; floats as they are.
template <class T, class V> QX_INLINE void store_channels(T* to, V v) {
    store_lanes(to, __builtin_convertvector(v, Vector<T, lanes_in<V> * sizeof(T)>));
}

/// A 16-bit channel. Larger values than full do not occur in well-formed pixels; limited, they stay harmless.
template <class V> QX_INLINE constexpr V limited16(V c) { return lesser(c, splat<V>(32768)); }

/// Four by four lanes turned over: float pixels to channels and back.
template <class V> QX_INLINE Planes<V> transposed(V p0, V p1, V p2, V p3) {
    const V ar01 = interleave<false>(p0, p1), ar23 = interleave<false>(p2, p3);
    const V gb01 = interleave<true>(p0, p1), gb23 = interleave<true>(p2, p3);
    return {shuffle<0, 1, 0, 1>(ar01, ar23), shuffle<2, 3, 2, 3>(ar01, ar23), shuffle<0, 1, 0, 1>(gb01, gb23),
            shuffle<2, 3, 2, 3>(gb01, gb23)};
}

/// The first byte of each four in both of their words.
template <class U> QX_INLINE U first_bytes_twice(U v) {
    return shuffle_bytes<0, -1, 0, -1, 4, -1, 4, -1, 8, -1, 8, -1, 12, -1, 12, -1>(v);
}

/// 16-bit channels are limited where formulas would leave the numbers that they are made for.
enum class Channels { limited, as_stored };

template <class P, Channels As = Channels::limited, class Pixel> QX_INLINE P load_pixels(const Pixel* p) {
    using V = typename P::Lane;
    using Channel = decltype(p->alpha);
    if constexpr (!is_wide<V>) {
        const P read{p->alpha, p->red, p->green, p->blue};
        if constexpr (sizeof(Channel) != 2 || As == Channels::as_stored) return read;
        return {limited16(read.a), limited16(read.r), limited16(read.g), limited16(read.b)};
    } else if constexpr (is_pairs<P>) {
        const auto v = load_lanes<UnsignedLanes<V>>(p);
        return {(V)first_bytes_twice(v), (V)(v & 255), (V)(v >> 8)};
    } else if constexpr (sizeof(Channel) == 1) {
        const V v = load_lanes<V>(p);
        return {v & 255, v >> 8 & 255, v >> 16 & 255, v >> 24 & 255};
    } else if constexpr (sizeof(Channel) == 2) {
        using Words = Vector<std::uint16_t, sizeof(V)>;
        const auto half = [=](int k) QX_LAMBDA {
            const auto words = load_lanes<Words>(p + k * pixels_in<P> / 2);
            return (V)(As == Channels::limited ? lesser(words, splat<Words>(32768)) : words);
        };
        const V low = half(0), high = half(1);
        const V ar = shuffle<0, 2, 0, 2>(low, high), gb = shuffle<1, 3, 1, 3>(low, high);
        return {ar & 0xFFFF, ar >> 16 & 0xFFFF, gb & 0xFFFF, gb >> 16 & 0xFFFF};
    } else {
        constexpr int quarter = pixels_in<P> / 4;
        return transposed(load_lanes<V>(p), load_lanes<V>(p + quarter), load_lanes<V>(p + 2 * quarter),
                          load_lanes<V>(p + 3 * quarter));
    }
}

/// Integer channels keep their low bits.
template <class P, class Pixel> QX_INLINE void store_pixels(Pixel* p, const P& v) {
    using V = typename P::Lane;
    using Channel = decltype(p->alpha);
    if constexpr (!is_wide<V>) {
        *p = {static_cast<Channel>(v.a), static_cast<Channel>(v.r), static_cast<Channel>(v.g),
              static_cast<Channel>(v.b)};
    } else if constexpr (is_pairs<P>) {
        store_lanes(p, (v.ag & 255) | v.rb << 8);
    } else if constexpr (sizeof(Channel) == 1) {
        store_lanes(p, (v.a & 255) | (v.r & 255) << 8 | (v.g & 255) << 16 | v.b << 24);
    } else if constexpr (sizeof(Channel) == 2) {
        const V ar = (v.a & 0xFFFF) | v.r << 16, gb = (v.g & 0xFFFF) | v.b << 16;
        store_lanes(p, interleave<false>(ar, gb));
        store_lanes(p + pixels_in<P> / 2, interleave<true>(ar, gb));
    } else {
        constexpr int quarter = pixels_in<P> / 4;
        const Planes<V> rows = transposed(v.a, v.r, v.g, v.b);
        store_lanes(p, rows.a);
        store_lanes(p + quarter, rows.r);
        store_lanes(p + 2 * quarter, rows.g);
        store_lanes(p + 3 * quarter, rows.b);
    }
}

/// Bundles of a depth for work on each colour by itself, in registers of so many bytes: pairs at 8 bits.
template <class D, std::size_t Register>
using Colours = std::conditional_t<D::number == 8 && (Register > 0), Pairs<Vector<std::int16_t, Register>>,
                                   Planes<Vector<typename D::Lane, Register>>>;

/// The alphas of a bundle's pixels.
template <class P, class Pixel> QX_INLINE typename P::Lane load_alpha(const Pixel* p) { return load_pixels<P>(p).a; }

/// Alphas where they lie in memory: a register as it is, of which only the lanes that hold an alpha count.
template <class V> struct AlphaLanes8 {
    using Lane = V;
    QX_LANE V alpha(V v) { return v & 255; }
    QX_LANE V with_alpha(V v, V alpha) { return (v & ~255) | alpha; }
};
template <class V> struct AlphaLanes16 {  // a pixel is two lanes; alpha is the low half of the first
    using Lane = V;
    QX_LANE V alpha(V v) { return limited16(v & 0xFFFF); }
    QX_LANE V with_alpha(V v, V alpha) {
        V first{};
        for (int i = 0; i < lanes_in<V>; i += 2) first[i] = -1;
        return first ? ((v & ~0xFFFF) | alpha) : v;
    }
};
template <class V> struct AlphaLanesFloat {  // a pixel is four lanes
    using Lane = V;
    QX_LANE V alpha(V v) { return v; }
    QX_LANE V with_alpha(V v, V alpha) {
        decltype(v < alpha) first{};
        for (int i = 0; i < lanes_in<V>; i += 4) first[i] = -1;
        return first ? alpha : v;
    }
};

}  // namespace qx
