// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Lanes.h"

namespace qx {

/// (sum + d / 2) / d of an odd number d up to 255 of bytes in lanes of 16 bits, by a factor of 16 bits and a shift.
/// With k = 16 + shift and 2^shift <= d < 2^(shift + 1), the factor is 2^k / d rounded up where that adds less than
/// 2^shift / d, and n * factor >> k is exact for n below 2^16; else it is rounded down, which takes off no more than
/// that, and (n + 1) * factor >> k is exact. The bias is what n has more than the sum.
struct ShortMean {
    std::uint16_t bias, factor;
    int shift;

    QX_INLINE constexpr explicit ShortMean(std::uint32_t d) : bias(0), factor(0), shift(31 - __builtin_clz(d)) {
        const std::uint32_t power = 65536u << shift, below = power / d, excess = (below + 1) * d - power;
        const bool up = excess < 1u << shift && below < 65535;
        factor = static_cast<std::uint16_t>(up ? below + 1 : below < 65536 ? below : 65535);
        bias = static_cast<std::uint16_t>(d / 2 + (up ? 0 : 1));
    }
    QX_INLINE constexpr std::uint32_t of(std::uint32_t sum) const { return (sum + bias) * factor >> 16 >> shift; }
};

}  // namespace qx
