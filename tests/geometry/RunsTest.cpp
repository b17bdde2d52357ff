// SPDX-License-Identifier: Apache-2.0
// Runs of samples against the sampler of one pixel, in millions of pixels.
#include <gtest/gtest.h>

#include <random>

#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_SamplerSet.h"
#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

/// A still row drawn by a transform takes the run form where there is one; a replaced slot takes single samples.
int single_sample(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    static const auto routine = QXp_GetSamplerSet<QX_Pixel8>(1).unclipped;
    return routine(in_data, x, y, params, out);
}

int single_area(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    static const auto routine = QXp_GetSamplerSet<QX_Pixel8>(1).area;
    return routine(in_data, x, y, params, out);
}

TEST(Runs, EqualSingleSamplesEverywhere) {
    const Born born;
    QX_Pixel8 first{};
    TestWorld<QX_Pixel8> spot(2, 2, FillKind::opaque, 1);
    QX_SampPB block{};
    block.src = spot.record();
    single_sample(nullptr, 0, 0, &block, &first);  // notes the library's own routine before it is replaced
    std::mt19937_64 random(3);
    std::int64_t pixels = 0;
    for (int run = 0; run < 240; ++run) {
        const auto kind = static_cast<FillKind>(run % 6);
        TestWorld<QX_Pixel8> src(200, 160, kind, static_cast<std::uint64_t>(run) + 1);
        const double turn = std::uniform_real_distribution<double>(-3.2, 3.2)(random);
        const double scale = run % 4 == 0 ? 1 : std::exp2(std::uniform_real_distribution<double>(-0.9, 2)(random));
        const double c = run % 5 == 0 ? scale : scale * std::cos(turn), s = run % 5 == 0 ? 0 : scale * std::sin(turn);
        const M_Matrix3 matrix{{{c, s, 0}, {-s, c, 0}, {90 - 100 * c + 80 * s, 90.25 - 100 * s - 80 * c, 1}}};
        const M_Matrix3 later{{{c, s, 0}, {-s, c, 0}, {97 - 100 * c + 80 * s, 95.75 - 100 * s - 80 * c, 1}}};
        const M_Matrix3 matrices[] = {matrix, later};
        const int count = run % 3 == 0 ? 2 : 1;
        const QX_CompositeModePlus mode(xfer_replace, 1.0f, nullptr, false, 0);
        std::vector<QX_Pixel8> drawn[2];
        void* const own = QXp_G_OverFuncs[61];
        for (auto& result : drawn) {
            TestWorld<QX_Pixel8> dst(180, 181, FillKind::clear, 1);
            ASSERT_EQ(QX_TransformWorld(nullptr, 1, 0, 0, src.record(), &mode, nullptr, nullptr, matrices, count, true,
                                        nullptr, dst.record()),
                      0);
            result = dst.pixels();
            QX_SetOverrideFunc(61, reinterpret_cast<void*>(&single_sample));
        }
        QX_SetOverrideFunc(61, own);
        ASSERT_TRUE(same_pixels(drawn[0], drawn[1])) << "run " << run;
        pixels += 180 * 181;
    }
    EXPECT_GT(pixels, 7000000);
}

