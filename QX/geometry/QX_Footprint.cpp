// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_Footprint.h"

#include <cmath>

namespace qx {

namespace {

constexpr double kWidestRadius = 127;

double length(const double v[3]) { return std::sqrt((v[0] * v[0] + v[1] * v[1]) + v[2] * v[2]); }

/// Half a pixel of the destination in pixels of the source.
double radius(double scale) {
    const double r = 0.5 / scale;
    return r < kWidestRadius ? r : kWidestRadius;
}

}  // namespace

Footprint::Footprint(const M_Matrix3& to_dst) {
    constexpr double right[3] = {1, 0, 0}, down[3] = {0, 1, 0}, origin[3] = {0, 0, 1};
    double x[3], y[3], t[3];
    M_TransformVector3(to_dst, right, x);
    M_TransformVector3(to_dst, down, y);
    M_TransformVector3(to_dst, origin, t);
    const double sx = length(x), sy = length(y);
    degenerate = to_fixed(sx) == 0 || to_fixed(sy) == 0;
    const double rx = radius(sx), ry = radius(sy);
    x_radius = to_fixed(rx);
    y_radius = to_fixed(ry);
    area = low_bits(4 * rx * ry * 65536 + 0.5);  // never below 0: both are radii of 0 to 127
    translation = {to_fixed(t[0]), to_fixed(t[1])};
}

void Footprint::write_to(QX_SampPB* block) const {
    block->x_radius = x_radius;
    block->y_radius = y_radius;
    block->area = area;
}

bool is_pixel_shift(const M_Matrix3& to_dst, FixedPoint translation, int quality) {
    constexpr std::int32_t fraction = kFixedOne - 1;
    return M_GetMatrixType(to_dst) < 2 && (quality == 0 || ((translation.x | translation.y) & fraction) == 0);
}

}  // namespace qx
