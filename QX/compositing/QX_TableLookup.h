// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Depth.h"

/// Lookups in tables of 16-bit entries, for numbers and for lanes.
namespace qx {

/// An entry of a table and the next, which are read at once. @param bytes  from `base` to the entry
template <class V> struct Neighbours { V first, second; };
template <class V> QX_INLINE Neighbours<V> neighbours_at(const void* base, V bytes) {
    const V both = gather(base, bytes);
    return {both & 0xFFFF, both >> 16 & 0xFFFF};
}

/// Between both by the way that lies behind, of 1 << Bits, rounded.
template <int Bits, class V> QX_INLINE V on_line(const Neighbours<V>& at, V way) {
    return at.first + (((at.second - at.first) * way + (1 << (Bits - 1))) >> Bits);
}

/// The value of a table of 4097 entries over 0..32768 at a channel, between two entries.
/// Channels beyond the scale read its end. @param start  bytes from `base` to the table
template <class V> QX_INLINE V table_value16(const void* base, V start, V channel) {
    const V c = lesser(channel, splat<V>(Depth16::full)), i = lesser(c >> 3, splat<V>(4095));
    return on_line<3>(neighbours_at(base, start + 2 * i), c - 8 * i);
}

}  // namespace qx
