// SPDX-License-Identifier: Apache-2.0
// Means over the samples of a path: their rounding, and the order of their sums.
#include "QX/geometry/QX_MovingRowsT.h"
#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

/// The mean of opaque samples of one grey each, and the sum of the greys of all.
template <class Pixel> QX_ChannelOf<Pixel> mean_of_greys(std::int64_t sum, int count) {
    PathSum<Pixel> path;
    for (int i = 0; i < count; ++i) {
        const auto c = static_cast<QX_ChannelOf<Pixel>>(sum / count + (i < sum % count ? 1 : 0));
        path.add({kFull<Pixel>, c, c, c});
    }
    const Pixel mean = path.mean(count);
    EXPECT_EQ(mean, (Pixel{kFull<Pixel>, mean.red, mean.red, mean.red}));
    return mean.red;
}

/// At 8 bits every truncated mean of colour times alpha that there is goes to the nearest 255th. At 16 bits it is the
/// nearest mean, halves up: the quotient's own rounding is finer than any two means apart.
TEST(PathSum, CoveredPixelsRoundToTheNearest) {
    for (const int count : {1, 2, 3, 7, 255, 256}) {
        for (int sum = 0; sum <= 255 * count; ++sum) {
            ASSERT_EQ(mean_of_greys<QX_Pixel8>(sum, count), (2 * (255 * sum / count) + 255) / 510) << sum;
        }
        for (std::int64_t sum = 0; sum <= 32768 * count; sum += 1 + count / 7) {
            ASSERT_EQ(mean_of_greys<QX_Pixel16>(sum, count), (2 * sum + count) / (2 * count)) << sum << " / " << count;
        }
    }
}

/// From the ends inwards where no position wraps, else all in turn: positions beyond 32,768 come back on the other
/// side.
TEST(MovingDraft, SumsAreTakenInTheOrderOfTheSamples) {
    Picture<QX_PixelFloat> world(24, 16);
    fill_pixels(std::span(world.pixels), FillKind::random, 3);
    Numbers any(7);
    int wrapped = 0, covered = 0;
    constexpr std::int32_t count = 9, steps = 8;
    for (int n = 0; n < 20000; ++n) {
        const auto near = [&] { return FixedPoint{any(-4 * 65536, 28 * 65536), any(-4 * 65536, 20 * 65536)}; };
        const int reach = n % 2 == 0 ? 1 : 12000, there = any(0, count);
        const auto step = [&] { return FixedPoint{any(-65536, 65536) * reach, any(-65536, 65536)}; };
        RowGeometry a{}, b{};
        a.dx = step(), b.dx = a.dx + FixedPoint{any(-9, 9), any(-9, 9)};
        a.start = near() + -(a.dx * there), b.start = near() + -(b.dx * there);  // pixel `there` lies near the world
        const LinearPaths paths(a, b, steps);
        std::vector<QX_PixelFloat> got(count), want(count);
        MovingDraftRows<QX_PixelFloat>(world.record, paths).sample(count, got.data());
        const auto passes_end = [](std::int64_t from, std::int64_t by, std::int64_t low, std::int64_t high) {
            return from + by < low || from + by > high;
        };
        const auto row_wraps = [&](std::int32_t from, std::int32_t by) {
            return passes_end(from, std::int64_t{by} * (count - 1), -32768 * 65536ll, 32767 * 65536ll);
        };
        const FixedPoint half{32768, 32768}, from = a.start + half, to = b.start + half;
        const bool row_fits = !row_wraps(from.x, a.dx.x) && !row_wraps(from.y, a.dx.y) && !row_wraps(to.x, b.dx.x) &&
                              !row_wraps(to.y, b.dx.y);
        for (int i = 0; i < count; ++i) {
            const FixedPoint p = from + a.dx * i, q = to + b.dx * i;
            const FixedPoint by{wrapping_difference(q.x, p.x) / steps, wrapping_difference(q.y, p.y) / steps};
            const auto path_wraps = [&](std::int32_t at, std::int32_t d) {
                return passes_end(at, std::int64_t{d} * (steps - 1), INT32_MIN, INT32_MAX);
            };
            const bool fits = row_fits && !path_wraps(p.x, by.x) && !path_wraps(p.y, by.y);
            PathSum<QX_PixelFloat> sum;
            const auto take = [&](int k) {
                const FixedPoint s = p + by * k;
                const int x = s.x >> 16, y = s.y >> 16;
                if (holds({0, 0, 24, 16}, x, y)) sum.add(world.at(x, y));
                return holds({0, 0, 24, 16}, x, y);
            };
            int first = 0, last = steps;
            while (first < last && !(take(first++) && fits)) continue;
            while (last > first && !take(--last)) continue;
            while (first < last) take(first++);
            const QX_PixelFloat mean = sum.mean(steps);
            want[static_cast<std::size_t>(i)] = mean;
            covered += mean.alpha != 0 ? 1 : 0;
            wrapped += mean.alpha != 0 && !row_fits ? 1 : 0;
        }
        ASSERT_EQ(got, want) << "case " << n;
    }
    EXPECT_TRUE(wrapped > 1000 && covered > 20000) << wrapped << " of " << covered;
}

/// Steps of a third of all numbers, or less, come back into the world again and again.
TEST(StillDraft, RowsThatWrapAreTestedPixelByPixel) {
    Picture<QX_Pixel16> world(24, 16);
    fill_pixels(std::span(world.pixels), FillKind::random, 3);
    Numbers any(8);
    for (int n = 0; n < 5000; ++n) {
        constexpr std::int32_t count = 40;
        RowGeometry row{};
        row.dx = {static_cast<std::int32_t>(0x100000000 / any(3, 14)) + any(-9999, 9999), any(-9999, 9999)};
        row.start = FixedPoint{any(0, 24 * 65536), any(0, 16 * 65536)} + -(row.dx * any(0, count));
        std::vector<QX_Pixel16> got(count), want(count);
        std::uint32_t sum = 0;
        for (int i = 0; i < count; ++i) {
            const FixedPoint p = row.start + FixedPoint{32768, 32768} + row.dx * i;
            if (!holds({0, 0, 24, 16}, p.x >> 16, p.y >> 16)) continue;
            want[static_cast<std::size_t>(i)] = world.at(p.x >> 16, p.y >> 16);
            sum += want[static_cast<std::size_t>(i)].alpha;
        }
        EXPECT_EQ(StillDraftRows<QX_Pixel16>(world.record, row, nullptr).sample(count, got.data()), sum);
        ASSERT_EQ(got, want) << "case " << n;
    }
}

}  // namespace
}  // namespace qx::test
