// SPDX-License-Identifier: Apache-2.0
// Where the samples of a run lie, for one level.
#pragma once

#include <cstddef>

#include "QX/indep/QX_Records.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

/// Pixels whose places are made at once, and asked for that much ahead: a turned row touches a line of many rows, which
/// no processor foresees. What is asked for stays in the nearest cache until it is taken.
template <int Rows> inline constexpr std::int32_t kAhead = 256 / Rows;

/// Pixels of a run, at most, in which it leaves neither a row nor 64 bytes.
template <class Pixel> QX_INLINE std::int32_t pixels_in_line(FixedPoint step) {
    const auto size = [](std::int32_t v) QX_LAMBDA { return v < 0 ? -std::int64_t{v} : std::int64_t{v}; };
    const std::int64_t rows = size(step.y) * 64, bytes = size(step.x) * std::int64_t{sizeof(Pixel)};
    const std::int64_t most = 64 * std::int64_t{kFixedOne} / greater(2 * (rows + bytes), std::int64_t{1});
    return static_cast<std::int32_t>(lesser(greater(most, std::int64_t{1}), std::int64_t{16}));
}

/// The first taps of a run's samples, all inside the world; the taps of one lie in `Rows` rows.
template <class Pixel, int Rows> class RunPlaces {
public:
    /// @param before  pixels from the first tap to the position, on both axes
    QX_INLINE RunPlaces(FixedPoint from, FixedPoint step, const void* data, std::ptrdiff_t rowbytes, int before)
        : base_(splat<Long>(reinterpret_cast<std::intptr_t>(data) - before * (rowbytes + kSize))),
          rowbytes_(rowbytes),
          x_(from.x + step.x * lane_numbers<Long>()),
          y_(from.y + step.y * lane_numbers<Long>()),
          step_x_(splat<Long>(std::int64_t{step.x} * kLanes)),
          step_y_(splat<Long>(std::int64_t{step.y} * kLanes)),
          line_(pixels_in_line<Pixel>(step)) {}

    /// The next ones; behind the end the last is repeated up to a multiple of `bundle`.
    QX_INLINE void make(std::int32_t count, int bundle, const std::byte* (&places)[kAhead<Rows>]) {
        const std::int32_t now = lesser(count, kAhead<Rows>);
        if (now <= 0) return;
        for (std::int32_t i = 0; i < now; i += kLanes, x_ += step_x_, y_ += step_y_) {
            store_lanes(places + i, base_ + (y_ >> 16) * rowbytes_ + (x_ >> 16) * kSize);
        }
        for (std::int32_t i = now; i % bundle != 0; ++i) places[i] = places[now - 1];
    }
    /// Asks for the memory of N places.
    template <int N> QX_INLINE void ask_for(const std::byte* const* places) const {
        for (std::int32_t i = 0; i < N; i += line_) {
            for (int k = 0; k < Rows; ++k) __builtin_prefetch(places[i] + k * rowbytes_);
        }
    }

private:
    using Long = Wide<std::int64_t>;
    static constexpr int kLanes = lanes_in<Long>;
    static constexpr std::int64_t kSize = sizeof(Pixel);
    static_assert(kAhead<Rows> % kLanes == 0);

    Long base_;
    std::ptrdiff_t rowbytes_;
    Long x_, y_, step_x_, step_y_;
    std::int32_t line_;
};

/// Calls bundle(places, count) for each N samples of a run; at its end there are more places than samples.
template <int N, class Pixel, int Rows, class F>
QX_INLINE void for_places(std::int32_t count, RunPlaces<Pixel, Rows>& run, const F& bundle) {
    const std::byte* places[2][kAhead<Rows>];
    run.make(count, N, places[0]);
    for (std::int32_t i = 0; i < lesser(count, kAhead<Rows>); i += N) run.template ask_for<N>(places[0] + i);
    for (int turn = 0; count > 0; turn ^= 1, count -= kAhead<Rows>) {
        run.make(count - kAhead<Rows>, N, places[turn ^ 1]);
        for (std::int32_t i = 0; i < lesser(count, kAhead<Rows>); i += N) {
            if (i + kAhead<Rows> < count) run.template ask_for<N>(places[turn ^ 1] + i);
            bundle(places[turn] + i, lesser(count - i, std::int32_t{N}));
        }
    }
}

}  // namespace qx::QX_ISA
