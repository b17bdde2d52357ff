// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Test.h"

namespace {

TEST(Bands, EveryRowLiesInOneBandOfEqualHeights) {
    for (const auto& [n0, rows0] : qx::test::places(32, 200)) {
        const int n = n0 + 1, rows = rows0 + 1;
        SCOPED_TRACE(testing::Message() << rows << " rows in " << n);
        const qx::Bands bands({3, 10, 5, 10 + rows}, n);
        ASSERT_EQ(bands.count(), rows < n ? rows : n);
        int next = 10;
        for (int i = 0; i < bands.count(); ++i) {
            const M_LRect band = bands[i];
            ASSERT_TRUE(band.left == 3 && band.right == 5 && band.top == next && band.bottom > next);
            ASSERT_TRUE(i + 1 == n || band.bottom - band.top == (rows < n ? 1 : rows / n));
            next = band.bottom;
        }
        ASSERT_EQ(next, 10 + rows);
    }
}

TEST(Bands, TheTallestRectangle) {
    constexpr std::int32_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t high = std::numeric_limits<std::int32_t>::max();
    const qx::Bands bands({0, low, 1, high}, 32);
    ASSERT_EQ(bands.count(), 32);
    EXPECT_EQ(bands[0].top, low);
    EXPECT_EQ(bands[31].bottom, high);
    for (int i = 1; i < 32; ++i) EXPECT_EQ(bands[i].top, bands[i - 1].bottom);
}

}  // namespace
