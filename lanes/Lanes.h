// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <emmintrin.h>
#ifdef __SSSE3__
#include <tmmintrin.h>
#endif
#ifdef __SSE4_1__
#include <smmintrin.h>
#endif
#ifdef __AVX2__
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// A lane type is one number or a compiler vector of numbers. Arithmetic, comparison, shifts and `?:` mean
/// the same for both, so one text serves every level; a vector's `?:` evaluates both sides. What differs is
/// here. Everything is inlined always, so that no two levels share a function.
#define QX_LANE [[gnu::always_inline]] static constexpr
#define QX_INLINE [[gnu::always_inline]] inline
/// For lambdas in kernels.
#define QX_LAMBDA __attribute__((always_inline))
/// Returns as a Result what the instruction of this name gives in registers of so many bytes: _mm_name, _mm256_name or
/// _mm512_name of the operands. These depend on a parameter of the template, so that a name is looked up only where it
/// is called: a level need not have those of wider registers.
#define QX_RETURN_BY_WIDTH(Result, bytes, name, ...)            \
    if constexpr ((bytes) == 16) {                              \
        return (Result)_mm_##name(__VA_ARGS__);                 \
    } else if constexpr ((bytes) == 32) {                       \
        return (Result)_mm256_##name(__VA_ARGS__);              \
    } else {                                                    \
        static_assert((bytes) == 64, "no register is as wide"); \
        return (Result)_mm512_##name(__VA_ARGS__);              \
    }

namespace qx {

template <class V> inline constexpr bool is_wide = !std::is_arithmetic_v<V>;

/// A vector of numbers that fills a register of so many bytes; of 0 bytes the number itself.
template <class T, std::size_t Bytes> struct VectorOf { typedef T Type [[gnu::vector_size(Bytes)]]; };
template <class T> struct VectorOf<T, 0> { using Type = T; };
template <class T, std::size_t Bytes> using Vector = typename VectorOf<T, Bytes>::Type;

template <class V> struct LaneTraits { using Number = V; };
template <class V>
requires is_wide<V>
struct LaneTraits<V> {
    using Number = std::remove_cvref_t<decltype(V{}[0])>;
};
template <class V> using NumberOf = typename LaneTraits<V>::Number;
/// The lanes of V, which are of four bytes, as floats.
template <class V> using FloatLanes = Vector<float, is_wide<V> ? sizeof(V) : 0>;
/// What instructions take for integers of any size.
template <class V> using Register = Vector<long long, sizeof(V)>;

/// How many numbers V holds.
template <class V> inline constexpr int lanes_in = sizeof(V) / sizeof(NumberOf<V>);

/// True for lanes of two bytes, which 8-bit arithmetic fits when products count as unsigned.
template <class V> inline constexpr bool is_short = is_wide<V> && sizeof(NumberOf<V>) == 2;
template <class V> using UnsignedLanes = Vector<std::uint16_t, sizeof(V)>;

/// `V` with every lane equal to `x`.
template <class V, class T> QX_INLINE constexpr V splat(T x) {
    if constexpr (is_wide<V>) {
        return V{} + static_cast<NumberOf<V>>(x);
    } else {
        return static_cast<V>(x);
    }
}

/// In every lane its number.
template <class V> QX_INLINE constexpr V lane_numbers() {
    V v{};
    if constexpr (is_wide<V>) {
        for (int i = 0; i < lanes_in<V>; ++i) v[i] = static_cast<NumberOf<V>>(i);
    }
    return v;
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
        return _mm_movemask_epi8((Register<M>)mask) == 0xFFFF;
    } else if constexpr (sizeof(M) == 32) {
        return _mm256_movemask_epi8((Register<M>)mask) == -1;
    } else {
        return _mm512_movepi16_mask((Register<M>)mask) == 0xFFFFFFFF;
    }
}

/// True when every lane equals x.
template <class V> QX_INLINE constexpr bool all_equal(V v, NumberOf<V> x) {
#ifdef __AVX512BW__  // straight from the comparison's mask, which the compiler would make a vector first
    if constexpr (sizeof(V) == 64) {
        const V other = splat<V>(x);
        if constexpr (std::is_same_v<NumberOf<V>, float>) {
            return _mm512_cmp_ps_mask((__m512)v, (__m512)other, _CMP_NEQ_UQ) == 0;
        } else if constexpr (sizeof(NumberOf<V>) == 2) {
            return _mm512_cmpneq_epi16_mask((__m512i)v, (__m512i)other) == 0;
        } else {
            return _mm512_cmpneq_epi32_mask((__m512i)v, (__m512i)other) == 0;
        }
    }
#endif
    return all(v == x);
}

