// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Depth.h"

namespace qx {

/// The value of a table of 4097 entries over 0..32768 at a channel, between two entries by their distance, rounded.
/// Channels beyond the scale read its end.
QX_INLINE std::int32_t table_value16(const std::uint16_t (&table)[4097], std::int32_t c) {
    c = lesser(c, Depth16::full);
    const std::int32_t i = c >> 3, f = c & 7;
    const std::int32_t at = table[i];
    return f == 0 ? at : at + (((table[i + 1] - at) * f + 4) >> 3);
}

}  // namespace qx
