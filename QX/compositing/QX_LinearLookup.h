// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/compositing/QX_TableLookup.h"
#include "QX/indep/QX_DepthSteps.h"

/// Encoded values to linear ones and back. 16-bit values interpolate; values beyond the scale count as its end.
namespace qx {

inline std::int32_t to_linear16(const QX_LinearBlendingTables& tables, std::int32_t c) {
    const std::int32_t t = lesser(c, Depth16::full) * 255, i = t >> 15, f = t & 0x7FFF;
    const std::int32_t y = tables.to_linear[i];
    return f == 0 ? y : y + (((tables.to_linear[i + 1] - y) * f + 16384) >> 15);
}

inline std::int32_t from_linear16(const QX_LinearBlendingTables& tables, std::int32_t y) {
    return table_value16(tables.from_linear, y);
}

/// Negative channels pass unchanged both ways.
inline float power(float c, float exponent) { return c >= 0.0f ? powf(c, exponent) : c; }

/// The depth that pixels of a depth are blended at in linear light.
template <class D> using LinearDepth = std::conditional_t<D::number == 8, Depth16, D>;

/// Alpha and opacity at that depth.
template <class D> auto widen_alpha(QX_ChannelOf<typename D::Pixel> a) {
    if constexpr (D::number == 8) {
        return widen_8_to_16(a);
    } else {
        return a;
    }
}

template <class D>
typename LinearDepth<D>::Pixel to_linear(const QX_LinearBlendingTables& tables, const typename D::Pixel& p) {
    const auto channel = [&](auto c) {
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
typename D::Pixel from_linear(const QX_LinearBlendingTables& tables, const typename LinearDepth<D>::Pixel& p) {
    const auto channel = [&](auto c) {
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
