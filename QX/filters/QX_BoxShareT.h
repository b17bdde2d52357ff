// SPDX-License-Identifier: Apache-2.0
// Boxes of floats whose divisor stays, for one level.
#pragma once

#include <bit>

#include "QX/filters/QX_BlurKernels.h"
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

/// The rule of floats where the divisor stays and quotients by it have a quick form. What whole ends lack, nothing,
/// shows only in the product with an infinite pixel, after which its sum is infinite or no number for good: then, and
/// where the quick form does not hold, all has to be done once more by the rule as it is told.
template <bool Short> class QuickBox {
    using F = Wide<float>;

public:
    QX_INLINE explicit QuickBox(const BoxStretch& s)
        : share_(s.divisor, Short ? 1.0f : 0x1p-10f), shortage_(splat<F>(static_cast<float>(s.end_short))) {}

    /// @param left  tells the pixels at the left end of the window, where they matter
    template <class Left> QX_INLINE F step(F& sum, F enter, F leave, const Left& left) {
        sum = (sum - leave) + enter;
        F whole = sum;
        if constexpr (Short) whole = whole * 1024.0f - shortage_ * (left() + enter);
        return share_.of(whole);
    }
    template <int Count> QX_INLINE bool holds(const F (&sums)[Count]) const {
        F differences{};
        for (const F& sum : sums) differences += sum - sum;  // no number where one is infinite or none
        return share_.holds() && (Short || all_equal(differences, 0.0f));
    }

private:
    ShareOfBox share_;
    F shortage_;
};

}  // namespace qx::QX_ISA