/// Float to a 32-bit integer as the processor does it: truncated, and 0x80000000 for NaN and what does
/// not fit. Callers that need fewer bits keep the low ones.
QX_INLINE std::int32_t truncate_to_int(float x) { return _mm_cvttss_si32(_mm_set_ss(x)); }
QX_INLINE std::int32_t truncate_to_int(double x) { return _mm_cvttsd_si32(_mm_set_sd(x)); }
/// The same to 64 bits.
QX_INLINE std::int64_t truncate_to_int64(float x) { return _mm_cvttss_si64(_mm_set_ss(x)); }
/// To 32 bits lane by lane.
template <class F>
requires is_wide<F> QX_INLINE auto truncate_to_int(F x) {
    using V = Vector<std::int32_t, sizeof(F)>;
    QX_RETURN_BY_WIDTH(V, sizeof(F), cvttps_epi32, x)
}

/// To the nearest integer, and to the even one between two.
template <class F>
requires is_wide<F> QX_INLINE auto round_to_int(F x) {
    using V = Vector<std::int32_t, sizeof(F)>;
    QX_RETURN_BY_WIDTH(V, sizeof(F), cvtps_epi32, x)
}

template <class V> QX_INLINE FloatLanes<V> to_float(V x) {
    if constexpr (is_wide<V>) {
        return __builtin_convertvector(x, FloatLanes<V>);
    } else {
        return static_cast<float>(x);
    }
}

/// Correctly rounded square root of every lane.
template <class F> QX_INLINE F root(F x) {
    if constexpr (is_wide<F>) {
        QX_RETURN_BY_WIDTH(F, sizeof(F), sqrt_ps, x)
    } else {
        return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x)));
    }
}
/// The next integer that is not above.
template <class F> QX_INLINE F floor_of(F x) {
    if constexpr (is_wide<F>) {
        QX_RETURN_BY_WIDTH(F, sizeof(F), floor_ps, x)
    } else {
        return __builtin_floorf(x);
    }
}

/// Upper halves of products of lanes of 16 bits without a sign.
template <class U> QX_INLINE U upper_product(U x, U y) {
    QX_RETURN_BY_WIDTH(U, sizeof(U), mulhi_epu16, (Register<U>)x, (Register<U>)y)
}
/// Products of lanes of 16 bits, two neighbours added.
template <class V> QX_INLINE V multiply_add(V x, V y) {
    QX_RETURN_BY_WIDTH(V, sizeof(V), madd_epi16, (Register<V>)x, (Register<V>)y)
}
/// Products of the lower halves, which have no sign, of lanes of 64 bits.
template <class U> QX_INLINE U lower_half_product(U x, U y) {
    QX_RETURN_BY_WIDTH(U, sizeof(U), mul_epu32, (Register<U>)x, (Register<U>)y)
}

/// Quotient of integers for 0 <= n < 2^20 and a divisor from 1 to 2^9: exact up to 2^9, and above 2^8 where it is
/// larger. A divisor of 0 gives a value that is not used; quotients by the same divisor share the one division.
///
/// (n + 1/2) / d lies at least 1 / 2d from the next integer, and the roundings of the reciprocal and of the product
/// move a quotient up to 2^9 by less than 2^-13.
template <class V> QX_INLINE constexpr V small_quotient(V n, V divisor) {
    if constexpr (is_wide<V>) {
        return truncate_to_int((to_float(n) + 0.5f) * (1.0f / to_float(divisor)));
    } else {
        return n / divisor;
    }
}

/// The same for n of either sign in lanes, truncated towards zero: the half has the sign of n.
template <class V> QX_INLINE V small_signed_quotient(V n, V divisor) {
    const auto f = to_float(n);
    using F = FloatLanes<V>;
    const F half = (F)(((V)f & INT32_MIN) | (V)splat<F>(0.5f));
    return truncate_to_int((f + half) * (1.0f / to_float(divisor)));
}

