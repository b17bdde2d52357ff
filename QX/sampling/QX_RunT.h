// SPDX-License-Identifier: Apache-2.0
// The walk of a run of samples, for one level.
#pragma once

#include "QX/sampling/QX_RunPlaces.h"
#include "QX/sampling/QX_Runs.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/Scattered.h"

namespace qx::QX_ISA {

/// The first taps of a bundle.
template <class Bundle, class Pixel> struct Places {
    const std::byte* const* of_pixel;
    std::ptrdiff_t rowbytes;

    /// What lies some rows and bytes behind, lane by lane.
    QX_INLINE auto from(int row, int bytes) const {
        return [places = of_pixel, way = row * rowbytes + bytes](int lane)
                   QX_LAMBDA { return places[pixel_of_lane<Bundle, Pixel>(lane)] + way; };
    }
};

/// Float alphas are added one by one.
template <class Bundle, class Pixel, class I>
QX_INLINE void add_alphas(const Bundle& pixels, const Pixel* stored, std::int32_t count, I& alphas,
                          QX_AlphaSumOf<Pixel>* sum) {
    if constexpr (!std::is_same_v<Pixel, QX_PixelFloat>) {
        if (count == pixels_in<Bundle>) {
            alphas += pixels.a & static_cast<QX_ChannelOf<Pixel>>(-1);
            return;
        }
    }
    for (std::int32_t k = 0; k < count; ++k) *sum += stored[k].alpha;
}

/// A kernel makes a bundle of pixels from its places and positions, of which only fractions count. Its taps lie in
/// `rows` rows, and begin `before` pixels left of and above the position.
template <class Kernel, class Pixel>
void run_of(std::int32_t count, FixedPoint from, FixedPoint step, const QX_LayerDef& world, QX_AlphaSumOf<Pixel>* sum,
            Pixel* out) {
    using Bundle = typename Kernel::Bundle;
    constexpr int n = pixels_in<Bundle>;
    using I = Vector<std::int32_t, n * sizeof(std::int32_t)>;
    RunPlaces<Pixel, Kernel::rows> run(from, step, world.data, world.rowbytes, Kernel::before);
    I x{}, y{}, alphas{};
    for (int k = 0; k < n; ++k) {
        const FixedPoint p = from + step * pixel_of_lane<Bundle, Pixel>(k);
        x[k] = p.x, y[k] = p.y;
    }
    Pixel end[n];
    QX_AlphaSumOf<Pixel> total = *sum;  // in a register: pixels that are stored cannot change it
    for_places<n>(count, run, [&](const std::byte* const* places, std::int32_t now) QX_LAMBDA {
        const Bundle pixels = Kernel::sample(Places<Bundle, Pixel>{places, world.rowbytes}, x, y);
        Pixel* const to = now == n ? out : end;
        store_pixels(to, pixels);
        add_alphas(pixels, to, now, alphas, &total);
        if (now < n) __builtin_memcpy(out, end, static_cast<std::size_t>(now) * sizeof *out);
        out += n;
        x += step.x * n;
        y += step.y * n;
    });
    if constexpr (!std::is_same_v<Pixel, QX_PixelFloat>) {
        for (int k = 0; k < n; ++k) total += static_cast<std::uint32_t>(alphas[k]);
    }
    *sum = total;
}

}  // namespace qx::QX_ISA
