// SPDX-License-Identifier: Apache-2.0
// Summed-area tables at every level against plain sums, and samples of them against exact means.
#include "QX/sampling/QX_SummedArea.h"

#include "tests/support/Test.h"

namespace qx::test {
namespace {

template <class Cell> const Cell* cells_of(const QX_SummedAreaTable& table) {
    if constexpr (std::is_same_v<Cell, QX_PixelFloat>) {
        return table.float_table;
    } else {
        return table.double_table;
    }
}

/// One number of each channel, alpha first.
using Four = std::array<double, 4>;
template <class Pixel> Four numbers_of(const Pixel& p) {
    return {double(p.alpha), double(p.red), double(p.green), double(p.blue)};
}

/// A pixel as it is summed.
template <class Pixel> Four multiplied(const Pixel& p) {
    constexpr double full = DepthOf<Pixel>::full;
    Four v = numbers_of(p);
    if (v[0] == 0) return {};
    if (v[0] >= full) return v;
    for (std::size_t i = 1; i < 4; ++i) v[i] *= v[0] / full;
    return v;
}

/// The table as told: a sum at a time, in the written order.
template <class Pixel> std::vector<Four> expected_means(const QX_WorldX<Pixel>& world) {
    const auto width = static_cast<std::size_t>(world.width);
    std::vector<Four> above(width + 1), made(width + 1), means;
    for (int y = 0; y < world.height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const Four p = multiplied(world.Row(y)[x]);
            const double share = 1.0 / (static_cast<double>(x + 1) * (y + 1));
            Four mean;
            for (std::size_t i = 0; i < 4; ++i) {
                made[x + 1][i] = ((p[i] + made[x][i]) + above[x + 1][i]) - above[x][i];
                mean[i] = made[x + 1][i] * share;
            }
            means.push_back(mean);
        }
        above.swap(made);
    }
    return means;
}

template <class Cell> void expect_table(const std::vector<Four>& want, const Cell* cells) {
    using Channel = QX_ChannelOf<Cell>;
    for (std::size_t i = 0; i < want.size(); ++i) {
        const Four& w = want[i];
        const Cell cell{Channel(w[0]), Channel(w[1]), Channel(w[2]), Channel(w[3])};
        ASSERT_EQ(std::memcmp(&cell, &cells[i], sizeof cell), 0) << "cell " << i << " red " << cells[i].red;
    }
}

template <class Pixel> class SummedAreaAt : public testing::Test {};
TYPED_TEST_SUITE(SummedAreaAt, AllDepths);

TYPED_TEST(SummedAreaAt, EveryLevelGivesThePlainSums) {
    const Cases<int, int> sizes = {{1, 1}, {3, 30}, {7, 9}, {67, 8}, {40, 17}, {1100, 23}, {9000, 25}};
    std::uint64_t seed = 0;
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto& [area, fill, doubles] : each(sizes, kAllFills, std::array{false, true})) {
            const auto [width, height] = area;
            SCOPED_TRACE(testing::Message() << width << " by " << height << " seed " << ++seed);
            TestWorld<TypeParam> world(width, height, fill, seed);
            const QX_SummedAreaTable table(&world.world(), doubles);
            ASSERT_EQ(table.use_double, doubles || DepthOf<TypeParam>::number == 32);
            ASSERT_EQ(table.use_double, table.float_table == nullptr);
            ASSERT_EQ(table.use_double, table.double_table != nullptr);
            ASSERT_EQ(std::pair(table.width, table.height), std::pair(width, height));
            const auto want = expected_means(world.world());
            if (table.use_double) expect_table(want, table.double_table);
            if (!table.use_double) expect_table(want, table.float_table);
            if (this->HasFatalFailure()) return;
        }
    }
}

TEST(SummedArea, FloatsThatAreNoNumbersStayUnderTheirAlphas) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    for (const auto level : kLevels) {
        const Born born(1, level);
        TestWorld<QX_PixelFloat> world(5, 9, FillKind::opaque, 1);
        for (const auto& [x, y] : places(5, 9)) world.at(x, y) = {1, 1, 1, 1};
        world.at(1, 0) = {0, nan, inf, -inf}, world.at(2, 3) = {-0.0f, nan, nan, nan};
        const QX_SummedAreaTable whole(&world.world(), false);
        EXPECT_EQ(whole.double_table[44].red * 45, 43);
        world.at(3, 1) = {1.5f, nan, 2, 2}, world.at(4, 2) = {-0.5f, 2, 2, 2};
        const QX_SummedAreaTable odd(&world.world(), false);
        EXPECT_EQ(odd.double_table[9].green * 10, 8 + 2);
        EXPECT_TRUE(std::isnan(odd.double_table[9].red));
        EXPECT_EQ(odd.double_table[14].green * 15, 8 + 2 + 5 - 1 - 1);
        world.at(0, 0).alpha = nan;
        const QX_SummedAreaTable none(&world.world(), false);
        EXPECT_TRUE(std::isnan(none.double_table[0].alpha) && std::isnan(none.double_table[0].blue));
    }
}