/// Quotient of integers for 0 <= n < 2^31, a divisor from 1 to 2^16 and a quotient below 2^17. A divisor of 0 gives a
/// value that is not used; quotients by the same divisor share the one division.
///
/// Three roundings (n, 1 / divisor, their product) leave an error below 2^17 * 3.01 * 2^-24 < 1/42, and subtracting
/// 1/32 rounds by at most 1/256: so the estimate lies below the quotient, by less than 1/16. Truncated, it is the
/// quotient or one less, which the remainder tells.
template <class V> QX_INLINE constexpr V large_quotient(V n, V divisor) {
    if constexpr (is_wide<V>) {
        const auto reciprocal = 1.0f / to_float(divisor);
        const V estimate = truncate_to_int(to_float(n) * reciprocal - 0.03125f);
        const V remainder = n - estimate * divisor;
        return estimate - (remainder >= divisor);
    } else {
        return n / divisor;
    }
}

/// One more where a condition holds, in lanes of 16 bits.
template <class M, class U> QX_INLINE U plus_one_where(M holds, U v) {
#ifdef __AVX512BW__
    if constexpr (sizeof(U) == 64) return holds ? v + 1 : v;  // one addition under a mask
#endif
    return v - (U)holds;
}

/// Quotients of unsigned numbers of 16 bits by divisors from 1 to 510, in lanes of 16 bits. By a divisor of 0 the value
/// is not used.
///
/// n times floor(65536 / d), cut to its upper half, is less than n / d by less than 1 and by the cut: the quotient or
/// one less, which the remainder tells. The float quotient of 65536 never reaches the next integer. For d = 1 the
/// factor is 65535, which keeps that error.
template <class V> QX_INLINE V short_reciprocal(V divisors) {
    const auto exact = 65536.0f / to_float(divisors);
    return lesser(truncate_to_int(exact), splat<V>(65535));
}
template <class U> QX_INLINE U short_quotient(U n, U divisor, U reciprocal) {
    const U estimate = upper_product(n, reciprocal);
    const U remainder = n - estimate * divisor;
    return plus_one_where(remainder >= divisor, estimate);
}
/// Reciprocals of every lane, and of lanes of which both in four bytes are equal.
template <class V> QX_INLINE UnsignedLanes<V> short_reciprocals(V divisors) {
    using I = Vector<std::int32_t, sizeof(V)>;
    const I low = short_reciprocal((I)divisors & 0xFFFF), high = short_reciprocal((I)divisors >> 16 & 0xFFFF);
    return (UnsignedLanes<V>)((low & 0xFFFF) | high << 16);
}
template <class V> QX_INLINE UnsignedLanes<V> short_reciprocals_of_twins(V divisors) {
    using I = Vector<std::int32_t, sizeof(V)>;
    const I one = short_reciprocal((I)divisors & 0xFFFF);
    return (UnsignedLanes<V>)(one | one << 16);
}

/// A float each: numbers base[index].
template <class I> QX_INLINE FloatLanes<I> gather_floats(const float* base, I index) {
    if constexpr (!is_wide<I>) {
        return base[index];
#ifdef __AVX512F__
    } else if constexpr (sizeof(I) == 64) {
        return (FloatLanes<I>)_mm512_i32gather_ps((__m512i)index, base, 4);
#endif
#ifdef __AVX2__
    } else if constexpr (sizeof(I) == 32) {
        return (FloatLanes<I>)_mm256_i32gather_ps(base, (__m256i)index, 4);
#endif
    } else {
        FloatLanes<I> v;
        for (int i = 0; i < lanes_in<I>; ++i) v[i] = base[index[i]];
        return v;
    }
}

/// Four bytes at `base` and each lane's distance from it in bytes.
template <class V> QX_INLINE V gather(const void* base, V bytes) {
    if constexpr (!is_wide<V>) {
        V v;
        __builtin_memcpy(&v, static_cast<const std::byte*>(base) + bytes, sizeof v);
        return v;
#ifdef __AVX512F__
    } else if constexpr (sizeof(V) == 64) {
        return (V)_mm512_i32gather_epi32((__m512i)bytes, base, 1);
#endif
#ifdef __AVX2__
    } else if constexpr (sizeof(V) == 32) {
        return (V)_mm256_i32gather_epi32(static_cast<const int*>(base), (__m256i)bytes, 1);
#endif
    } else {
        V v;
        for (int i = 0; i < lanes_in<V>; ++i) {
            NumberOf<V> lane;
            __builtin_memcpy(&lane, static_cast<const std::byte*>(base) + bytes[i], sizeof lane);
            v[i] = lane;
        }
        return v;
    }
}

}  // namespace qx
