// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "QX/indep/QX_Area.h"
#include "QX/sampling/QX_SampPB.h"
#include "lanes/Lanes.h"

/// Positions, and where a sampler's taps come from.
namespace qx::sampling {

/// A 16.16 position taken apart: the pixel at or before it on each axis, and the way to the next one, 0..65535.
struct Position {
    std::int32_t column, row, fx, fy;
    QX_INLINE constexpr Position(std::int32_t x, std::int32_t y)
        : column(x >> 16), row(y >> 16), fx(x & 0xFFFF), fy(y & 0xFFFF) {}
    QX_INLINE constexpr bool on_a_pixel() const { return (fx | fy) == 0; }
};

constexpr bool contains(const QX_EffectWorld& world, std::int32_t column, std::int32_t row) {
    return column >= 0 && column < world.width && row >= 0 && row < world.height;
}
/// True when the N by N pixels from (column, row) on lie in the world; these are at most some pixels beyond 16 bits.
template <int N> constexpr bool contains_square(const QX_EffectWorld& world, std::int32_t column, std::int32_t row) {
    return column >= 0 && column + N <= world.width && row >= 0 && row + N <= world.height;
}

/// The rows of N by N taps, N pixels from each address on.
template <int N> using TapRows = const std::byte* [N];

/// Taps of which the caller knows that they lie in the world.
template <class Pixel, int N>
QX_INLINE void taps_inside(const QX_EffectWorld& world, std::int32_t column, std::int32_t row, TapRows<N>& rows) {
    const std::byte* first = pixel_address(world, column, row, sizeof(Pixel));
    for (int i = 0; i < N; ++i) rows[i] = first + std::ptrdiff_t{i} * world.rowbytes;
}

/// Room for taps of which some lie outside the world: those read zero.
template <class Pixel, int N> struct Edge { Pixel taps[N][N]; };

template <class Pixel, int N>
[[gnu::noinline]] void taps_at_edge(const QX_EffectWorld& world, std::int32_t column, std::int32_t row,
                                    Edge<Pixel, N>& edge, TapRows<N>& rows) {
    for (int i = 0; i < N; ++i) {
        std::byte* line = reinterpret_cast<std::byte*>(edge.taps[i]);
        rows[i] = line;
        for (int k = 0; k < N; ++k) {
            edge.taps[i][k] = Pixel{};
            if (!contains(world, column + k, row + i)) continue;
            std::memcpy(line + static_cast<std::size_t>(k) * sizeof(Pixel),
                        pixel_address(world, column + k, row + i, sizeof(Pixel)), sizeof(Pixel));
        }
    }
}

/// Taps anywhere. @return true when all lie in the world
template <class Pixel, int N>
QX_INLINE bool taps_clipped(const QX_EffectWorld& world, std::int32_t column, std::int32_t row, Edge<Pixel, N>& edge,
                            TapRows<N>& rows) {
    const bool inside = contains_square<N>(world, column, row);
    if (inside) {
        taps_inside<Pixel, N>(world, column, row, rows);
    } else {
        taps_at_edge(world, column, row, edge, rows);
    }
    return inside;
}

}  // namespace qx::sampling
