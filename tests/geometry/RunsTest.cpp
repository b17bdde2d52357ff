// SPDX-License-Identifier: Apache-2.0
// Runs of samples against the sampler of one pixel, in millions of pixels.
#include <cstring>

#include "QX/indep/QX_PerDepth.h"
#include "QX/indep/QX_SlotsOf.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "tests/geometry/TransformSupport.h"
#include "tests/support/TestLevels.h"

namespace qx::test {
namespace {

/// A row drawn by a transform takes the run form where there is one. While the slot `single` holds a routine of others,
/// here one that calls the library's own, single samples are taken.
template <class Pixel>
std::vector<Pixel> drawn(const TransformCall& call, TestWorld<Pixel>& src, int width, int height, int single = 0) {
    static void* own;
    own = QXp_G_OverFuncs[single];
    constexpr QX_PointSampler<QX_Pixel8> calls_own = [](void* in_data, std::int32_t x, std::int32_t y,
                                                        const QX_SampPB* params, QX_Pixel8* out) {
        return reinterpret_cast<QX_PointSampler<QX_Pixel8>>(own)(in_data, x, y, params, out);
    };
    if (single != 0) QX_SetOverrideFunc(single, reinterpret_cast<void*>(calls_own));
    TestWorld<Pixel> dst(width, height, FillKind::clear, 1);
    EXPECT_EQ(call(src.record(), dst.record()), 0);
    if (single != 0) QX_SetOverrideFunc(single, own);
    return dst.pixels();
}

TEST(Runs, EqualSingleSamplesEverywhere) {
    const Born born;
    std::mt19937_64 random(3);
    for (int run = 0; run < 240; ++run) {
        const auto kind = static_cast<FillKind>(run % 6);
        TestWorld<QX_Pixel8> src(200, 160, kind, static_cast<std::uint64_t>(run) + 1);
        const double turn = std::uniform_real_distribution<double>(-3.2, 3.2)(random);
        const double scale =
            run % 4 == 0 || run % 10 == 5 ? 1 : std::exp2(std::uniform_real_distribution<double>(-0.9, 2)(random));
        const double c = run % 5 == 0 ? scale : scale * std::cos(turn), s = run % 5 == 0 ? 0 : scale * std::sin(turn);
        // Half way between alphas of 0 and 1 lies exactly one half, which is visible.
        const M_Matrix3 matrix{{{c, s, 0}, {-s, c, 0}, {90.5 - 100 * c + 80 * s, 90.25 - 100 * s - 80 * c, 1}}};
        const M_Matrix3 later{{{c, s, 0}, {-s, c, 0}, {97 - 100 * c + 80 * s, 95.75 - 100 * s - 80 * c, 1}}};
        TransformCall call{.matrices = {matrix}, .mode = mode_of(xfer_replace)};
        if (run % 3 == 0) call.matrices.push_back(later);
        ASSERT_TRUE(drawn(call, src, 180, 181) == drawn(call, src, 180, 181, 61)) << "run " << run;
    }
}

/// Where registers are wide enough for runs, what is drawn is that of the level below them, which takes single samples.
class RunsAt : public AtLevel {
protected:
    template <class Draw> void expect_single_samples(const Draw& draw) {
        using Pixels = decltype(draw());
        const auto at = [&](standalone::ProcessorLevel level) -> Pixels {
            const Born born(1, level);
            return draw();
        };
        const Pixels single = at(standalone::ProcessorLevel::vector), pixels = at(GetParam());
        ASSERT_EQ(std::memcmp(single.data(), pixels.data(), pixels.size() * sizeof pixels[0]), 0);
    }
};
QX_AT_LEVELS(RunsAt, standalone::ProcessorLevel::faster, standalone::ProcessorLevel::widest);

TEST_P(RunsAt, EqualSingleSamplesAtAllDepths) {
    for_each_pixel_type([this]<class Pixel>() {
        for (int run = 0; run < 90; ++run) {
            TestWorld<Pixel> src(200, 160, static_cast<FillKind>(run % 6), static_cast<std::uint64_t>(run) + 1);
            Numbers number(static_cast<unsigned>(run));
            const double turn = number(-32000, 32000) / 10000.0, scale = std::exp2(number(-900, 2000) / 1000.0);
            const double c = scale * std::cos(turn), s = run % 5 == 0 ? 0 : scale * std::sin(turn);
            const M_Matrix3 first{{{c, s, 0}, {-s, c, 0}, {90.5 - 100 * c + 80 * s, 90.25 - 100 * s - 80 * c, 1}}};
            const M_Matrix3 later{{{c, s, 0}, {-s, c, 0}, {97 - 100 * c + 80 * s, 95.75 - 100 * s - 80 * c, 1}}};
            for (const int quality : {0, 1, 2}) {
                TransformCall call{.matrices = {first}, .quality = quality, .mode = mode_of(xfer_replace)};
                if (run % 9 == 0) call.matrices.push_back(later);
                SCOPED_TRACE(testing::Message() << "run " << run << ", quality " << quality << ", " << sizeof(Pixel));
                expect_single_samples([&] { return drawn(call, src, 180 + run % 7, 181); });
            }
        }
    });
}

/// Whole boxes, partial rows or columns, mirrored and sheared rows, boxes that sums in integers do not fit, layers
/// partly outside. Perspective can make boxes wider than the step between them; then several in a row pass a side of
/// the layer by less than a pixel.
const struct {
    double x, y, shear, at_x, at_y;
} kPlaces[] = {
    {0.125, 0.2, 0, 0, 0},      {1 / 64.0, 1 / 256.0, 0, 0, 0}, {0.5, 0.5, 0, 0, 0},       {1 / 3.0, 1 / 3.0, 0, 0, 0},
    {0.25, 0.25, 0, 0, 0},      {0.25, 0.25, 0, 7, 0.4},        {0.25, 0.25, 0, 0.3, 0},   {0.25, 0.125, 0, -31, -20},
    {0.3, 0.3, 0, 3.1, 5.7},    {1 / 7.3, 0.4, 0, 0, 0.2},      {0.4, 1 / 7.3, 0, 0.7, 0}, {-0.25, 0.25, 0, 300, 0},
    {-0.3, -0.4, 0, 310, 170},  {0.2, 0.25, 0.15, 10, 0},       {0.9, 0.99, 0, -200, -9},  {1 / 131.0, 0.01, 0, 1, 1},
    {0.004, 0.25, 0.03, 90, 2}, {0.25, 0.25, 0, 100, 0},        {0.25, 0.25, 0, 100.5, 0}, {0.25, 0.25, 0, 101.15, 0}};

TEST(Runs, AreasEqualSingleSamplesEverywhere) {
    const Born born;
    for (int run = 0; run < 120; ++run) {
        const auto& p = kPlaces[run / 6];
        const double tilt = run < 102 ? 0 : -0.01;
        const int width = tilt != 0 ? 64 : run % 7 == 0 ? 16 : 1187;
        TestWorld<QX_Pixel8> src(width, 401, static_cast<FillKind>(run % 6), static_cast<std::uint64_t>(run) + 1);
        TransformCall call{.matrices = {{{{p.x, 0, tilt}, {p.shear, p.y, 0}, {p.at_x, p.at_y, 1}}}},
                           .mode = mode_of(xfer_replace)};
        const auto bilinear = drawn(call, src, 331, 207);
        call.quality = 2;  // the bicubic set averages alike
        const auto bicubic = drawn(call, src, 331, 207);
        call.quality = 1;
        const auto one_by_one = drawn(call, src, 331, 207, 5);
        ASSERT_TRUE(bilinear == one_by_one && bicubic == one_by_one) << "run " << run;
    }
}

TEST_P(RunsAt, AreasEqualSingleSamplesAtAllDepths) {
    for_each_pixel_type([this]<class Pixel>() {
        for (int run = 0; run < 120; ++run) {
            const auto& p = kPlaces[run / 6];
            TestWorld<Pixel> src(run % 7 == 0 ? 16 : 603, 201, static_cast<FillKind>(run % 6), 1 + unsigned(run));
            const TransformCall call{.matrices = {{{{p.x, 0, 0}, {p.shear, p.y, 0}, {p.at_x, p.at_y, 1}}}},
                                     .quality = 1 + run % 2,
                                     .mode = mode_of(xfer_replace)};
            SCOPED_TRACE(testing::Message() << "run " << run << ", " << sizeof(Pixel));
            expect_single_samples([&] { return drawn(call, src, 331, 107); });
            expect_single_samples([&] {
                const M_LRect from{run % 5, run % 3, 603 - run % 4, 200}, to{-3, -run % 2, 601 / (2 + run % 4), 50};
                TestWorld<Pixel> dst(290, 60, FillKind::random, 1);
                EXPECT_EQ(QX_CopyBits_HQ_Straight(nullptr, src.record(), dst.record(), &from, &to), 0);
                return dst.pixels();
            });
        }
    });
}

/// Pixels need lie no better than their channels.
TEST_P(RunsAt, EqualSingleSamplesAtAnyAlignment) {
    for_each_pixel_type([this]<class Pixel>() {
        constexpr std::size_t channel = sizeof(Pixel) / 4;
        TestWorld<Pixel> src(120, 60, FillKind::random, 1);
        const std::vector<Pixel> pixels = src.pixels();
        std::vector<Pixel> moved(pixels.size() + 1);
        auto* const data = reinterpret_cast<std::byte*>(moved.data()) + channel;
        std::memcpy(data, pixels.data(), pixels.size() * sizeof(Pixel));
        src.record()->data = data;
        src.record()->rowbytes = 120 * sizeof(Pixel);
        for (const auto& [scale, shear] : {std::pair{0.25, 0.0}, {0.3, 0.0}, {0.9, 0.3}}) {
            for (const int quality : {0, 1, 2}) {
                SCOPED_TRACE(testing::Message() << scale << ", quality " << quality << ", " << sizeof(Pixel));
                const TransformCall call{.matrices = {{{{scale, shear, 0}, {-shear, scale, 0}, {3, 5, 1}}}},
                                         .quality = quality,
                                         .mode = mode_of(xfer_replace)};
                expect_single_samples([&] { return drawn(call, src, 120, 60); });
            }
        }
    });
}

/// Rows that copy are those of a row driver of a host's, which the library's own stands behind.
TEST(Runs, RowsThatCopyAreThoseOfTheDriver) {
    const Born born;
    for_each_pixel_type([]<class Pixel>() {
        constexpr int driver = static_cast<int>(SlotsOf<Pixel>.driver);
        static auto* own = slot<SlotsOf<Pixel>.driver>();
        const auto hosts = [](std::int32_t count, const QX_BlendModeDescriptor<Pixel>* mode, const Pixel* src,
                              const Pixel* mask, Pixel* dst,
                              QX_ChannelOf<Pixel>* alphas) { return own(count, mode, src, mask, dst, alphas); };
        for (int run = 0; run < 90; ++run) {
            Numbers number(static_cast<unsigned>(run));
            TestWorld<Pixel> src(90, 70, run % 10 == 9 ? FillKind::clear : static_cast<FillKind>(run % 6),
                                 unsigned(run) + 1);
            const M_Matrix3 m{{{0.9, number(-5, 5) / 10.0, 0}, {number(-5, 5) / 10.0, 1.1, 0}, {9.3, run - 45.0, 1}}};
            const TransformCall call{.matrices = {m},
                                     .quality = run % 3,
                                     .mode = mode_of(run % 4 == 0 ? int{xfer_replace} : int{xfer_copy})};
            const auto made = [&](auto* routine, bool onto_itself) {
                QX_SetOverrideFunc(driver, reinterpret_cast<void*>(routine));
                TestWorld<Pixel> dst(100 + run, 60, FillKind::random, 9);
                EXPECT_EQ(call(onto_itself ? dst.record() : src.record(), dst.record()), 0);
                QX_SetOverrideFunc(driver, reinterpret_cast<void*>(own));
                return dst.pixels();
            };
            for (const bool onto_itself : {false, true}) {
                ASSERT_TRUE(made(own, onto_itself) == made(+hosts, onto_itself)) << "run " << run;
            }
        }
    });
}

/// A quarter turn puts each pixel into a place of its own.
TEST(Runs, NearestPixelsTurn) {
    const Born born;
    for_each_pixel_type([]<class Pixel>() {
        constexpr int width = 40, height = 331;
        TestWorld<Pixel> src(width, height, FillKind::random, 1);
        const TransformCall call{
            .matrices = {{{{0, 1, 0}, {-1, 0, 0}, {height, 0, 1}}}}, .quality = 0, .mode = mode_of(xfer_replace)};
        const auto turned = drawn(call, src, height, width), pixels = src.pixels();
        for (const auto& [x, y] : places(height, width)) {
            ASSERT_EQ(turned[std::size_t(y) * height + std::size_t(x)],
                      pixels[std::size_t(height - 1 - x) * width + std::size_t(y)]);
        }
    });
}

TEST(Runs, NearestPixelsAreThoseOfThePlainForm) {
    std::vector<QX_Pixel8> made[2];
    for (int level = 0; level < 2; ++level) {
        const Born born(1, level == 0 ? standalone::ProcessorLevel::plain : standalone::ProcessorLevel::faster);
        for (int run = 0; run < 300; ++run) {
            Numbers number(static_cast<unsigned>(run));
            const auto any = [&](int from, int to) { return number(from * 1000, to * 1000) / 1000.0; };
            const int width = 1 + run % 90;
            TestWorld<QX_Pixel8> src(width, 9, FillKind::random, static_cast<std::uint64_t>(run) + 1);
            const M_Matrix3 m{
                {{run % 9 == 0 ? -1.5 : any(4, 20) / 5, 0, 0}, {0, any(1, 6) / 2, 0}, {any(-40, 60), 0.3, 1}}};
            const TransformCall call{
                .matrices = {m}, .quality = 0, .mode = mode_of(run % 2 == 0 ? int{xfer_over} : int{xfer_replace})};
            const auto pixels = drawn(call, src, 170, 20);
            made[level].insert(made[level].end(), pixels.begin(), pixels.end());
        }
    }
    EXPECT_TRUE(made[0] == made[1]);
}

}  // namespace
}  // namespace qx::test
