// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Linear generator of 15 random bits. `*seed` is read and replaced.
/// @return 0 to 32767. Re-entrant.
QX_EXPORT std::int32_t QX_Rand(std::uint32_t* seed);

namespace qx {

/// The step of QX_Rand, for loops over pixels. All arithmetic wraps at 32 bits.
/// Kept: it adds the high term of Schrage's decomposition where the published form subtracts it.
[[gnu::always_inline]] inline std::int32_t next_random(std::uint32_t& seed) {
    const std::uint32_t high = seed / 44488, low = seed % 44488;
    const std::uint32_t next = low * 48271 + high * 3399;
    seed = next == 0 ? 0x7FFFFFFF : next;
    return (static_cast<std::int32_t>(seed) >> 7) & 0x7FFF;
}

}  // namespace qx
