// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/compositing/QX_TableLookup.h"
#include "QX/indep/QX_Export.h"
#include "lanes/Tables.h"

namespace qx {

/// The two curves of soft light: `up` is D(x) - x with D(x) = ((16x - 12)x + 4)x up to 0.25 and sqrt(x) above,
/// `down` is x(1 - x). Index 4096 can be read by an interpolating lookup.
struct SoftLightTables {
    std::uint16_t up16[4097], down16[4097];
    float up_float[4097], down_float[4097];
    std::uint8_t curve8[512];  ///< by channel value: `down`, and from 256 on `up`
};

/// Built once by QX_Birth, read-only after.
QX_EXPORT extern SoftLightTables soft_light;
void build_soft_light_tables();

/// The curves are read as `down` where cs is in the lower half, else `up`.
///
/// The 16-bit curve of cd.
template <class M, class V> QX_INLINE V soft_curve16(M lower, V cd) {
    const auto start = [](std::size_t bytes) QX_LAMBDA { return splat<V>(static_cast<std::int32_t>(bytes)); };
    const V table = lower ? start(offsetof(SoftLightTables, down16)) : start(offsetof(SoftLightTables, up16));
    return table_value16(&soft_light, table, cd);
}

/// The curve of float channels. Values beyond the scale read its end, so that nothing is read outside the table.
template <class M, class V> QX_INLINE V soft_curve_float(M lower, V cd) {
    const V scaled = (cd > 0.0f ? lesser(cd, splat<V>(1.0f)) : splat<V>(0.0f)) * 4096.0f;  // no number reads the start
    if constexpr (is_wide<V>) {
        using I = Vector<std::int32_t, sizeof(V)>;
        const auto start = [](std::size_t bytes) QX_LAMBDA { return splat<I>(static_cast<std::int32_t>(bytes)); };
        const I i = truncate_to_int(scaled);
        const I table =
            lower ? start(offsetof(SoftLightTables, down_float)) : start(offsetof(SoftLightTables, up_float));
        const V at = (V)gather(&soft_light, table + 4 * i);
        const V next = (V)gather(&soft_light, table + 4 * lesser(i + 1, splat<I>(4096)));
        const V f = scaled - to_float(i);
        return f == 0.0f ? at : at + (next - at) * f;
    } else {
        const float* table = lower ? soft_light.down_float : soft_light.up_float;
        const std::int32_t i = truncate_to_int(scaled);
        const float f = scaled - static_cast<float>(i);
        return f == 0.0f ? table[i] : table[i] + (table[i + 1] - table[i]) * f;
    }
}

/// The 8-bit curve of a pair of channels: `down` of cd where cs is in the lower half, else `up`.
/// Lanes compute what the table holds: the products round as the table does, and the square root of 255 c stays
/// clear of the halves between two codes by far more than a float's error.
template <class V> QX_INLINE V soft_curve8(V cs, V cd) {
    if constexpr (is_short<V>) {
        return table_bytes(soft_light.curve8, cs < Depth8::half ? cd : cd + 256);
    } else if constexpr (is_wide<V>) {
        using F = FloatLanes<V>;
        const F c = to_float(cd), x = c * (1.0f / 255);
        const F up = cd <= 63 ? ((16.0f * x - 12.0f) * x + 3.0f) * c : root(c * 255.0f) - c;
        return cs < Depth8::half ? Depth8::mul(cd, Depth8::comp(cd)) : truncate_to_int(up + 0.5f);
    } else {
        return soft_light.curve8[cs < Depth8::half ? cd : cd + 256];
    }
}

}  // namespace qx
