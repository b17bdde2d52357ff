// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/Lanes.h"

/// Arithmetic in two's complement: places far outside a world are legal, and positions in 16.16 wrap.
namespace qx {

QX_INLINE constexpr std::int32_t wrapping_sum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
QX_INLINE constexpr std::int32_t wrapping_difference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
QX_INLINE constexpr std::int32_t wrapping_product(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

}  // namespace qx