/// The mean of the part of a rectangle that lies in the world, in double, and the alpha of all of it.
template <class Pixel>
Four exact_mean(const QX_WorldX<Pixel>& world, double left, double top, double right, double bottom) {
    Four sum{};
    const auto covered = [](double from, double to, int at) {
        return std::max(0.0, std::min(to, at + 1.0) - std::max(from, double(at)));
    };
    for (int y = 0; y < world.height; ++y) {
        for (int x = 0; x < world.width; ++x) {
            const Four p = multiplied(world.Row(y)[x]);
            const double weight = covered(left, right, x) * covered(top, bottom, y);
            for (std::size_t i = 0; i < 4; ++i) sum[i] += weight * p[i];
        }
    }
    if (!(sum[0] > 0)) return {};
    constexpr double full = DepthOf<Pixel>::full;
    const double alpha = sum[0] / ((right - left) * (bottom - top));
    return {alpha, sum[1] * full / sum[0], sum[2] * full / sum[0], sum[3] * full / sum[0]};
}

/// What a mean may be off by: half a step at integers and a little; where cells are floats, which are off by 2^-24,
/// that of four corners; and where an edge is cut to the world's end, what lies there. Colours divide by the alpha.
template <class Pixel, class Cell>
double slack_of(const QX_WorldX<Pixel>& world, const Four& mean, double area, bool cuts) {
    constexpr double full = DepthOf<Pixel>::full;
    const double corner = double(world.width) * world.height, share = mean[0] / full;
    const double in_floats = std::is_same_v<Cell, QX_PixelFloat> ? 8 * corner * full * 0x1p-24 / (share * area) : 0;
    return (full > 1 ? 0.505 : 1e-5) + in_floats + (cuts ? full * 3e-5 / share : 0);
}

template <class Pixel, class Cell> void expect_mean(const Four& want, const Pixel& made, double slack) {
    constexpr double full = DepthOf<Pixel>::full;
    const Four got = numbers_of(made);
    for (std::size_t i = 0; i < 4; ++i) {
        const bool limits = i == 0 || full > 1 || std::is_same_v<Cell, QX_PixelFloat>;
        const double limited = limits ? std::clamp(want[i], 0.0, full) : want[i];
        ASSERT_NEAR(got[i], limited, slack) << "channel " << i;
    }
}

template <class Pixel, class Cell> void expect_samples(FillKind fill, std::uint64_t seed) {
    const int width = 37, height = 29;
    TestWorld<Pixel> test_world(width, height, fill, seed);
    const auto& world = test_world.world();
    const QX_SummedAreaTable table(&world, std::is_same_v<Cell, QX_PixelDouble>);
    const Cell* const cells = cells_of<Cell>(table);
    std::mt19937 random(static_cast<unsigned>(seed));
    const auto between = [&](double low, double high) {
        return static_cast<float>(low + (high - low) * static_cast<double>(random()) / 4294967296.0);
    };
    int compared = 0;
    const auto expect = [&](const Pixel& made, double l, double t, double r, double b) {
        SCOPED_TRACE(testing::Message() << l << " " << t << " " << r << " " << b);
        const Four mean = exact_mean(world, l, t, r, b);
        if (mean[0] < 0.02 * DepthOf<Pixel>::full) return;  // colours of next to nothing are made of roundings
        ++compared;
        const bool cuts = r >= width || b >= height;
        expect_mean<Pixel, Cell>(mean, made, slack_of<Pixel, Cell>(world, mean, (r - l) * (b - t), cuts));
    };
    for (int i = 0; i < 300 && !testing::Test::HasFatalFailure(); ++i) {
        const float left = between(-20, width), top = between(-20, height);
        const float right = left + between(1, 50), bottom = top + between(1, 50);
        Pixel made;
        QX_SummedAreaTable_SampleAA(width, height, cells, left, top, right, bottom, &made);
        expect(made, left + 0.5f, top + 0.5f, right + 0.5f, bottom + 0.5f);
        const int l = static_cast<int>(left), t = static_cast<int>(top), r = l + 1 + i % 40, b = t + 1 + i / 8;
        QX_SummedAreaTable_SampleDraft(width, height, cells, l, t, r, b, &made);
        expect(made, l, t, r, b);
    }
    EXPECT_GT(compared, 200);
}

