// SPDX-License-Identifier: Apache-2.0
// What holds of transforms by nature, and what they refuse.
#include <gtest/gtest.h>

#include <limits>

#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

template <class Pixel> class TransformAtDepth : public testing::Test {
protected:
    Reports reports_;
    Born born_;
};
using Depths = testing::Types<QX_Pixel8, QX_Pixel16, QX_PixelFloat>;
TYPED_TEST_SUITE(TransformAtDepth, Depths);

/// The transfer that a whole translation must equal.
template <class Pixel> std::vector<Pixel> transferred(TestWorld<Pixel>& src, const TransformCall& like, int x, int y) {
    TestWorld<Pixel> dst(40, 30, FillKind::random, 9);
    const M_LRect all{0, 0, 40, 30};
    EXPECT_EQ(QX_TransferRect(nullptr, 1, 0, like.field, &all, src.record(), &like.mode, like.tables, like.mask, x, y,
                              dst.record()),
              0);
    return dst.pixels();
}

TYPED_TEST(TransformAtDepth, WholeTranslationsAreTransfers) {
    using Pixel = TypeParam;
    TestWorld<Pixel> src(31, 25, FillKind::random, 1), mask(20, 20, FillKind::random, 2);
    const QX_MaskWorld record = mask_at(*mask.record(), 7, 3, kQX_MaskLuma);
    const struct {
        double x, y;
        int quality, at_x, at_y;
    } cases[] = {{0, 0, 0, 0, 0},     {0, 0, 1, 0, 0},      {0, 0, 2, 0, 0},      {0, 0, 3, 0, 0},  {5, 3, 1, 5, 3},
                 {-4, -9, 2, -4, -9}, {0.5, 1.49, 0, 1, 1}, {-0.5, 2.5, 0, 0, 3}, {-90, 0, 1, 0, 0}};
    for (const auto& c : cases) {
        for (const int xfer : {int{xfer_over}, int{xfer_soft_light}, int{xfer_alpha_multiply}, int{xfer_replace}}) {
            SCOPED_TRACE(testing::Message() << c.x << " " << c.y << " quality " << c.quality << " mode " << xfer);
            TransformCall call;
            call.matrices = {moved(c.x, c.y)};
            call.quality = c.quality;
            call.mode.xfer = xfer;
            call.mask = xfer == xfer_soft_light ? &record : nullptr;
            call.field = c.quality % 3;
            TestWorld<Pixel> dst(40, 30, FillKind::random, 9), start(40, 30, FillKind::random, 9);
            EXPECT_EQ(call(src.record(), dst.record()), 0);
            const bool outside = c.x == -90;
            EXPECT_TRUE(same_pixels(dst.pixels(), outside ? start.pixels() : transferred(src, call, c.at_x, c.at_y)));
        }
    }
}

TYPED_TEST(TransformAtDepth, AConstantPictureStaysConstantInside) {
    using Pixel = TypeParam;
    using D = DepthOf<Pixel>;
    using Channel = typename D::Channel;
    const Pixel colour{static_cast<Channel>(D::full), static_cast<Channel>(D::full / 3),
                       static_cast<Channel>(D::full / 5), static_cast<Channel>(D::full / 2)};
    TestWorld<Pixel> src(300, 300, FillKind::clear, 1);
    for (int y = 0; y < 300; ++y) std::fill_n(&src.at(0, y), 300, colour);
    const M_Matrix3 perspective{{{1, 0.1, 0.0004}, {-0.2, 1.1, 0.0002}, {12, 9, 1}}};
    const std::vector<std::vector<M_Matrix3>> motions = {
        {placed(300, 10, 1, 0, 0)},
        {placed(300, 33, 3, 4.3, -8)},
        {placed(300, -70, 0.41, 0, 0)},
        {scaled(0.3, 2)},
        {perspective},
        {placed(300, 0, 1.2, 0, 0), placed(300, 0, 1.2, 9.7, 4.1)},
        {placed(300, 0, 1.2, 0, 0), placed(300, 4, 1.2, 3, 0), placed(300, 9, 1.3, 3, 5)},
        {placed(300, 0, 0.3, 0, 0), placed(300, 4, 0.3, 3, 0), placed(300, 9, 0.25, 3, 5)}};
    for (const auto& matrices : motions) {
        for (int quality = 0; quality <= 2; ++quality) {
            TransformCall call;
            call.matrices = matrices;
            call.quality = quality;
            TestWorld<Pixel> dst(300, 300, FillKind::random, 2);
            ASSERT_EQ(call(src.record(), dst.record()), 0);
            int inside = 0;
            M_Matrix3 back;
            ASSERT_TRUE(M_InverseMatrixQuiet(matrices[0], &back));
            for (int y = 0; y < 300; y += 7) {
                for (int x = 0; x < 300; x += 7) {
                    M_FloatPoint p{x + 0.5, y + 0.5};
                    M_TransformFloatPoints(back, &p, 1);
                    if (p.x < 40 || p.x > 260 || p.y < 40 || p.y > 260) continue;
                    ++inside;
                    const Pixel& got = dst.at(x, y);
                    const double step = D::number == 32 ? 2e-6 : 0;
                    ASSERT_EQ(got.alpha, colour.alpha) << x << "," << y << " quality " << quality;
                    ASSERT_NEAR(got.red, colour.red, step);
                    ASSERT_NEAR(got.green, colour.green, step);
                    ASSERT_NEAR(got.blue, colour.blue, step);
                }
            }
            EXPECT_GT(inside, 0);
        }
    }
}

