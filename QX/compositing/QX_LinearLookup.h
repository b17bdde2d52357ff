// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstddef>

#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/compositing/QX_TableLookup.h"
#include "QX/indep/QX_DepthSteps.h"

/// Encoded values to linear ones and back. 16-bit values interpolate; values beyond the scale count as its end.
namespace qx {

static_assert(offsetof(QX_LinearBlendingTables, to_linear) == 0);

/// Where a channel lies in `to_linear`: behind an entry, on the way to the next, of 32768. On the last there is no way.
template <class V> struct LinearPlace { V entry, way; };
template <class V> QX_INLINE LinearPlace<V> place_in_linear(V c) {
    const V t = lesser(c, splat<V>(Depth16::full)) * 255;
    return {t >> 15, t & 0x7FFF};
}

template <class V> QX_INLINE V linear_lanes16(const QX_LinearBlendingTables& tables, V c) {
    const auto [entry, way] = place_in_linear(c);
    return on_line<15>(neighbours_at(&tables, 2 * entry), way);
}

template <class V> QX_INLINE V encoded_lanes16(const QX_LinearBlendingTables& tables, V y) {
    return table_value16(&tables.from_linear, V{}, y);
}

QX_INLINE std::int32_t to_linear16(const QX_LinearBlendingTables& tables, std::int32_t c) {
    return linear_lanes16(tables, c);
}
QX_INLINE std::int32_t from_linear16(const QX_LinearBlendingTables& tables, std::int32_t y) {
    return encoded_lanes16(tables, y);
}

/// Negative channels pass unchanged both ways.
QX_INLINE float power(float c, float exponent) { return c >= 0.0f ? powf(c, exponent) : c; }

/// The depth that pixels of a depth are blended at in linear light.
template <class D> using LinearDepth = std::conditional_t<D::number == 8, Depth16, D>;

/// Alpha and opacity at that depth.
template <class D> QX_INLINE auto widen_alpha(QX_ChannelOf<typename D::Pixel> a) {
    if constexpr (D::number == 8) {
        return widen_8_to_16(a);
    } else {
        return a;
    }
}

template <class D>
QX_INLINE typename LinearDepth<D>::Pixel to_linear(const QX_LinearBlendingTables& tables, const typename D::Pixel& p) {
    const auto channel = [&](auto c) QX_LAMBDA {
        if constexpr (D::number == 8) {
            return tables.to_linear[c];
        } else if constexpr (D::number == 16) {
            return static_cast<std::uint16_t>(to_linear16(tables, c));
        } else {
            return power(c, tables.to_linear_gamma);
        }
    };
    return {widen_alpha<D>(p.alpha), channel(p.red), channel(p.green), channel(p.blue)};
}

template <class D>
QX_INLINE typename D::Pixel from_linear(const QX_LinearBlendingTables& tables,
                                        const typename LinearDepth<D>::Pixel& p) {
    const auto channel = [&](auto c) QX_LAMBDA {
        if constexpr (D::number == 8) {
            return narrow_16_to_8(static_cast<std::uint32_t>(from_linear16(tables, c)));
        } else if constexpr (D::number == 16) {
            return static_cast<std::uint16_t>(from_linear16(tables, c));
        } else {
            return power(c, tables.from_linear_gamma);
        }
    };
    if constexpr (D::number == 8) {
        return {narrow_16_to_8(p.alpha), channel(p.red), channel(p.green), channel(p.blue)};
    } else {
        return {p.alpha, channel(p.red), channel(p.green), channel(p.blue)};
    }
}

}  // namespace qx
