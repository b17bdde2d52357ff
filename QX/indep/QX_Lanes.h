// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <emmintrin.h>
#ifdef __AVX2__
#include <immintrin.h>
#endif

#include <cstdint>
#include <type_traits>

/// A lane type is one number or a compiler vector of numbers. Arithmetic, comparison, shifts and `?:` mean
/// the same for both, so one text serves every level; a vector's `?:` evaluates both sides. What differs is
/// here. Everything is inlined always, so that no two levels share a function.
#define QX_LANE [[gnu::always_inline]] static constexpr
#define QX_INLINE [[gnu::always_inline]] inline

namespace qx {

template <class V> inline constexpr bool is_wide = !std::is_arithmetic_v<V>;

template <class V> struct LaneTraits { using Float = float; };
template <class V>
requires is_wide<V>
struct LaneTraits<V> {
    typedef float Float [[gnu::vector_size(sizeof(V))]];
};

/// `V` with every lane equal to `x`.
template <class V, class T> QX_INLINE constexpr V splat(T x) {
    if constexpr (is_wide<V>) {
        return V{} + static_cast<std::remove_cvref_t<decltype(V{}[0])>>(x);
    } else {
        return static_cast<V>(x);
    }
}

template <class V> QX_INLINE constexpr V lesser(V a, V b) { return a < b ? a : b; }
template <class V> QX_INLINE constexpr V greater(V a, V b) { return a > b ? a : b; }
/// The size of the difference; a difference of a negative zero has a size of 0 without a sign.
template <class V> QX_INLINE constexpr V distance(V a, V b) {
    const V x = a - b;
    return x > V{} ? x : V{} - x;
}

/// True when the condition holds in every lane.
template <class M> QX_INLINE constexpr bool all(M mask) {
    if constexpr (!is_wide<M>) {
        return static_cast<bool>(mask);
    } else if constexpr (sizeof(M) == 16) {
        return _mm_movemask_epi8((__m128i)mask) == 0xFFFF;
    } else {
#ifdef __AVX2__
        return _mm256_movemask_epi8((__m256i)mask) == -1;
#else
        static_assert(sizeof(M) == 16, "this level has vectors of 16 bytes");
        return false;
#endif
    }
}

/// Float to a 32-bit integer as the processor does it: truncated, and 0x80000000 for NaN and what does
/// not fit. Callers that need fewer bits keep the low ones.
QX_INLINE std::int32_t truncate_to_int(float x) { return _mm_cvttss_si32(_mm_set_ss(x)); }
QX_INLINE std::int32_t truncate_to_int(double x) { return _mm_cvttsd_si32(_mm_set_sd(x)); }

/// Correctly rounded square root of every lane.
template <class F> QX_INLINE F root(F x) {
    if constexpr (sizeof(F) == 16) {
        return (F)_mm_sqrt_ps((__m128)x);
    } else {
#ifdef __AVX2__
        return (F)_mm256_sqrt_ps((__m256)x);
#endif
    }
}

/// Quotient of integers, truncated towards zero. In a vector |n| stays below 2^24, where the correctly rounded
/// float quotient never reaches the next integer, and a divisor of 0 gives a value that is not used.
template <class V> QX_INLINE constexpr V quotient(V n, V divisor) {
    if constexpr (is_wide<V>) {
        using F = typename LaneTraits<V>::Float;
        return __builtin_convertvector(__builtin_convertvector(n, F) / __builtin_convertvector(divisor, F), V);
    } else {
        return n / divisor;
    }
}

}  // namespace qx
