// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"

/// Into and out of multiplied colour, against black, white and grey; alpha stays. An alpha of 0 divides to full.
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

template <Pivot P, class D, class V> QX_INLINE constexpr V unmix(V c, V a) {
    if constexpr (P == Pivot::black) {
        return D::div(c, a);
    } else if constexpr (P == Pivot::white) {
        return D::comp(D::div(D::comp(c), a));
    } else if constexpr (D::number == 32) {
        const V upper = D::vanishes(a) ? splat<V>(1.5f) : (c - 0.5f) / a + 0.5f;
        const V lower = D::vanishes(a) ? splat<V>(-0.5f) : 0.5f - (0.5f - c) / a;
        return c >= 0.5f ? upper : lower;
    } else {
        const auto is_upper = c >= D::half;
        const V v = D::div(is_upper ? c - D::half : D::half - c, a);
        return is_upper ? lesser(D::half + v, splat<V>(D::full)) : greater(D::half - v, splat<V>(0));
    }
}

}  // namespace qx
