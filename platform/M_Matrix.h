// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/Platform_Export.h"

/// A 3x3 matrix that row vectors multiply from the left, v' = v * M: the translation stands in m[2][0] and m[2][1],
/// perspective in the third column.
struct M_Matrix3 {
    double m[3][3];
};
static_assert(sizeof(M_Matrix3) == 72);

struct M_FloatPoint {
    double x, y;
};
struct M_FloatRect {
    double left, top, right, bottom;
};

inline constexpr M_Matrix3 kM_IdentityMatrix{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// What a matrix can do, by exact comparison: 0 identity, 1 translation, 2 scale, 4 any other affine one, 5 one whose
/// third column is not (0, 0, 1).
PLATFORM_EXPORT int M_GetMatrixType(const M_Matrix3& matrix);

/// The adjugate over the determinant. @return false, with `*inverse` as it was, when the determinant is 0 or an
/// element would not be finite
PLATFORM_EXPORT bool M_InverseMatrixQuiet(const M_Matrix3& matrix, M_Matrix3* inverse);

/// a * b: what maps by `a` first, then by `b`.
PLATFORM_EXPORT M_Matrix3 M_MultiplyMatrix(const M_Matrix3& a, const M_Matrix3& b);

/// Appends a scaling about the origin, or a turn by `radians` that takes the x axis towards the y axis.
PLATFORM_EXPORT void M_Matrix3_Scale(double x, double y, M_Matrix3* matrix);
PLATFORM_EXPORT void M_Matrix3_Rotate(double radians, M_Matrix3* matrix);

/// True when no two elements differ by more than `epsilon`.
PLATFORM_EXPORT bool M_EqualMatrixWithinEpsilon(const M_Matrix3& a, const M_Matrix3& b, double epsilon);

/// The full product of a row vector and a matrix, without a division. `out` may be `vector`.
PLATFORM_EXPORT void M_TransformVector3(const M_Matrix3& matrix, const double vector[3], double out[3]);

/// Maps points in place; each is divided by its third coordinate unless that is 0 or 1.
PLATFORM_EXPORT void M_TransformFloatPoints(const M_Matrix3& matrix, M_FloatPoint* points, int count);

/// Bounding box of the four corners' images.
PLATFORM_EXPORT void M_TransformFloatRect(const M_Matrix3& matrix, M_FloatRect* rect);

/// Nearest integer, halves away from zero. What is no 32-bit number gives the least one.
PLATFORM_EXPORT std::int32_t M_RoundDouble(double x);

/// Equality of two numbers that rounding may have parted: to 1e-12 of the larger, and near zero to about 1e-12.
PLATFORM_EXPORT bool M_NearlyEqual(double a, double b);