TYPED_TEST(SummedAreaAt, SamplesAreTheMeansOfRectangles) {
    const Born born(1);
    for (const auto& [seed, fill] : each(seeds(10), std::array{FillKind::opaque, FillKind::layer})) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        if constexpr (DepthOf<TypeParam>::number != 32) expect_samples<TypeParam, QX_PixelFloat>(fill, seed);
        expect_samples<TypeParam, QX_PixelDouble>(fill, seed);
        if (this->HasFatalFailure()) return;
    }
}

/// A table of a solid world, or any cells, read by both samplers.
template <class Pixel, class Cell> struct Samples {
    int width, height;
    std::vector<Cell> cells;
    Pixel draft(int left, int top, int right, int bottom) const {
        Pixel p{1, 1, 1, 1};
        QX_SummedAreaTable_SampleDraft(width, height, cells.data(), left, top, right, bottom, &p);
        return p;
    }
    Pixel fine(float left, float top, float right, float bottom) const {
        Pixel p{1, 1, 1, 1};
        QX_SummedAreaTable_SampleAA(width, height, cells.data(), left, top, right, bottom, &p);
        return p;
    }
};
template <class Pixel, class Cell> Samples<Pixel, Cell> solid(int width, int height) {
    using C = QX_ChannelOf<Cell>;
    const Cell cell{C(DepthOf<Pixel>::full), C(DepthOf<Pixel>::half), C(0), C(DepthOf<Pixel>::full)};
    return {width, height, std::vector<Cell>(static_cast<std::size_t>(width * height), cell)};
}
template <class Pixel> Pixel solid_pixel(double alpha) {
    using D = DepthOf<Pixel>;
    using C = typename D::Channel;
    return {C(alpha * D::full + (D::number == 32 ? 0 : 0.5)), C(D::half), 0, C(D::full)};
}

/// A solid world: any rectangle has its colour, and an alpha by the part of it that meets the world.
template <class Pixel, class Cell> void expect_solid() {
    const auto samples = solid<Pixel, Cell>(8, 6);
    const Pixel none{};
    constexpr int kEdges[] = {INT_MIN, -9, -1, 0, 3, 5, 6, 8, 11, 1 << 30, INT_MAX};
    for (const auto& [l, t, r, b] : each(kEdges, kEdges, kEdges, kEdges)) {
        const double across = std::min(r, 8) - double(std::max(l, 0)), down = std::min(b, 6) - double(std::max(t, 0));
        const double area = (double(r) - l) * (double(b) - t);
        const Pixel want = across > 0 && down > 0 ? solid_pixel<Pixel>(across * down / area) : none;
        ASSERT_EQ(samples.draft(l, t, r, b), want) << l << " " << t << " " << r << " " << b;
    }
    EXPECT_EQ(samples.fine(-4.5f, 0.5f, 3.5f, 2.5f), solid_pixel<Pixel>(0.5));
    EXPECT_EQ(samples.fine(2.5f, 2.5f, 4.5f, 4.5f), solid_pixel<Pixel>(1));
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    constexpr float kOdd[] = {-inf, -3e38f, -1e9f, -0.5f, 0.25f, 3, 7.25f, 7.5f, 7.5000005f, 1e9f, 3e38f, inf, nan};
    for (const auto& [l, t, r, b] : each(kOdd, kOdd, kOdd, kOdd)) {
        const Pixel made = samples.fine(l, t, r, b);
        const auto in = [](float from, float to, float end) { return from < to && to > -0.5f && from < end - 0.5f; };
        const float area = ((r + 0.5f) - (l + 0.5f)) * ((b + 0.5f) - (t + 0.5f));
        Pixel want = area > 0 && in(l, r, 8) && in(t, b, 6) ? solid_pixel<Pixel>(1) : none;
        want.alpha = made.alpha;
        ASSERT_EQ(made, want) << l << " " << t << " " << r << " " << b;
    }
    const Samples<Pixel, Cell> clear{8, 6, std::vector<Cell>(48)};
    EXPECT_EQ(clear.draft(0, 0, 8, 6), none);
    EXPECT_EQ(clear.fine(0, 0, 8, 6), none);
}

TYPED_TEST(SummedAreaAt, ASolidWorldKeepsItsColourAtAnyEdges) {
    expect_solid<TypeParam, QX_PixelFloat>();
    expect_solid<TypeParam, QX_PixelDouble>();
}

