// SPDX-License-Identifier: Apache-2.0
#include "scene/Placing.h"

#include <algorithm>
#include <cmath>

namespace qx::scene {
namespace {

M_Matrix3 translation(double x, double y) { return {{{1, 0, 0}, {0, 1, 0}, {x, y, 1}}}; }

struct Turn {
    double sine, cosine;
};

/// Quarter turns are exact, so that they move whole pixels. Other values are rounded to 2^-40, where processors agree
/// and 30000 pixels away nothing is seen of it.
Turn turn(double degrees) {
    constexpr double radian = 3.14159265358979323846 / 180, grid = 1099511627776.0;
    constexpr Turn quarters[] = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};
    double rest = std::fmod(degrees, 360);
    if (rest < 0) rest += 360;
    if (std::fmod(rest, 90) == 0) return quarters[static_cast<int>(rest / 90) % 4];
    return {std::nearbyint(std::sin(rest * radian) * grid) / grid,
            std::nearbyint(std::cos(rest * radian) * grid) / grid};
}

}  // namespace

M_Matrix3 matrix_of(const Placing& p) {
    const Turn t = turn(p.degrees);
    const M_Matrix3 scale{{{p.scale[0], 0, 0}, {0, p.scale[1], 0}, {0, 0, 1}}};
    const M_Matrix3 rotation{{{t.cosine, t.sine, 0}, {-t.sine, t.cosine, 0}, {0, 0, 1}}};
    const M_Matrix3 shape =
        M_MultiplyMatrix(M_MultiplyMatrix(translation(-p.anchor[0], -p.anchor[1]), scale), rotation);
    return moved(shape, p.translate[0], p.translate[1]);
}

M_Matrix3 matrix_of(const std::array<double, 9>& elements) {
    M_Matrix3 matrix;
    std::copy(elements.begin(), elements.end(), &matrix.m[0][0]);
    return matrix;
}

M_Matrix3 moved(const M_Matrix3& matrix, double x, double y) { return M_MultiplyMatrix(matrix, translation(x, y)); }

}  // namespace qx::scene
