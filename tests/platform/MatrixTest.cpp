// SPDX-License-Identifier: Apache-2.0
#include "platform/GK_Motion.h"
#include "platform/M_Matrix.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(Matrix, AnInverseUndoesItsMatrixAndSingularOnesHaveNone) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-2, 2);
    for (int run = 0; run < 1000; ++run) {
        M_Matrix3 matrix, inverse;
        for (const auto& [i, k] : places(3, 3)) matrix.m[i][k] = any(random);
        if (!M_InverseMatrixQuiet(matrix, &inverse)) continue;
        double largest = 1;
        for (const auto& [i, k] : places(3, 3)) largest = std::max(largest, std::fabs(inverse.m[i][k]));
        EXPECT_TRUE(M_EqualMatrixWithinEpsilon(M_MultiplyMatrix(matrix, inverse), kM_IdentityMatrix, 1e-13 * largest));
    }
    const double singular[][4] = {
        {1, 2, 2, 4}, {0, 0, 0, 1}, {NAN, 0, 0, 1}, {INFINITY, 0, 0, 1}, {1e-200, 0, 0, 1e-200}};
    for (const auto& [a, b, c, d] : singular) {
        M_Matrix3 untouched = kM_IdentityMatrix;
        EXPECT_FALSE(M_InverseMatrixQuiet({{{a, b, 0}, {c, d, 0}, {5, 5, 1}}}, &untouched)) << a << " " << d;
        EXPECT_EQ(M_GetMatrixType(untouched), 0);
    }
}

TEST(Matrix, TypesAreTakenExactly) {
    EXPECT_EQ(M_GetMatrixType(kM_IdentityMatrix), 0);
    EXPECT_EQ(M_GetMatrixType({{{1, 0, 0}, {0, 1, 0}, {0, 1e-300, 1}}}), 1);
    EXPECT_EQ(M_GetMatrixType({{{1, 0, 0}, {0, -1, 0}, {4, 0, 1}}}), 2);
    EXPECT_EQ(M_GetMatrixType({{{1, 0, 0}, {1e-300, 1, 0}, {4, 0, 1}}}), 4);
    EXPECT_EQ(M_GetMatrixType({{{1, 0, 0}, {0, 1, 0}, {0, 0, 2}}}), 5);
}

TEST(Matrix, ScalingAndTurningAreAppended) {
    M_Matrix3 matrix = kM_IdentityMatrix;
    M_Matrix3_Scale(2, 3, &matrix);
    M_Matrix3_Rotate(std::acos(0.0), &matrix);
    M_FloatPoint point{1, 1};  // to (2, 3), then a quarter turn
    M_TransformFloatPoints(matrix, &point, 1);
    EXPECT_NEAR(point.x, -3, 1e-15);
    EXPECT_NEAR(point.y, 2, 1e-15);
}

TEST(Matrix, PointsAreDividedByTheirThirdCoordinate) {
    const M_Matrix3 matrix{{{2, 0, 0.5}, {0, 3, 0}, {10, 20, 1}}};
    M_FloatPoint points[] = {{4, 1}, {-2, 1}, {0, 5}};
    M_TransformFloatPoints(matrix, points, 3);
    EXPECT_EQ(points[0].x, 6);  // (8 + 10) / 3
    EXPECT_EQ(points[0].y, 23.0 / 3);
    EXPECT_EQ(points[1].x, 6);  // a third coordinate of 0 divides nothing
    EXPECT_EQ(points[2].y, 35);
    M_FloatRect rect{0, 0, 2, 1};
    M_TransformFloatRect({{{0, 1, 0}, {-1, 0, 0}, {5, 5, 1}}}, &rect);
    EXPECT_TRUE(rect.left == 4 && rect.top == 5 && rect.right == 5 && rect.bottom == 7);
}

TEST(Matrix, RoundingGoesAwayFromZeroAndStaysANumber) {
    EXPECT_EQ(M_RoundDouble(2.5), 3);
    EXPECT_EQ(M_RoundDouble(-2.5), -3);
    EXPECT_EQ(M_RoundDouble(0.49999999999999994), 0);
    EXPECT_EQ(M_RoundDouble(1e10), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(M_RoundDouble(std::nan("")), std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(M_NearlyEqual(1, 1 + 9e-13));
    EXPECT_FALSE(M_NearlyEqual(1, 1 + 1.1e-12));
    EXPECT_TRUE(M_NearlyEqual(-1000, -1000 - 9e-10));
    EXPECT_FALSE(M_NearlyEqual(-1, -1 - 1.1e-12));
    EXPECT_FALSE(M_NearlyEqual(std::nan(""), 1));
}

TEST(Matrix, UniformMotionIsAStraightLineAtOneSpeed) {
    const auto at = [](double x, double turn) {
        return M_Matrix3{{{std::cos(turn), std::sin(turn), 0}, {-std::sin(turn), std::cos(turn), 0}, {x, 2 * x, 1}}};
    };
    const M_Matrix3 line[] = {at(0, 0), at(1, 0), at(2, 0), at(3, 0)};
    const M_Matrix3 faster[] = {at(0, 0), at(1, 0), at(2.5, 0), at(3, 0)};
    const M_Matrix3 turning[] = {at(0, 0), at(1, 0.1), at(2, 0.2)};
    EXPECT_FALSE(GK::IsNonLinearSubframeMotion(line, 4));
    EXPECT_TRUE(GK::IsNonLinearSubframeMotion(faster, 4));
    EXPECT_TRUE(GK::IsNonLinearSubframeMotion(turning, 3));
    EXPECT_FALSE(GK::IsNonLinearSubframeMotion(turning, 2));
}

}  // namespace
