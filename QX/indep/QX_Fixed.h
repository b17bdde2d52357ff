// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Wrapping.h"

/// Numbers in 16.16: sums and products wrap in two's complement.
namespace qx {

inline constexpr std::int32_t kFixedOne = 0x10000, kFixedHalf = 0x8000;

/// Nearest 16.16 number, halves away from zero; what does not fit gives the least one.
inline std::int32_t to_fixed(double v) { return truncate_to_int(v * 65536 + (v < 0 ? -0.5 : 0.5)); }

/// The low 32 bits of a number below 2^63: areas in 16.16 pass a signed 32-bit number and are read without a sign.
inline std::int32_t low_bits(double v) { return static_cast<std::int32_t>(static_cast<std::int64_t>(v)); }

}  // namespace qx