TYPED_TEST(TransformAtDepth, WhatLiesOutsideStays) {
    using Pixel = TypeParam;
    TestWorld<Pixel> src(20, 20, FillKind::random, 1), start(60, 60, FillKind::random, 3);
    const M_LRect rect{10, 12, 41, 33};
    for (int quality = 0; quality <= 2; ++quality) {
        for (const int field : {0, 1, 2}) {
            TransformCall call;
            call.matrices = {placed(20, 30, 2, 10, 10), placed(20, 35, 2, 20, 10)};
            call.quality = quality;
            call.field = field;
            call.mode.xfer = xfer_replace;
            call.rect = &rect;
            TestWorld<Pixel> dst(60, 60, FillKind::random, 3);
            ASSERT_EQ(call(src.record(), dst.record()), 0);
            int changed = 0;
            for (int y = 0; y < 60; ++y) {
                const bool drawn =
                    y >= rect.top && y < rect.bottom && !(field == 1 && y % 2 == 1) && !(field == 2 && y % 2 == 0);
                for (int x = 0; x < 60; ++x) {
                    const bool same = std::memcmp(&dst.at(x, y), &start.at(x, y), sizeof(Pixel)) == 0;
                    if (!same) ++changed;
                    ASSERT_TRUE(same || (drawn && x >= rect.left && x < rect.right)) << x << "," << y;
                }
            }
            EXPECT_GT(changed, 100);
        }
    }
}

TYPED_TEST(TransformAtDepth, ALayerWithoutSizeDrawsNothingButClears) {
    using Pixel = TypeParam;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double inf = std::numeric_limits<double>::infinity();
    TestWorld<Pixel> src(20, 20, FillKind::random, 1), start(30, 30, FillKind::opaque, 3);
    const struct {
        M_Matrix3 matrix;
        bool src2dst, clears;
    } cases[] = {{moved(10, 10) * scaled(0, 1), true, true},
                 {scaled(1e-7, 1), true, true},
                 {scaled(0, 1), false, false},                        // no inverse, and no scale is known
                 {{{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}}}, true, false},  // no inverse for another reason
                 {scaled(nan, 1), true, false},
                 {scaled(inf, 1), false, false},
                 {moved(nan, 0), true, false}};
    for (const auto& c : cases) {
        for (const int xfer : {int{xfer_over}, int{xfer_alpha_multiply}}) {
            TransformCall call;
            call.matrices = {c.matrix};
            call.src2dst = c.src2dst;
            call.mode.xfer = xfer;
            TestWorld<Pixel> dst(30, 30, FillKind::opaque, 3);
            EXPECT_EQ(call(src.record(), dst.record()), 0);
            for (int y = 0; y < 30; ++y) {
                for (int x = 0; x < 30; ++x) {
                    const bool cleared = c.clears && xfer == xfer_alpha_multiply;
                    ASSERT_EQ(dst.at(x, y).alpha, cleared ? 0 : start.at(x, y).alpha);
                    ASSERT_EQ(dst.at(x, y).red, start.at(x, y).red);
                }
            }
        }
    }
}

