// SPDX-License-Identifier: Apache-2.0
// Float quotients by a box's divisor, limited to 0..1, for one level.
#pragma once

#include <bit>

#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// Limited to 0 and full; NaN stays.
template <class F> QX_INLINE F not_below(F least, F v) { QX_RETURN_BY_WIDTH(F, sizeof(F), max_ps, least, v) }
template <class F> QX_INLINE F not_above(F most, F v) { QX_RETURN_BY_WIDTH(F, sizeof(F), min_ps, most, v) }

/// By a divisor that takes at most 21 bits from its first to its last set one, such a quotient is the fused w * high +
/// (w * low), where high + low is the reciprocal within 2^-49 of it. Before its one rounding that is off by less than
/// 2^-47 of the quotient. A float over such a divisor lies 2^-46 of itself or more from the middle of two floats: that
/// has 25 bits, and the difference is a whole number over both. So both round alike, unless they are so small that
/// numbers lose bits: who works with that divides them.
class ShareOfBox {
    using F = Wide<float>;

public:
    /// Whether a level has this form for a divisor.
    static bool fits(std::int64_t divisor) {
        if (kRegister < 64 || divisor <= 0) return false;
        const auto bits = static_cast<std::uint64_t>(divisor);
        return std::bit_width(bits) - std::countr_zero(bits) <= 21;
    }
    /// @param scale  a power of two that the divisor counts times
    QX_INLINE ShareOfBox(std::int64_t divisor, float scale) {
        const double by = static_cast<double>(divisor) * static_cast<double>(scale), exact = 1.0 / by;
        const auto high = static_cast<float>(exact);
        most_ = splat<F>(static_cast<float>(by));
        high_ = splat<F>(high);
        low_ = splat<F>(static_cast<float>(exact - static_cast<double>(high)));
    }
    /// Marks what must be divided: what is tiny, and not 0.
    QX_INLINE F of(F whole, std::uint32_t& marks) const {
        const F w = not_above(most_, not_below(F{}, whole));
#ifdef __AVX512F__
        if constexpr (kRegister == 64) {
            constexpr int least = 0x17800000;  // 2^-80
            const __m512i before = _mm512_sub_epi32((__m512i)w, _mm512_set1_epi32(1));
            marks |= _mm512_cmplt_epu32_mask(before, _mm512_set1_epi32(least - 1));
            return (F)_mm512_fmadd_ps((__m512)w, (__m512)high_, (__m512)(w * low_));
        }
#endif
        marks = 1;
        return w;
    }
    /// Marks what is infinite.
    QX_INLINE static void mark_infinite(F v, std::uint32_t& marks) {
#ifdef __AVX512F__
        if constexpr (kRegister == 64) {
            const __m512i twice = _mm512_slli_epi32((__m512i)v, 1);
            marks |= _mm512_cmpeq_epi32_mask(twice, _mm512_set1_epi32(static_cast<int>(0xFF000000)));
        }
#else
        (void)v, (void)marks;
#endif
    }

private:
    F most_, high_, low_;
};

}  // namespace qx::QX_ISA
