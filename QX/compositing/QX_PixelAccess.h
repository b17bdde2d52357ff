// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_Planes.h"

/// Pixels between memory, at any alignment, and lanes. A bundle is what one step of a row works on: its type tells
/// how many pixels it holds.
namespace qx {

/// Vector types, by the size of a register.
typedef std::int32_t Int4 [[gnu::vector_size(16)]];
typedef std::int32_t Int8 [[gnu::vector_size(32)]];
typedef float Float4 [[gnu::vector_size(16)]];
typedef float Float8 [[gnu::vector_size(32)]];

template <class P> inline constexpr int pixels_in = 1;
template <> inline constexpr int pixels_in<Planes<Int4>> = 4;
template <> inline constexpr int pixels_in<Planes<Int8>> = 8;
template <> inline constexpr int pixels_in<Register<Float8>> = 2;

template <class P> inline constexpr bool is_register = false;
template <class V> inline constexpr bool is_register<Register<V>> = true;

/// Every lane gets the alpha, the first of the four lanes, of its pixel.
template <class V> QX_INLINE V spread_alpha(V argb) {
    if constexpr (sizeof(V) == 16) {
        return (V)_mm_shuffle_ps((__m128)argb, (__m128)argb, 0);
    } else {
#ifdef __AVX2__
        return (V)_mm256_shuffle_ps((__m256)argb, (__m256)argb, 0);
#endif
    }
}

template <class V, class T> QX_INLINE V load_lanes(const T* from) {
    V v;
    __builtin_memcpy(&v, from, sizeof v);
    return v;
}
template <class V, class T> QX_INLINE void store_lanes(T* to, V v) { __builtin_memcpy(to, &v, sizeof v); }

/// A 16-bit channel. Larger values than full do not occur in well-formed pixels; limited, they stay harmless.
QX_INLINE constexpr std::int32_t limited16(std::uint16_t c) { return c > Depth16::full ? Depth16::full : c; }

template <class P, class Pixel> QX_INLINE P load_pixels(const Pixel* p) {
    if constexpr (is_register<P>) {
        const auto argb = load_lanes<typename P::Lane>(p);
        return {spread_alpha(argb), argb};
    } else if constexpr (is_wide<typename P::Lane>) {
        const auto v = load_lanes<typename P::Lane>(p);
        return {v & 255, v >> 8 & 255, v >> 16 & 255, v >> 24 & 255};
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return {limited16(p->alpha), limited16(p->red), limited16(p->green), limited16(p->blue)};
    } else {
        return {p->alpha, p->red, p->green, p->blue};
    }
}

/// Integer channels keep their low bits.
template <class P, class Pixel> QX_INLINE void store_pixels(Pixel* p, const P& v) {
    using Channel = QX_ChannelOf<Pixel>;
    if constexpr (is_register<P>) {
        store_lanes(p, v.argb);
    } else if constexpr (is_wide<typename P::Lane>) {
        store_lanes(p, (v.a & 255) | (v.r & 255) << 8 | (v.g & 255) << 16 | v.b << 24);
    } else {
        *p = {static_cast<Channel>(v.a), static_cast<Channel>(v.r), static_cast<Channel>(v.g),
              static_cast<Channel>(v.b)};
    }
}

/// The alphas of a bundle's pixels.
template <class P, class Pixel> QX_INLINE typename P::Lane load_alpha(const Pixel* p) {
    using V = typename P::Lane;
    if constexpr (is_register<P>) {
        return spread_alpha(load_lanes<V>(p));
    } else if constexpr (is_wide<V>) {
        return load_lanes<V>(p) & 255;
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return limited16(p->alpha);
    } else {
        return p->alpha;
    }
}

/// Alphas where they lie in memory: a register as it is, of which only the lanes that hold an alpha count.
template <class V> struct AlphaLanes8 {
    using Lane = V;
    QX_LANE V alpha(V v) { return v & 255; }
    QX_LANE V with_alpha(V v, V alpha) { return (v & ~255) | alpha; }
};
template <class V> struct AlphaLanes16 {  // a pixel is two lanes; alpha is the low half of the first
    using Lane = V;
    QX_LANE V alpha(V v) { return lesser(v & 0xFFFF, splat<V>(Depth16::full)); }
    QX_LANE V with_alpha(V v, V alpha) {
        V first{};
        for (unsigned i = 0; i < sizeof(V) / 4; i += 2) first[i] = -1;
        return first ? ((v & ~0xFFFF) | alpha) : v;
    }
};
template <class V> struct AlphaLanesFloat {  // a pixel is four lanes
    using Lane = V;
    QX_LANE V alpha(V v) { return v; }
    QX_LANE V with_alpha(V v, V alpha) {
        decltype(v < alpha) first{};
        for (unsigned i = 0; i < sizeof(V) / 4; i += 4) first[i] = -1;
        return first ? alpha : v;
    }
};

}  // namespace qx
