// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/GK_Motion.h"
#include "platform/M_Matrix.h"

int M_GetMatrixType(const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    if (m[0][2] != 0 || m[1][2] != 0 || m[2][2] != 1) return 5;
    if (m[0][1] != 0 || m[1][0] != 0) return 4;
    if (m[0][0] != 1 || m[1][1] != 1) return 2;
    return m[2][0] != 0 || m[2][1] != 0 ? 1 : 0;
}

bool M_InverseMatrixQuiet(const M_Matrix3& matrix, M_Matrix3* inverse) {
    const auto& m = matrix.m;
    const auto minor_of = [&](int r0, int c0, int r1, int c1) { return m[r0][c0] * m[r1][c1] - m[r0][c1] * m[r1][c0]; };
    const double c00 = minor_of(1, 1, 2, 2), c01 = -minor_of(1, 0, 2, 2), c02 = minor_of(1, 0, 2, 1);
    const double det = (m[0][0] * c00 + m[0][1] * c01) + m[0][2] * c02;
    if (det == 0) return false;
    M_Matrix3 result{{{c00, -minor_of(0, 1, 2, 2), minor_of(0, 1, 1, 2)},
                      {c01, minor_of(0, 0, 2, 2), -minor_of(0, 0, 1, 2)},
                      {c02, -minor_of(0, 0, 2, 1), minor_of(0, 0, 1, 1)}}};
    for (auto& row : result.m) {
        for (double& element : row) {
            element /= det;
            if (!std::isfinite(element)) return false;
        }
    }
    *inverse = result;
    return true;
}

M_Matrix3 M_MultiplyMatrix(const M_Matrix3& a, const M_Matrix3& b) {
    M_Matrix3 product{};
    for (int row = 0; row < 3; ++row) M_TransformVector3(b, a.m[row], product.m[row]);
    return product;
}

void M_Matrix3_Scale(double x, double y, M_Matrix3* matrix) {
    *matrix = M_MultiplyMatrix(*matrix, {{{x, 0, 0}, {0, y, 0}, {0, 0, 1}}});
}

void M_Matrix3_Rotate(double radians, M_Matrix3* matrix) {
    const double c = std::cos(radians), s = std::sin(radians);
    *matrix = M_MultiplyMatrix(*matrix, {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}});
}

bool M_EqualMatrixWithinEpsilon(const M_Matrix3& a, const M_Matrix3& b, double epsilon) {
    for (int i = 0; i < 9; ++i) {
        if (!(std::fabs(a.m[i / 3][i % 3] - b.m[i / 3][i % 3]) <= epsilon)) return false;
    }
    return true;
}

void M_TransformVector3(const M_Matrix3& matrix, const double vector[3], double out[3]) {
    const auto& m = matrix.m;
    const double x = vector[0], y = vector[1], z = vector[2];
    for (int k = 0; k < 3; ++k) out[k] = (x * m[0][k] + y * m[1][k]) + z * m[2][k];
}

void M_TransformFloatPoints(const M_Matrix3& matrix, M_FloatPoint* points, int count) {
    const auto& m = matrix.m;
    for (M_FloatPoint* p = points; p != points + count; ++p) {
        const double x = p->x, y = p->y;
        const double w = (x * m[0][2] + y * m[1][2]) + m[2][2];
        *p = {(x * m[0][0] + y * m[1][0]) + m[2][0], (x * m[0][1] + y * m[1][1]) + m[2][1]};
        if (w != 0 && w != 1) *p = {p->x / w, p->y / w};
    }
}

void M_TransformFloatRect(const M_Matrix3& matrix, M_FloatRect* rect) {
    M_FloatPoint c[4] = {
        {rect->left, rect->top}, {rect->right, rect->top}, {rect->left, rect->bottom}, {rect->right, rect->bottom}};
    M_TransformFloatPoints(matrix, c, 4);
    *rect = {std::min({c[0].x, c[1].x, c[2].x, c[3].x}), std::min({c[0].y, c[1].y, c[2].y, c[3].y}),
             std::max({c[0].x, c[1].x, c[2].x, c[3].x}), std::max({c[0].y, c[1].y, c[2].y, c[3].y})};
}

std::int32_t M_RoundDouble(double x) {
    constexpr double limit = 2147483648.0;
    const double rounded = std::round(x);
    if (!(rounded >= -limit && rounded < limit)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(rounded);
}

bool M_NearlyEqual(double a, double b) {
    double hi = std::max(a, b), lo = std::min(a, b);
    if (hi < 0) {
        const double mirrored = -lo;
        lo = -hi;
        hi = mirrored;
    }
    return hi - lo < std::max(hi * 1e-12, 1.000088900582341e-12);
}

namespace GK {

bool IsNonLinearSubframeMotion(const M_Matrix3* matrices, int count) {
    struct Corners {
        M_FloatPoint at[4] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
        explicit Corners(const M_Matrix3& matrix) { M_TransformFloatPoints(matrix, at, 4); }
    };
    if (count < 3) return false;
    const Corners first(matrices[0]), last(matrices[count - 1]);
    const auto mix = [](double a, double b, double t) { return a + (b - a) * t; };
    for (int i = 1; i < count - 1; ++i) {
        const Corners now(matrices[i]);
        const double t = static_cast<double>(i) / (count - 1);
        for (int k = 0; k < 4; ++k) {
            const M_FloatPoint &a = first.at[k], &b = last.at[k];
            if (!M_NearlyEqual(now.at[k].x, mix(a.x, b.x, t)) || !M_NearlyEqual(now.at[k].y, mix(a.y, b.y, t))) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace GK
