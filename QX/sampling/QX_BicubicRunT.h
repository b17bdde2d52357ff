// SPDX-License-Identifier: Apache-2.0
// Unclipped bicubic samples, for one level.
#pragma once

#include <limits>

#include "QX/sampling/QX_CubicKernel.h"
#include "QX/sampling/QX_TapPlanesT.h"

namespace qx::QX_ISA {

/// Weights of the taps before, at, behind and twice behind the positions. Doubles take two registers.
template <class F, class I> QX_INLINE void cubic_weights(I positions, F (&w)[4]) {
    using Part = Vector<std::int32_t, sizeof(I) / 2>;
    using Half = Vector<float, sizeof(F) / 2>;
    using D = Vector<double, sizeof(F)>;
    Part part[2];
    Half half[4][2];
    __builtin_memcpy(part, &positions, sizeof positions);
    for (int k = 0; k < 2; ++k) {
        const D f = to_double(part[k] & 0xFFFF) * 0x1p-16;
        half[0][k] = narrowed_to_float(sampling::far_part<D>(1 + f));
        half[1][k] = narrowed_to_float(sampling::near_part<D>(f));
        half[2][k] = narrowed_to_float(sampling::near_part<D>(1 - f));
        half[3][k] = narrowed_to_float(sampling::far_part<D>(2 - f));
    }
    __builtin_memcpy(w, half, sizeof half);
}

/// Limits what the kernel's lobes carry beyond the range; colours of float pixels stay as they are.
template <class Pixel, class F> QX_INLINE auto finish(const Planes<F>& sum) {
    using I = Vector<std::int32_t, sizeof(F)>;
    constexpr auto full = static_cast<float>(DepthOf<Pixel>::full);
    const F one = splat<F>(1);
    F alpha = sum.a * (1 / full);
    alpha = alpha > one ? one : alpha;
    alpha = alpha < 1e-16f ? F{} : alpha;
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return Planes<F>{alpha, sum.r, sum.g, sum.b};
    } else {
        const auto integer = [=](F v) QX_LAMBDA {
            v = v * full;
            v = v > F{} ? v : F{};
            return truncate_to_int((v < full ? v : splat<F>(full)) + 0.5f);
        };
        return Planes<I>{integer(alpha), integer(sum.r * (1 / full)), integer(sum.g * (1 / full)),
                         integer(sum.b * (1 / full))};
    }
}

template <class Pixel> struct Bicubic {
    using I = Wide<std::int32_t>;
    using F = Wide<float>;
    using Bundle = Planes<std::conditional_t<std::is_same_v<Pixel, QX_PixelFloat>, F, I>>;
    static constexpr int before = 1, rows = 4;

    template <class At> QX_INLINE static Bundle sample(const At& places, I x, I y) {
        constexpr float unlimited = std::numeric_limits<float>::infinity();
        F across[4], down[4];
        cubic_weights(x, across);
        Planes<F> rows[4];
        for (int i = 0; i < 4; ++i) {
            Tap<Pixel, I> taps[4];
            load_row<Pixel>(places, i, taps);
            Planes<F> p[4];
            for (int k = 0; k < 4; ++k) p[k] = taps[k].template planes<F>();
            rows[i] = keeping_mix(p, across, unlimited);
        }
        cubic_weights(y, down);
        return finish<Pixel>(keeping_mix(rows, down, unlimited));
    }
};

}  // namespace qx::QX_ISA
