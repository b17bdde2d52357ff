// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"

/// Into and out of multiplied colour, against black, white and grey; alpha stays. Division by an alpha of 0 gives full.
namespace qx {

template <Pivot P, class D, class V> QX_INLINE constexpr V premix(V c, V a) {
    if constexpr (P == Pivot::black) {
        return D::mul(c, a);
    } else if constexpr (P == Pivot::white) {
        return D::comp(D::mul(D::comp(c), a));
    } else {
        return c >= D::half ? D::half + D::mul(c - D::half, a) : c + D::mul(D::half - c, D::comp(a));
    }
}

/// @param divide  what a value is divided by
template <Pivot P, class D, class V, class Divide> QX_INLINE constexpr V unmix(V c, const Divide& divide) {
    if constexpr (P == Pivot::black) {
        return divide(c);
    } else if constexpr (P == Pivot::white) {
        return D::comp(divide(D::comp(c)));
    } else if constexpr (D::number == 32) {
        return c >= 0.5f ? divide(c - 0.5f) + 0.5f : 0.5f - divide(0.5f - c);
    } else {
        const auto is_upper = c >= D::half;
        const V v = divide(is_upper ? c - D::half : D::half - c);
        return is_upper ? lesser(D::half + v, splat<V>(D::full)) : greater(D::half - v, splat<V>(0));
    }
}

}  // namespace qx