/// Whole boxes, partial rows or columns, mirrored and sheared rows, boxes that sums in integers do not fit, layers
/// partly outside.
TEST(Runs, AreasEqualSingleSamplesEverywhere) {
    const Born born;
    struct {
        double x, y, shear, at_x, at_y;
    } const places[] = {{0.5, 0.5, 0, 0, 0},      {1 / 3.0, 1 / 3.0, 0, 0, 0}, {0.25, 0.25, 0, 0, 0},
                        {0.25, 0.25, 0, 7, 0.4},  {0.25, 0.25, 0, 0.3, 0},     {0.25, 0.125, 0, -31, -20},
                        {0.3, 0.3, 0, 3.1, 5.7},  {1 / 7.3, 0.4, 0, 0, 0.2},   {0.4, 1 / 7.3, 0, 0.7, 0},
                        {-0.25, 0.25, 0, 300, 0}, {-0.3, -0.4, 0, 310, 170},   {0.2, 0.25, 0.15, 10, 0},
                        {0.9, 0.99, 0, -200, -9}, {1 / 131.0, 0.01, 0, 1, 1},  {0.004, 0.25, 0.03, 90, 2}};
    QX_Pixel8 first{};
    TestWorld<QX_Pixel8> spot(8, 8, FillKind::opaque, 1);
    QX_SampPB block{};
    block.x_radius = block.y_radius = 2 * 65536, block.src = spot.record();
    single_area(nullptr, 0, 0, &block, &first);  // notes the library's own routine before it is replaced
    std::int64_t pixels = 0;
    for (int run = 0; run < 90; ++run) {
        TestWorld<QX_Pixel8> src(run % 7 == 0 ? 16 : 1187, 401, static_cast<FillKind>(run % 6),
                                 static_cast<std::uint64_t>(run) + 1);
        const auto& p = places[run / 6];
        const M_Matrix3 matrix{{{p.x, 0, 0}, {p.shear, p.y, 0}, {p.at_x, p.at_y, 1}}};
        const QX_CompositeModePlus mode(xfer_replace, 1.0f, nullptr, false, 0);
        std::vector<QX_Pixel8> drawn[3];
        void* const own = QXp_G_OverFuncs[5];
        for (const int k : {0, 1, 2}) {  // by quality 1, by the bicubic set, which averages alike, and one by one
            if (k == 2) QX_SetOverrideFunc(5, reinterpret_cast<void*>(&single_area));
            TestWorld<QX_Pixel8> dst(331, 207, FillKind::clear, 1);
            ASSERT_EQ(QX_TransformWorld(nullptr, k == 1 ? 2 : 1, 0, 0, src.record(), &mode, nullptr, nullptr, &matrix,
                                        1, true, nullptr, dst.record()),
                      0);
            drawn[k] = dst.pixels();
        }
        QX_SetOverrideFunc(5, own);
        ASSERT_TRUE(same_pixels(drawn[0], drawn[2])) << "run " << run;
        ASSERT_TRUE(same_pixels(drawn[1], drawn[2])) << "run " << run;
        pixels += 331 * 207;
    }
    EXPECT_GT(pixels, 6000000);
}

TEST(Runs, NearestPixelsAreThoseOfThePlainForm) {
    std::vector<QX_Pixel8> drawn[2];
    for (int level = 0; level < 2; ++level) {
        const Born born(1, level == 0 ? standalone::ProcessorLevel::plain : standalone::ProcessorLevel::faster);
        for (int run = 0; run < 300; ++run) {
            std::mt19937 random(static_cast<unsigned>(run));
            const auto any = [&](double from, double to) {
                return std::uniform_real_distribution<double>(from, to)(random);
            };
            const int width = 1 + run % 90;
            TestWorld<QX_Pixel8> src(width, 9, FillKind::random, static_cast<std::uint64_t>(run) + 1);
            TestWorld<QX_Pixel8> dst(170, 20, FillKind::clear, 1);
            TransformCall call;
            call.quality = 0;
            call.mode.xfer = run % 2 == 0 ? int{xfer_over} : int{xfer_replace};
            call.matrices = {
                {{{run % 9 == 0 ? -1.5 : any(0.8, 4), 0, 0}, {0, any(0.5, 3), 0}, {any(-40, 60), 0.3, 1}}}};
            ASSERT_EQ(call(src.record(), dst.record()), 0);
            const auto pixels = dst.pixels();
            drawn[level].insert(drawn[level].end(), pixels.begin(), pixels.end());
        }
    }
    EXPECT_TRUE(same_pixels(drawn[0], drawn[1]));
}

}  // namespace
}  // namespace qx::test
