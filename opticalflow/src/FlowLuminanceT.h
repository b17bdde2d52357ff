// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Scattered.h"
#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowLuminance.h"
#include "opticalflow/src/Pixels.h"

namespace qx::QX_ISA {

template <class F> QX_INLINE F luminance(F red, F green, F blue, const LumaWeights& w) {
    return green * splat<F>(w.green) + red * splat<F>(w.red) + blue * splat<F>(w.blue);
}

template <class Pixel> QX_INLINE float luminance_of(const Pixel& p, const LumaWeights& w) {
    return luminance(static_cast<float>(p.red), static_cast<float>(p.green), static_cast<float>(p.blue), w);
}

template <class Pixel> void luma_single(const void* pixels, std::int32_t count, const LumaWeights& w, float* out) {
    const auto* p = static_cast<const Pixel*>(pixels);
    for (std::int32_t i = 0; i < count; ++i) out[i] = luminance_of(p[i], w);
}

/// Several pixels at a time, alpha first.
template <class T> void luma_row(const void* pixels, std::int32_t count, const LumaWeights& w, float* out) {
    using Pixel = solvan_of::Argb<T>;
    using V = Wide<std::conditional_t<std::is_floating_point_v<T>, float, std::int32_t>>;
    const auto* p = static_cast<const Pixel*>(pixels);
    std::int32_t at = 0;
    if constexpr (is_wide<V>) {
        for (; at + lanes_in<V> <= count; at += lanes_in<V>) {
            const auto planes = load_pixels<Planes<V>, Channels::as_stored>(p + at);
            const Floats luma = luminance(to_float(planes.r), to_float(planes.g), to_float(planes.b), w);
            store_lanes(out + at, (Floats)in_pixel_order<Planes<V>, Pixel>((V)luma));
        }
    }
    luma_single<Pixel>(p + at, count - at, w, out + at);
}

extern const FlowLuminance flow_luminance;
const FlowLuminance flow_luminance{.argb8 = &luma_row<std::uint8_t>,
                                   .argb16 = &luma_row<std::uint16_t>,
                                   .argb32 = &luma_row<float>,
                                   .bgr8 = &luma_single<solvan_of::Bgr<std::uint8_t>>,
                                   .bgr16 = &luma_single<solvan_of::Bgr<std::uint16_t>>,
                                   .bgr32 = &luma_single<solvan_of::Bgr<float>>};

}  // namespace qx::QX_ISA
