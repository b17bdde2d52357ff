// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_TableLookup.h"
#include "QX/indep/QX_Export.h"

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

/// The curve of float channels. Values beyond the scale read its end, so that nothing is read outside the table.
QX_INLINE float soft_curve_float(const float (&table)[4097], float c) {
    if (!(c > 0.0f)) return table[0];
    if (c >= 1.0f) return table[4096];
    const float scaled = c * 4096.0f;
    const std::int32_t i = truncate_to_int(scaled);
    const float f = scaled - static_cast<float>(i);
    return f == 0.0f ? table[i] : table[i] + (table[i + 1] - table[i]) * f;
}

/// The 8-bit curve of a pair of channels: `down` of cd where cs is in the lower half, else `up`.
/// Lanes compute what the table holds: the products round as the table does, and the square root of 255 c stays
/// clear of the halves between two codes by far more than a float's error.
template <class V> QX_INLINE V soft_curve8(V cs, V cd) {
    if constexpr (is_wide<V>) {
        using F = typename LaneTraits<V>::Float;
        const F c = __builtin_convertvector(cd, F), x = c * (1.0f / 255);
        const F up = cd <= 63 ? ((16.0f * x - 12.0f) * x + 3.0f) * c : root(c * 255.0f) - c;
        return cs < Depth8::half ? Depth8::mul(cd, Depth8::comp(cd)) : __builtin_convertvector(up + 0.5f, V);
    } else {
        return soft_light.curve8[cs < Depth8::half ? cd : cd + 256];
    }
}

}  // namespace qx