/// Cells that the corners of a rectangle don't touch are no numbers: none of these is read.
template <class Pixel, class Cell> void expect_few_reads() {
    constexpr int width = 40, height = 30;
    const auto whole = solid<Pixel, Cell>(width, height);
    Numbers number(3);
    for (int i = 0; i < 200; ++i) {
        const int l = number(-5, 30), t = number(-5, 20), r = l + number(2, 20), b = t + number(2, 20);
        auto corners = whole, around = whole;
        for (const auto& [x, y] : places(width, height)) {
            const auto near = [](int at, int from, int to, int last, int behind) {
                const auto by = [&](int edge) {
                    const int first = std::clamp(edge, 0, last) - 1;
                    return at >= first && at <= first + behind;
                };
                return by(from) || by(to);
            };
            Cell& corner = corners.cells[static_cast<std::size_t>(y * width + x)];
            Cell& beside = around.cells[static_cast<std::size_t>(y * width + x)];
            if (!near(x, l, r, width, 0) || !near(y, t, b, height, 0)) corner.alpha = NAN;
            if (!near(x, l, r, width - 1, 1) || !near(y, t, b, height - 1, 1)) beside.alpha = NAN;
        }
        ASSERT_EQ(corners.draft(l, t, r, b), whole.draft(l, t, r, b));
        const auto fine = [&](const auto& samples) {
            return samples.fine(float(l) - 0.25f, float(t) - 0.375f, float(r) - 0.125f, float(b) - 0.25f);
        };
        ASSERT_EQ(fine(around), fine(whole)) << l << " " << t << " " << r << " " << b;
    }
}

TYPED_TEST(SummedAreaAt, ASampleReadsTheCellsAtItsCornersAlone) {
    expect_few_reads<TypeParam, QX_PixelFloat>();
    expect_few_reads<TypeParam, QX_PixelDouble>();
}

TYPED_TEST(SummedAreaAt, FractionalEdgesOnPixelsAreTheDraft) {
    const Born born(1);
    for (const auto seed : seeds(20)) {
        TestWorld<TypeParam> world(300, 40, kAllFills[seed % 6], seed);
        const QX_SummedAreaTable table(&world.world(), seed % 2 == 0);
        Numbers number(static_cast<unsigned>(seed));
        const auto expect_same = [&]<class Cell>(const Cell* cells) {
            for (int i = 0; i < 500; ++i) {
                const int l = number(-50, 299), t = number(-50, 39), r = number(l, 300), b = number(t, 40);
                TypeParam draft, fine;
                QX_SummedAreaTable_SampleDraft(300, 40, cells, l, t, r, b, &draft);
                QX_SummedAreaTable_SampleAA(300, 40, cells, float(l) - 0.5f, float(t) - 0.5f, float(r) - 0.5f,
                                            float(b) - 0.5f, &fine);
                ASSERT_EQ(fine, draft) << "seed " << seed << ": " << l << " " << t << " " << r << " " << b;
            }
        };
        if (table.use_double) expect_same(table.double_table);
        if (!table.use_double) expect_same(table.float_table);
    }
}

TEST(SummedArea, WhatCannotBeSummedThrows) {
    const Born born(1);
    BadWorlds bad;
    QX_WorldX<QX_Pixel8> gpu(&bad.gpu, false), empty(&bad.empty, false);
    gpu.platform_ref = bad.gpu.platform_ref;
    const auto built = [](const QX_World* world) {
        return thrown([=] { const QX_SummedAreaTable table(world, false); });
    };
    expect_refused(kOnGpu, {built(&gpu)});
    expect_refused(kBadParameter, {built(nullptr), built(&empty)});
    expect_refused("Unknown world bitdepth in##CONDITIONNAME", {built(&bad.odd)});
}

TEST(SummedArea, WithoutMemoryNothingIsLeft) {
    const Born born(1);
    TestWorld<QX_Pixel8> world(20, 9, FillKind::random, 1);
    const auto build = [&] { return code_of([&] { const QX_SummedAreaTable table(&world.world(), false); }); };
    const Reports reports;
    const std::int64_t blocks = blocks_in_use();
    for (int nth = 1; nth <= 4; ++nth) {
        EXPECT_EQ(short_of_memory(nth, build), nth < 4 ? 4 : 0) << nth;
        EXPECT_EQ(blocks_in_use(), blocks) << nth;
        EXPECT_EQ(standalone::AccountedBytes(), 0) << nth;
    }
    EXPECT_EQ(reports.all().size(), 1U);  // of the table's memory; rows are asked for quietly
    EXPECT_EQ(reports.last_text(), "out of memory: memory for blurring");
}

}  // namespace
}  // namespace qx::test
