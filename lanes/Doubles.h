// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Lanes.h"

/// Lanes of four bytes to doubles, in a register twice as wide, and back: rounded to float, and truncated to an integer
/// that fits.
namespace qx {

template <class V> using DoublesOf = Vector<double, 2 * sizeof(V)>;

#ifdef __AVX2__
template <class I> QX_INLINE DoublesOf<I> to_double(I x) {
#ifdef __AVX512F__
    if constexpr (sizeof(I) == 32) return (DoublesOf<I>)_mm512_cvtepi32_pd((__m256i)x);
#endif
    if constexpr (sizeof(I) == 16) return (DoublesOf<I>)_mm256_cvtepi32_pd((__m128i)x);
}

template <class D> QX_INLINE Vector<float, sizeof(D) / 2> narrowed_to_float(D x) {
#ifdef __AVX512F__
    if constexpr (sizeof(D) == 64) return (Vector<float, 32>)_mm512_cvtpd_ps((__m512d)x);
#endif
    if constexpr (sizeof(D) == 32) return (Vector<float, 16>)_mm256_cvtpd_ps((__m256d)x);
}

template <class D> QX_INLINE Vector<std::int32_t, sizeof(D) / 2> narrowed_to_int(D x) {
#ifdef __AVX512F__
    if constexpr (sizeof(D) == 64) return (Vector<std::int32_t, 32>)_mm512_cvttpd_epi32((__m512d)x);
#endif
    if constexpr (sizeof(D) == 32) return (Vector<std::int32_t, 16>)_mm256_cvttpd_epi32((__m256d)x);
}
#endif

}  // namespace qx
