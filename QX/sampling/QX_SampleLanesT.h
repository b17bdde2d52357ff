// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "QX/indep/QX_Depth.h"

/// A pixel's four channels as numbers in 128-bit registers, alpha first: four floats, or four doubles in two registers.
/// Both have +, - and *, channel by channel, so that one text of a sampler serves both.
namespace qx::sampling {

typedef float Float4 [[gnu::vector_size(16)]];
typedef double Double2 [[gnu::vector_size(16)]];
typedef std::int32_t Int4 [[gnu::vector_size(16)]];

struct Double4 {
    Double2 low, high;  // alpha and red, green and blue
    QX_INLINE friend Double4 operator+(Double4 a, Double4 b) { return {a.low + b.low, a.high + b.high}; }
    QX_INLINE friend Double4 operator*(Double4 a, Double4 b) { return {a.low * b.low, a.high * b.high}; }
};

template <class Real> using Quad = std::conditional_t<std::is_same_v<Real, float>, Float4, Double4>;

QX_INLINE Float4 splat4(float x) { return Float4{x, x, x, x}; }
QX_INLINE Double4 splat4(double x) { return {Double2{x, x}, Double2{x, x}}; }
QX_INLINE float alpha_of(Float4 q) { return q[0]; }
QX_INLINE double alpha_of(Double4 q) { return q.low[0]; }
QX_INLINE Float4 with_alpha(Float4 q, float a) { return (Float4)_mm_move_ss((__m128)q, _mm_set_ss(a)); }
QX_INLINE Double4 with_alpha(Double4 q, double a) {
    return {(Double2)_mm_move_sd((__m128d)q.low, _mm_set_sd(a)), q.high};
}

template <class T> QX_INLINE T load_at(const void* address) {
    T value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

/// A pixel as the bits that it is stored in.
template <class Pixel> using Bits = std::conditional_t<sizeof(Pixel) == 4, std::uint32_t, std::uint64_t>;
/// The bits of alpha among them.
template <class Pixel>
inline constexpr auto kAlphaBits = static_cast<Bits<Pixel>>(static_cast<QX_ChannelOf<Pixel>>(-1));

template <class Pixel> QX_INLINE Int4 widen_to_int(Bits<Pixel> bits) {
    const __m128i zero = _mm_setzero_si128();
    if constexpr (sizeof(Pixel) == 4) {
        const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<std::int32_t>(bits)), zero);
        return (Int4)_mm_unpacklo_epi16(words, zero);
    } else {
        return (Int4)_mm_unpacklo_epi16(_mm_cvtsi64_si128(static_cast<std::int64_t>(bits)), zero);
    }
}

/// The pixel at an address of any alignment, as numbers on the scale of its depth.
template <class Real, class Pixel> QX_INLINE Quad<Real> widen(const std::byte* at) {
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        const auto q = load_at<Float4>(at);
        if constexpr (std::is_same_v<Real, float>) {
            return q;
        } else {
            const auto m = (__m128)q;
            return {(Double2)_mm_cvtps_pd(m), (Double2)_mm_cvtps_pd(_mm_movehl_ps(m, m))};
        }
    } else {
        const auto i = (__m128i)widen_to_int<Pixel>(load_at<Bits<Pixel>>(at));
        if constexpr (std::is_same_v<Real, float>) {
            return (Float4)_mm_cvtepi32_ps(i);
        } else {
            return {(Double2)_mm_cvtepi32_pd(i), (Double2)_mm_cvtepi32_pd(_mm_shuffle_epi32(i, 0xEE))};
        }
    }
}

QX_INLINE Int4 truncate(Float4 q) { return (Int4)_mm_cvttps_epi32((__m128)q); }
QX_INLINE Int4 truncate(Double4 q) {
    return (Int4)_mm_unpacklo_epi64(_mm_cvttpd_epi32((__m128d)q.low), _mm_cvttpd_epi32((__m128d)q.high));
}

/// Integers to a pixel: bytes are limited to 0..255, words keep their low 16 bits.
template <class Pixel> QX_INLINE Bits<Pixel> pack(Int4 channels) {
    auto m = (__m128i)channels;
    if constexpr (sizeof(Pixel) == 4) {
        m = _mm_packs_epi32(m, m);
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(m, m)));
    } else {
        m = _mm_shufflehi_epi16(_mm_shufflelo_epi16(m, 0x88), 0x88);
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_shuffle_epi32(m, 0x88)));
    }
}

/// Rounds numbers that are not below 0 to the pixel's depth; float pixels keep them.
template <class Pixel, class Q> QX_INLINE auto to_pixel(Q q) {
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return q;
    } else {
        using Real = std::conditional_t<std::is_same_v<Q, Float4>, float, double>;
        return pack<Pixel>(truncate(q + splat4(Real{0.5})));
    }
}

/// `value` is bits or numbers of the pixel's size.
template <class Pixel, class T> QX_INLINE void put(Pixel* out, T value) {
    static_assert(sizeof(Pixel) == sizeof(T));
    std::memcpy(out, &value, sizeof value);
}

}  // namespace qx::sampling
