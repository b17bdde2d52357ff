// SPDX-License-Identifier: Apache-2.0
#include "scene/LayerPlace.h"

#include "tests/support/Test.h"

namespace {

using namespace qx::scene;

constexpr Extent kLayer{40, 20}, kBackground{101, 60};

void expect_at(const Settled& settled, int x, int y) {
    EXPECT_EQ(settled.x, x);
    EXPECT_EQ(settled.y, y);
    EXPECT_FALSE(settled.matrix);
}

void expect_covers(const Settled& settled, double left, double top, double right, double bottom) {
    ASSERT_TRUE(settled.matrix);
    const M_FloatRect rect = bounds_of({0, 0, double(kLayer.width), double(kLayer.height)}, *settled.matrix);
    EXPECT_DOUBLE_EQ(rect.left, left);
    EXPECT_DOUBLE_EQ(rect.top, top);
    EXPECT_DOUBLE_EQ(rect.right, right);
    EXPECT_DOUBLE_EQ(rect.bottom, bottom);
}

Settled placed(const LayerPlace& place) { return settle(place, nullptr, nullptr, kLayer, kBackground); }

TEST(LayerPlace, PixelsAndPartsOfTheBackground) {
    expect_at(placed({{-7}, {3}, {}, {}}), -7, 3);
    expect_at(placed({{50, true}, {25, true}, {}, {}}), 51, 15);  // 50.5 goes up
    expect_covers(placed({{0.5}, {3}, {}, {}}), 0.5, 3, 40.5, 23);
}

TEST(LayerPlace, GravityCountsInwardsFromItsSide) {
    const int lefts[] = {5, 36, 56}, tops[] = {7, 27, 33};  // (101 - 40) / 2 = 30.5 goes up, and 5 more
    for (int gravity = 0; gravity < 9; ++gravity) {
        SCOPED_TRACE(kGravityWords[gravity]);
        expect_at(placed({{5}, {7}, gravity, {}}), lefts[gravity % 3], tops[gravity / 3]);
    }
    const Placing turned{.translate = {900, -50}, .scale = {1, 1}, .degrees = 90, .anchor = {3, 4}};
    expect_covers(settle({{0}, {0}, 8, {}}, &turned, nullptr, kLayer, kBackground), 81, 20, 101, 60);
}

TEST(LayerPlace, FitsKeepTheAspectInWholePixels) {
    using enum Fit::Kind;
    expect_covers(placed({{}, {}, {}, Fit{box, {30, 30}}}), 0, 0, 30, 15);
    expect_covers(placed({{2}, {3}, 8, Fit{box, {30, 30}}}), 69, 42, 99, 57);
    expect_covers(placed({{}, {}, {}, Fit{contain, {}}}), 0, 5, 101, 56);  // 50.5 rows become 51, 4.5 above them 5
    expect_covers(placed({{}, {}, {}, Fit{cover, {}}}), -9, 0, 111, 60);   // 120 wide: 9.5 on both sides
    expect_covers(placed({{}, {}, 0, Fit{cover, {}}}), 0, 0, 120, 60);
    expect_covers(placed({{}, {}, {}, Fit{box, {1, 1}}}), 0, 0, 1, 1);
}

}  // namespace
