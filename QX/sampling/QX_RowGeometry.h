// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Fixed.h"
#include "platform/M_Matrix.h"

/// Positions in the source of the rows of a destination, in 16.16. They are advanced by adding steps, so that rounding
/// accumulates along a row and down a rectangle; sums and products wrap in two's complement.
namespace qx {

struct FixedPoint {
    std::int32_t x, y;
    friend bool operator==(const FixedPoint&, const FixedPoint&) = default;
};

constexpr FixedPoint operator+(FixedPoint a, FixedPoint b) { return {wrapping_sum(a.x, b.x), wrapping_sum(a.y, b.y)}; }
/// `n` steps at once.
constexpr FixedPoint operator*(FixedPoint step, std::int32_t n) {
    return {wrapping_product(step.x, n), wrapping_product(step.y, n)};
}
/// Backwards.
constexpr FixedPoint operator-(FixedPoint a) { return a * -1; }

/// Coordinates that pixels can have; no number counts as the least one.
inline double limited_coordinate(double v) {
    if (!(v >= -32767)) return -32767;
    return v > 32766 ? 32766 : v;
}

inline FixedPoint to_fixed(M_FloatPoint p) {
    return {to_fixed(limited_coordinate(p.x)), to_fixed(limited_coordinate(p.y))};
}

/// True when `count` positions a step apart, the first at `from`, pass no end of the numbers: only then is what lies
/// between two positions inside the world inside too.
constexpr bool run_fits(FixedPoint from, FixedPoint step, std::int32_t count) {
    const auto fits = [&](std::int32_t at, std::int32_t by) {
        const std::int64_t last = at + std::int64_t{by} * (count - 1);
        return last >= INT32_MIN && last <= INT32_MAX;
    };
    return fits(from.x, step.x) && fits(from.y, step.y);
}

/// How a rectangle of the destination runs over the source.
struct RowGeometry {
    FixedPoint start;                 ///< of the centre of the left top pixel, integers lying on pixels
    FixedPoint dx, dy;                ///< steps for a pixel to the right and a row down
    M_FloatPoint exact_dx, exact_dy;  ///< the same before they were limited and rounded
};

/// @param to_src  from destination to source
inline RowGeometry row_geometry(const M_Matrix3& to_src, std::int32_t left, std::int32_t top) {
    M_FloatPoint start{left + 0.5, top + 0.5};
    M_TransformFloatPoints(to_src, &start, 1);
    const double right[3] = {1, 0, 0}, down[3] = {0, 1, 0};
    double dx[3], dy[3];
    M_TransformVector3(to_src, right, dx);
    M_TransformVector3(to_src, down, dy);
    RowGeometry rows{{}, {}, {}, {dx[0], dx[1]}, {dy[0], dy[1]}};
    rows.start = to_fixed(M_FloatPoint{start.x - 0.5, start.y - 0.5});
    rows.dx = to_fixed(rows.exact_dx);
    rows.dy = to_fixed(rows.exact_dy);
    return rows;
}

}  // namespace qx
