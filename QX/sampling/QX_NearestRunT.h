// SPDX-License-Identifier: Apache-2.0
// Nearest pixels of rows that turn, for one level.
#pragma once

#include "QX/sampling/QX_RunPlaces.h"
#include "QX/sampling/QX_Runs.h"
#include "lanes/Scattered.h"

namespace qx::QX_ISA {

/// Alphas of pixels as they lie in a register; those of 16 bits are added in lanes of eight bytes.
template <class Pixel> using AlphaLane = std::conditional_t<sizeof(Pixel) == 4, std::uint32_t, std::uint64_t>;

/// Registers are stored whole, which was measured to be half as quick again as stores of single pixels.
template <class Pixel>
void nearest_turned(std::int32_t count, FixedPoint from, FixedPoint step, const QX_LayerDef& world,
                    QX_AlphaSumOf<Pixel>* sum, Pixel* out) {
    constexpr bool is_float = std::is_same_v<Pixel, QX_PixelFloat>;
    constexpr int n = greater(static_cast<int>(kRegister / sizeof(Pixel)), 1);
    using V = Vector<AlphaLane<Pixel>, kRegister>;
    RunPlaces<Pixel, 1> run(from, step, world.data, world.rowbytes, 0);
    QX_AlphaSumOf<Pixel> total = *sum;
    V alphas{};
    for_places<n>(count, run, [&](const std::byte* const* places, std::int32_t now) QX_LAMBDA {
        const auto pixel = [=](int i) QX_LAMBDA { return reinterpret_cast<const Pixel*>(places[i]); };
        if constexpr (n > 1) {
            if (now == n) {
                const V pixels = load_scattered<V, sizeof(Pixel)>([=](int i) QX_LAMBDA { return places[i]; });
                store_lanes(out, pixels);
                out += n;
                if constexpr (!is_float) {
                    alphas += pixels & static_cast<QX_ChannelOf<Pixel>>(-1);
                    return;
                }
                for (int i = 0; i < n; ++i) total += pixel(i)->alpha;
                return;
            }
        }
        for (std::int32_t i = 0; i < now; ++i) {
            *out = *pixel(i);
            total += out++->alpha;
        }
    });
    if constexpr (n > 1 && !is_float) {
        for (int i = 0; i < n; ++i) total += static_cast<std::uint32_t>(alphas[i]);
    }
    *sum = total;
}

}  // namespace qx::QX_ISA
