// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "platform/M_Matrix.h"

namespace qx::scene {

/// How a layer lies on the background: it is scaled and turned about its anchor, which lands on `translate`. Positions
/// count from left top corners, in pixels.
struct Placing {
    double translate[2] = {0, 0};
    double scale[2] = {1, 1};
    double degrees = 0;  ///< clockwise
    double anchor[2] = {0, 0};
};

/// Farther numbers could not touch a picture; within them no product of a few leaves the numbers.
inline constexpr double kMostPlacing = 1e9;

/// From the layer to the background.
M_Matrix3 matrix_of(const Placing& placing);

/// Nine numbers, row by row.
M_Matrix3 matrix_of(const std::array<double, 9>& elements);

/// The matrix, and a move behind it.
M_Matrix3 moved(const M_Matrix3& matrix, double x, double y);

}  // namespace qx::scene
