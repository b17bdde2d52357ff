// SPDX-License-Identifier: Apache-2.0
// The walk of a run of samples, for one level.
#pragma once

#include "QX/sampling/QX_Runs.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/Scattered.h"

namespace qx::QX_ISA {

/// Pixels whose places are made at once, and asked for that much ahead: a turned row touches a line of many rows, which
/// no processor foresees.
inline constexpr std::int32_t kAhead = 64;

/// Where the samples of a run have their first taps.
template <class Kernel, class Pixel> class RunPlaces {
public:
    QX_INLINE RunPlaces(FixedPoint from, FixedPoint step, const QX_LayerDef& world)
        : base_(static_cast<const std::byte*>(world.data) -
                Kernel::before * (std::ptrdiff_t{world.rowbytes} + std::ptrdiff_t{sizeof(Pixel)})),
          rowbytes_(world.rowbytes),
          from_(from),
          step_(step) {}

    /// The next ones; behind the end the last is repeated.
    QX_INLINE void make(std::int32_t count, const std::byte* (&places)[kAhead]) {
        const std::int32_t now = lesser(count, kAhead);
        std::int32_t i = 0;
        for (; i < now; ++i, from_ = from_ + step_) {
            std::ptrdiff_t row = from_.y >> 16;
            asm("" : "+r"(row));  // addresses that are made in vectors are slow to take from there
            places[i] = base_ + row * rowbytes_ + (from_.x >> 16) * std::ptrdiff_t{sizeof(Pixel)};
            for (int k = 0; k < Kernel::rows; ++k) __builtin_prefetch(places[i] + k * rowbytes_);
        }
        for (; now > 0 && i % pixels_in<typename Kernel::Bundle> != 0; ++i) places[i] = places[now - 1];
    }

private:
    const std::byte* base_;
    std::ptrdiff_t rowbytes_;
    FixedPoint from_, step_;
};

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
    RunPlaces<Kernel, Pixel> run(from, step, world);
    const std::byte* places[2][kAhead];
    run.make(count, places[0]);
    I x{}, y{}, alphas{};
    for (int k = 0; k < n; ++k) {
        const FixedPoint p = from + step * pixel_of_lane<Bundle, Pixel>(k);
        x[k] = p.x, y[k] = p.y;
    }
    Pixel end[n];
    for (int turn = 0; count > 0; turn ^= 1) {
        run.make(count - kAhead, places[turn ^ 1]);
        for (std::int32_t i = 0; i < lesser(count, kAhead); i += n, x += step.x * n, y += step.y * n) {
            const std::int32_t now = lesser(count - i, std::int32_t{n});
            const Bundle pixels = Kernel::sample(Places<Bundle, Pixel>{places[turn] + i, world.rowbytes}, x, y);
            Pixel* const to = now == n ? out : end;
            store_pixels(to, pixels);
            add_alphas(pixels, to, now, alphas, sum);
            if (now < n) __builtin_memcpy(out, end, static_cast<std::size_t>(now) * sizeof *out);
            out += n;
        }
        count -= kAhead;
    }
    if constexpr (!std::is_same_v<Pixel, QX_PixelFloat>) {
        for (int k = 0; k < n; ++k) *sum += static_cast<std::uint32_t>(alphas[k]);
    }
}

}  // namespace qx::QX_ISA