TEST(Transform, RefusesWhatItCannotDraw) {
    Reports reports;
    for (const int bands : {1, 32}) {
        Born born(bands);
        TestWorld<QX_Pixel8> src(8, 8, FillKind::random, 1), dst(8, 8, FillKind::random, 2);
        TestWorld<QX_Pixel16> deep(8, 8, FillKind::random, 3);
        const auto before = dst.pixels();
        TransformCall call;
        EXPECT_EQ(call(nullptr, dst.record()), 3);
        EXPECT_EQ(call(src.record(), nullptr), 3);
        EXPECT_EQ(reports.last_text() == "dst_world is NULL", bands > 1);
        EXPECT_EQ(call(src.record(), deep.record()), 3);
        EXPECT_EQ(reports.last_text(), "QX_TransformWorld requires src and dst worlds to have same bit depth");
        QX_LayerDef gpu = *src.record();
        gpu.data = nullptr;
        VPix** frame = standalone::NewFakeFrame(tesselmediatypes::PixelFormat{});
        gpu.platform_ref = frame;
        EXPECT_EQ(call(&gpu, dst.record()), 3);
        EXPECT_EQ(reports.last_text(), "gpu effect world is not supported yet.");
        FK::DisposeVPixFromVideoFrame(frame);
        call.mode.xfer = 77;
        EXPECT_EQ(call(src.record(), dst.record()), 5);
        call.matrices = {placed(8, 20, 1, 0, 0)};
        EXPECT_EQ(call(src.record(), dst.record()), 5);
        call.mode.xfer = xfer_over;
        call.matrices = {};
        EXPECT_EQ(call(src.record(), dst.record()), 3);
        call.matrices.assign(258, moved(1, 1));
        EXPECT_EQ(call(src.record(), dst.record()), 516);
        EXPECT_TRUE(same_pixels(dst.pixels(), before));
        const M_LRect vast{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};  // takes no more memory than the destination
        call.rect = &vast;
        call.matrices = {scaled(1, 0)};
        call.src2dst = false;
        EXPECT_EQ(call(src.record(), dst.record()), 0);
        EXPECT_TRUE(same_pixels(dst.pixels(), before));
        call.src2dst = true;
        call.matrices.assign(257, moved(1, 1));
        call.matrices.back() = moved(3, 3);
        EXPECT_EQ(call(src.record(), dst.record()), 0);
    }
}

/// Areas above 32767 square pixels pass a signed 16.16 number, and reach the samplers without a sign.
TEST(Transform, LargeFootprintsTellTheirArea) {
    const Born born;
    static std::uint32_t area;
    set_slot<Slot::AreaSample>([](void*, std::int32_t, std::int32_t, const QX_SampPB* params, QX_Pixel8*) {
        area = static_cast<std::uint32_t>(params->area);
        return 0;
    });
    TestWorld<QX_Pixel8> src(300, 300, FillKind::opaque, 1), dst(4, 4, FillKind::opaque, 2);
    const std::pair<double, std::uint32_t> cases[] = {{128, 128 * 128}, {200, 200 * 200}, {1000, 254 * 254}};
    for (const auto& [shrinks, pixels] : cases) {
        TransformCall call;
        call.matrices = {scaled(1 / shrinks, 1 / shrinks)};
        EXPECT_EQ(call(src.record(), dst.record()), 0);
        EXPECT_EQ(area, pixels * 65536);
    }
}

TEST(Transform, AsksAfterRowsWhoseIndexIsDue) {
    Born born;
    struct Calls {
        std::vector<int> rows;
        int total = 0, stop = -1;
    } calls;
    const QX_ProgressInfo progress{&calls, nullptr, [](void* refcon, std::int32_t row, std::int32_t total) {
                                       auto& seen = *static_cast<Calls*>(refcon);
                                       seen.rows.push_back(row);
                                       seen.total = total;
                                       return row == seen.stop ? 517 : 0;
                                   }};
    TestWorld<QX_Pixel8> src(20, 200, FillKind::opaque, 1);
    const struct {
        int quality, field, matrices;
        std::vector<int> rows;
    } cases[] = {{0, 0, 1, {0, 64, 128, 192}},
                 {1, 0, 1, {0, 32, 64, 96, 128, 160, 192}},
                 {1, 2, 1, {0, 64, 128, 192}},
                 {0, 1, 1, {0, 128}},
                 {2, 1, 3, {0, 16, 32, 48}}};
    for (const auto& c : cases) {
        calls = {};
        TestWorld<QX_Pixel8> dst(40, 200, FillKind::opaque, 2);
        TransformCall call;
        call.matrices.assign(static_cast<std::size_t>(c.matrices), scaled(1.5, 1));
        call.quality = c.quality;
        call.field = c.field;
        call.progress = &progress;
        if (c.matrices == 3) calls.stop = 48;  // the answer ends the call, after whole rows
        EXPECT_EQ(call(src.record(), dst.record()), c.matrices == 3 ? 517 : 0);
        EXPECT_EQ(calls.rows, c.rows);
        EXPECT_EQ(calls.total, 200);
    }
}

}  // namespace
}  // namespace qx::test
