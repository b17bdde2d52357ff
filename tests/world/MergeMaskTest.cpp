// SPDX-License-Identifier: Apache-2.0
// Masks in alpha, against the formula of one pixel.
#include "QX/world/QX_MergeMask.h"

#include "tests/world/UnoSupport.h"

namespace qx::test {
namespace {

int merge(QX_World* world, const QX_UnoBuffer* mask, int x = 0, int y = 0, const M_LRect* part = nullptr,
          const M_LRect* rect = nullptr, const QX_ProgressInfo* progress = nullptr) {
    return code_of([&] { QX_MergeMaskAlpha(progress, x, y, part, mask, rect, world); });
}

/// An alpha under a sample.
double merged(double alpha, double sample, int depth, int mask_depth) {
    if (sample == 0 || sample == full_of(mask_depth)) return sample == 0 ? 0 : alpha;
    const double share = sample * (mask_depth == 8 ? 1.0 / 255 : 1.0 / 32768);
    if (depth == 32) return static_cast<float>(alpha) * static_cast<float>(share);
    const double m = converted(sample, mask_depth, depth);
    return product(static_cast<std::int64_t>(alpha), static_cast<std::int64_t>(m), depth);
}

/// Random places, parts and sizes, of which every pixel is looked at.
TEST(MergeMask, MultipliesAlphaWhereTheMaskLiesAndClearsItElsewhere) {
    const Born born(1);
    for (const auto seed : seeds(2000)) {
        SCOPED_TRACE(seed);
        Numbers random(static_cast<unsigned>(seed));
        const int depth = 8 << random(0, 3), mask_depth = 8 << random(0, 2), full = full_of(mask_depth);
        const World world = made(random(1, 40), random(1, 9), depth, seed);
        const World before(QX_World::New(world->width, world->height, static_cast<short>(depth), 1));
        before->CopyWorld(world.get());
        world->origin_x = 1000;
        const Buffer mask = made_of(random(1, 40), random(1, 9), mask_depth, [&](int, int) {
            return random(0, 3) == 0 ? random(0, 2) * full : random(0, full + 1);
        });
        const auto rect = [&](bool none) {
            const int left = random(-5, 30), top = random(-3, 6);
            return none ? M_LRect{-99, -99, 99, 99} : M_LRect{left, top, left + random(-1, 40), top + random(-1, 9)};
        };
        const bool whole = random(0, 2) == 0, all = random(0, 2) == 0;
        const M_LRect part = rect(whole), area = rect(all);
        const int x = random(-20, 30), y = random(-5, 6);
        ASSERT_EQ(merge(world.get(), mask.get(), x, y, whole ? nullptr : &part, all ? nullptr : &area), 0);
        const auto values = samples(*mask);
        for (const auto& [i, j] : places(world->width, world->height)) {
            const double alpha = channel(*before, i, j, 0);
            const bool usable = holds(part, i - x, j - y) && holds({0, 0, mask->width, mask->height}, i - x, j - y);
            const double s = usable ? values[static_cast<std::size_t>((j - y) * mask->width + i - x)] : 0;
            ASSERT_EQ(channel(*world, i, j, 0), holds(area, i, j) ? merged(alpha, s, depth, mask_depth) : alpha)
                << i << ", " << j << " depths " << depth << ", " << mask_depth << " sample " << s << " alpha " << alpha;
            for (const int c : {1, 2, 3}) ASSERT_EQ(channel(*world, i, j, c), channel(*before, i, j, c));
        }
    }
}

TEST(MergeMask, AllPairsOf8BitsAndAFullMaskChangesNothing) {
    const Born born(1);
    for (const auto& [depth, mask_depth] : each(kDepths, std::array{8, 16})) {
        const World world = make(256, 256, depth), before = make(256, 256, depth);
        for (const World* w : {&world, &before}) {
            const auto value = [](int i, int) { return i / 4; };
            if (depth == 8) set_channels<std::uint8_t>(**w, value);
            if (depth == 16) set_channels<std::uint16_t>(**w, [](int i, int) { return i / 4 * 128; });
            if (depth == 32) set_channels<float>(**w, [](int i, int) { return static_cast<float>(i - 300) / 512; });
        }
        const Buffer full = made_of(256, 256, mask_depth, [=, m = mask_depth](int, int) { return full_of(m); });
        ASSERT_EQ(merge(world.get(), full.get()), 0);
        for (const auto& [x, y] : places(256, 256)) ASSERT_EQ(channel(*world, x, y, 0), channel(*before, x, y, 0));
        const auto sample = [=, m = mask_depth](int, int y) { return m == 8 ? y : y * 128 + y / 255 * 128; };
        const Buffer mask = made_of(256, 256, mask_depth, sample);
        ASSERT_EQ(merge(world.get(), mask.get()), 0);
        for (const auto& [x, y] : places(256, 256)) {
            ASSERT_EQ(channel(*world, x, y, 0), merged(channel(*before, x, y, 0), sample(x, y), depth, mask_depth));
        }
    }
}

TEST(MergeMask, FarPlacesAndRectanglesDoNotWrap) {
    const Born born(1);
    const M_LRect all{INT_MIN, INT_MIN, INT_MAX, INT_MAX};
    const Buffer full = made_of(4, 4, 8, [](int, int) { return 255; });
    for (const auto& [x, y, stays] : Cases<int, int, bool>{
             {0, 0, true}, {INT_MIN, 0, false}, {INT_MAX, 0, false}, {0, INT_MIN, false}, {0, INT_MAX, false}}) {
        const World world = made(4, 4, 16, 1), before = made(4, 4, 16, 1);
        ASSERT_EQ(merge(world.get(), full.get(), x, y, &all, &all), 0);
        for (const auto& [i, j] : places(4, 4)) {
            EXPECT_EQ(channel(*world, i, j, 0), stays ? channel(*before, i, j, 0) : 0) << x << ", " << y;
        }
    }
}

TEST(MergeMask, RefusalsAreThrownAndLeaveTheWorld) {
    const Born born(1);
    BadWorlds bad;
    DamagedBuffers damaged;
    const Buffer mask = counting(4, 4, 8);
    const QX_UnoBuffer real(4, 4, 32);
    const World world = made(4, 4, 8, 1), before = made(4, 4, 8, 1);
    QX_WorldX<QX_Pixel8> on_gpu(&bad.gpu, true), empty(&bad.empty, true);
    on_gpu.platform_ref = bad.gpu.platform_ref;
    const auto call = [](QX_World* w, const QX_UnoBuffer* m) { return [=] { return merge(w, m); }; };
    expect_refused(kOnGpu, {call(&on_gpu, mask.get()), call(&on_gpu, nullptr)});
    expect_refused(kBadParameter, {call(nullptr, mask.get()), call(&empty, mask.get())});
    for (const QX_UnoBuffer* const b : damaged.all()) expect_refused("damaged mask buffer", {call(world.get(), b)});
    expect_refused("Unexpected bitdepth in QXp_MergeMaskAlphaScanIter()", {call(world.get(), &real)});
    for (const auto& [x, y] : places(4, 4)) EXPECT_EQ(channel(*world, x, y, 0), channel(*before, x, y, 0));
}

TEST(MergeMask, ProgressIsAskedEvery64RowsAndItsAnswerIsThrown) {
    const Born born(1);
    const World world = made(4, 300, 8, 1), before = made(4, 300, 8, 1);
    const Buffer mask = made_of(4, 300, 8, [](int, int) { return 0; });
    Polls polls{.stop_at = 1};
    const QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
    EXPECT_EQ(merge(world.get(), mask.get(), 0, 0, nullptr, nullptr, &info), 517);
    EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{63, 300}, {127, 300}}));
    for (const auto& [x, y] : places(4, 300)) {
        ASSERT_EQ(channel(*world, x, y, 0), y < 128 ? 0 : channel(*before, x, y, 0));
    }
}

TEST(UnoBandsOfMerge, AnyNumberGivesTheSameBitsAndNoAllocationFailsUnheard) {
    std::vector<QX_Pixel16> one;
    for (const int bands : {1, 2, 7, 32}) {
        const Born born(bands);
        const Buffer mask = counting(300, 200, 8);
        int code = 4;
        for (int nth = 0; code == 4; ++nth) {
            const Reports reports;
            TestWorld<QX_Pixel16> world(310, 210, FillKind::random, 1);
            NewCounter::fail(nth);
            code = merge(&world.world(), mask.get(), 5, 5);
            NewCounter::fail(0);
            ASSERT_TRUE(code == 0 || code == 4) << code;
            if (code == 4) continue;
            if (one.empty()) one = world.pixels();
            EXPECT_EQ(world.pixels(), one) << bands;
            if (nth == 0) code = 4;  // now with each allocation failing
        }
    }
}

}  // namespace
}  // namespace qx::test
