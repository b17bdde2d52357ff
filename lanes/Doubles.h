// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Lanes.h"

/// Lanes of four bytes to doubles, in a register twice as wide, and back: rounded to float, and truncated to an integer
/// that fits.
namespace qx {

template <class V> using DoublesOf = Vector<double, 2 * sizeof(V)>;

template <class V> QX_INLINE DoublesOf<V> to_double(V x) {
    if constexpr (std::is_same_v<NumberOf<V>, float>) {
        QX_RETURN_BY_WIDTH(DoublesOf<V>, 2 * sizeof(V), cvtps_pd, x)
    } else {
        QX_RETURN_BY_WIDTH(DoublesOf<V>, 2 * sizeof(V), cvtepi32_pd, (Register<V>)x)
    }
}
template <class D> QX_INLINE Vector<float, sizeof(D) / 2> narrowed_to_float(D x) {
    using F = Vector<float, sizeof(D) / 2>;
    QX_RETURN_BY_WIDTH(F, sizeof(D), cvtpd_ps, x)
}
template <class D> QX_INLINE Vector<std::int32_t, sizeof(D) / 2> narrowed_to_int(D x) {
    using I = Vector<std::int32_t, sizeof(D) / 2>;
    QX_RETURN_BY_WIDTH(I, sizeof(D), cvttpd_epi32, x)
}
/// To the nearest integer, and to the even one between two; INT32_MIN for what does not fit.
template <class D> QX_INLINE Vector<std::int32_t, sizeof(D) / 2> rounded_to_int(D x) {
    using I = Vector<std::int32_t, sizeof(D) / 2>;
    QX_RETURN_BY_WIDTH(I, sizeof(D), cvtpd_epi32, x)
}

}  // namespace qx
