// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_GaussianKernel.h"

#include <cmath>

#include "tests/support/Refusals.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

struct Kernel {
    std::int32_t width = -1;
    std::vector<std::uint32_t> weights;

    Kernel(double radius, std::uint32_t flags, double multiplier = 1) {
        const auto side = static_cast<std::size_t>(2 * std::ceil(radius) + 1);
        weights.resize((flags & kQX_GaussianKernel_OneRow) != 0 ? side : side * side);
        EXPECT_EQ(QX_GaussianKernel(nullptr, radius, flags, multiplier, &width, weights.data()), 0);
        EXPECT_EQ(width, static_cast<std::int32_t>(side));
    }
    std::uint32_t at(std::int32_t x, std::int32_t y) const {
        return weights[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

/// The bell, its constants multiplied out.
double bell(double d) { return d > 1 ? 0 : 1.102 * std::exp(-2.378 * (d * d)) - 0.102; }

TEST(GaussianKernel, EntriesAreTheBellAtTheirDistance) {
    for (const double radius : {0.0, 0.5, 1.0, 3.7, 20.0}) {
        const Kernel square(radius, 0), row(radius, kQX_GaussianKernel_OneRow);
        const std::int32_t reach = square.width / 2;
        for (const auto& [y, x] : places(square.width, square.width)) {
            const double exact = 255 * bell(std::hypot(x - reach, y - reach) / (radius + 1));
            EXPECT_NEAR(square.at(x, y), exact, 0.5 + 1e-9) << radius << " " << x << " " << y;
        }
        for (std::int32_t x = 0; x < row.width; ++x) EXPECT_EQ(row.at(x, 0), square.at(x, reach));
    }
}

TEST(GaussianKernel, TheMeanOfANormalisedOneIsFull) {
    for (const double radius : {0.5, 5.0, 12.25}) {
        const Kernel kernel(radius, kQX_GaussianKernel_Normalise);
        double sum = 0;
        for (const std::uint32_t w : kernel.weights) sum += w;
        EXPECT_NEAR(sum / static_cast<double>(kernel.weights.size()), 255, 1) << radius;
    }
}

TEST(GaussianKernel, AMultiplierIsLimitedAfterTheSum) {
    EXPECT_EQ(Kernel(2, 1, 1e300).at(0, 0), 255u);
    EXPECT_EQ(Kernel(2, 1, -1).at(2, 0), 0u);
    EXPECT_EQ(Kernel(2, 3, 0).at(2, 0), 0u);
    // Entries stop at 255, the sum does not: at four times the bell all five stop short of a mean of 255.
    const Kernel bright(2, 3, 4);
    EXPECT_LT(bright.at(2, 0), Kernel(2, 3).at(2, 0));
}

TEST(GaussianKernel, ARowsSquareWrapsAt16Bits) {
    // 182 * 182 is 33124, which 16 signed bits hold as -32412: nearer columns have no distance.
    const Kernel kernel(182, 0);
    EXPECT_EQ(kernel.at(182 + 180, 0), 0u);
    EXPECT_NEAR(kernel.at(182 + 182, 0), 255 * bell(std::sqrt(182.0 * 182 - 32412) / 183), 0.5);
    for (const std::uint32_t w : Kernel(182, kQX_GaussianKernel_Normalise).weights) ASSERT_EQ(w, 0u);
}

TEST(GaussianKernel, RefusesRadiiThatAreNoneAndWritesNothing) {
    std::int32_t width = -1;
    std::uint32_t weights[9] = {77};
    for (const double radius : {-1e-300, -1.0, std::nan(""), 32767.5, 1e300}) {
        EXPECT_EQ(QX_GaussianKernel(nullptr, radius, 0, 1, &width, weights), 3) << radius;
    }
    EXPECT_EQ(QX_GaussianKernel(nullptr, 1, 0, 1, nullptr, weights), 3);
    EXPECT_EQ(QX_GaussianKernel(nullptr, 1, 0, 1, &width, nullptr), 3);
    EXPECT_TRUE(width == -1 && weights[0] == 77);
}

}  // namespace
