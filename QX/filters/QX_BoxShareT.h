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
/// has 25 bits, and the difference is a whole number over both. So both round alike, unless numbers lose bits: above
/// 2^-60 none does, and 0 has none. Whether all were such is told in the end.
class ShareOfBox {
    using F = Wide<float>;
    using U = Wide<std::uint32_t>;

public:
    /// Whether a level has this form for a divisor.
    static bool fits(std::int64_t divisor) {
        if (kRegister < 64 || divisor <= 0) return false;
        const auto bits = static_cast<std::uint64_t>(divisor);
        return static_cast<int>(std::bit_width(bits)) - std::countr_zero(bits) <= 21;
    }
    /// @param scale  a power of two that the divisor counts times
    QX_INLINE ShareOfBox(std::int64_t divisor, float scale) {
        const double by = static_cast<double>(divisor) * static_cast<double>(scale), exact = 1.0 / by;
        const auto high = static_cast<float>(exact);
        most_ = splat<F>(static_cast<float>(by));
        high_ = splat<F>(high);
        low_ = splat<F>(static_cast<float>(exact - static_cast<double>(high)));
    }
    QX_INLINE F of(F whole) {
        const F w = not_above(most_, not_below(F{}, whole));
#ifdef __AVX512F__
        if constexpr (kRegister == 64) {
            least_ = lesser(least_, (U)w - 1u);  // of 0 that is the largest number
            return (F)_mm512_fmadd_ps((__m512)w, (__m512)high_, (__m512)(w * low_));
        }
#endif
        return w / most_;
    }
    /// False when some number was so small that its quotient may be another one.
    QX_INLINE bool holds() const {
        constexpr std::uint32_t bits = 0x21800000;  // of 2^-60
        bool all = true;
        for (int i = 0; i < lanes_in<U>; ++i) all = all && least_[i] >= bits - 1;
        return all;
    }

private:
    F most_, high_, low_;
    U least_ = splat<U>(~0u);
};

}  // namespace qx::QX_ISA
