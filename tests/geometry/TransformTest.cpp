// SPDX-License-Identifier: Apache-2.0
// What holds of transforms by nature, and what they refuse.
#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

template <class Pixel> using TransformAtDepth = BornAtDepth<Pixel, 1>;
TYPED_TEST_SUITE(TransformAtDepth, AllDepths);

TYPED_TEST(TransformAtDepth, WholeTranslationsAreTransfers) {
    TestWorld<TypeParam> src(31, 25, FillKind::random, 1), mask(20, 20, FillKind::random, 2);
    const QX_MaskWorld record = mask_at(*mask.record(), 7, 3, kQX_MaskLuma);
    const M_LRect all{0, 0, 40, 30};
    // Columns: move, quality, and where the source comes to lie
    const Cases<double, double, int, int, int> cases = {
        {0, 0, 0, 0, 0},     {0, 0, 1, 0, 0},      {0, 0, 2, 0, 0},      {0, 0, 3, 0, 0},    {5, 3, 1, 5, 3},
        {-4, -9, 2, -4, -9}, {0.5, 1.49, 0, 1, 1}, {-0.5, 2.5, 0, 0, 3}, {-90, 0, 1, -90, 0}};
    for (const auto& [c, xfer] :
         each(cases, std::array<int, 4>{xfer_over, xfer_soft_light, xfer_alpha_multiply, xfer_replace})) {
        const auto& [move_x, move_y, quality, x, y] = c;
        SCOPED_TRACE(testing::Message() << move_x << " " << move_y << " quality " << quality << " mode " << xfer);
        TransformCall call{
            .matrices = {moved(move_x, move_y)}, .quality = quality, .field = quality % 3, .mode = mode_of(xfer)};
        call.mask = xfer == xfer_soft_light ? &record : nullptr;
        TestWorld<TypeParam> dst(40, 30, FillKind::random, 9), want(40, 30, FillKind::random, 9);
        EXPECT_EQ(call(src.record(), dst.record()), 0);
        if (x != -90) {  // else nothing is drawn
            QX_TransferRect(nullptr, 1, 0, call.field, &all, src.record(), &call.mode, nullptr, call.mask, x, y,
                            want.record());
        }
        EXPECT_EQ(dst.pixels(), want.pixels());
    }
}

TYPED_TEST(TransformAtDepth, ALayerWithoutSizeDrawsNothingButClears) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double inf = std::numeric_limits<double>::infinity();
    TestWorld<TypeParam> src(20, 20, FillKind::random, 1), start(30, 30, FillKind::opaque, 3);
    // Columns: matrix, src2dst, whether alpha is cleared
    const Cases<M_Matrix3, bool, bool> cases = {
        {moved(10, 10) * scaled(0, 1), true, true},
        {scaled(1e-7, 1), true, true},
        {scaled(0, 1), false, false},                        // no inverse, and no scale is known
        {{{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}}}, true, false},  // no inverse for another reason
        {scaled(nan, 1), true, false},
        {scaled(inf, 1), false, false},
        {moved(nan, 0), true, false}};
    for (const auto& [c, xfer] : each(cases, std::array<int, 2>{xfer_over, xfer_alpha_multiply})) {
        const auto& [matrix, src2dst, clears] = c;
        const TransformCall call{.matrices = {matrix}, .src2dst = src2dst, .mode = mode_of(xfer)};
        TestWorld<TypeParam> dst(30, 30, FillKind::opaque, 3);
        EXPECT_EQ(call(src.record(), dst.record()), 0);
        auto want = start.pixels();
        for (TypeParam& p : want) p.alpha = clears && xfer == xfer_alpha_multiply ? 0 : p.alpha;
        EXPECT_EQ(dst.pixels(), want);
    }
}

TEST(Transform, RefusesWhatItCannotDraw) {
    for (const int bands : {1, 32}) {
        const Born born(bands);
        TestWorld<QX_Pixel8> src(8, 8, FillKind::random, 1), dst(8, 8, FillKind::random, 2);
        TestWorld<QX_Pixel16> deep(8, 8, FillKind::random, 3);
        BadWorlds bad;
        const auto before = dst.pixels();
        QX_LayerDef *const s = src.record(), *const d = dst.record();
        const auto call = [](QX_LayerDef* from, QX_LayerDef* to, int xfer = xfer_over,
                             std::vector<M_Matrix3> matrices = {kM_IdentityMatrix}) {
            return [=] { return TransformCall{.matrices = matrices, .mode = mode_of(xfer)}(from, to); };
        };
        const std::string none = "unimplemented blending mode.";
        expect_refused(
            {{call(nullptr, d), kBadParameter},
             {call(s, nullptr), bands > 1 ? "dst_world is NULL" : kBadParameter},
             {call(s, deep.record()), "QX_TransformWorld requires src and dst worlds to have same bit depth"},
             {call(&bad.gpu, d), kOnGpu},
             {call(s, d, 77), none, 5, 0, 2},
             {call(s, d, 77, {placed(8, 20, 1, 0, 0)}), none, 5, 0, 2},
             {call(s, d, xfer_over, {}), kBadParameter},
             {call(s, d, xfer_over, std::vector(258, moved(1, 1))), "invalid parameter", 516}});
        const M_LRect vast{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};  // takes no more memory than the destination
        EXPECT_EQ((TransformCall{.matrices = {scaled(1, 0)}, .src2dst = false, .rect = &vast}(s, d)), 0);
        EXPECT_EQ(dst.pixels(), before);
        TransformCall most{.matrices = std::vector(257, moved(1, 1)), .rect = &vast};
        most.matrices.back() = moved(3, 3);
        EXPECT_EQ(most(s, d), 0);
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
        EXPECT_EQ(TransformCall{.matrices = {scaled(1 / shrinks, 1 / shrinks)}}(src.record(), dst.record()), 0);
        EXPECT_EQ(area, pixels * 65536);
    }
}

TEST(Transform, AsksAfterRowsWhoseIndexIsDue) {
    Born born;
    Polls polls;
    const QX_ProgressInfo progress{&polls, nullptr, &Polls::progress};
    TestWorld<QX_Pixel8> src(20, 200, FillKind::opaque, 1);
    // Columns: quality, field, matrices, polls and the rows between two of them
    const Cases<int, int, std::size_t, int, int> cases = {
        {0, 0, 1, 4, 64}, {1, 0, 1, 7, 32}, {1, 2, 1, 4, 64}, {0, 1, 1, 2, 128}, {2, 1, 3, 4, 16}};
    for (const auto& [quality, field, matrices, count, rows] : cases) {
        polls = {.stop_at = matrices == 3 ? 3 : -1};  // an answer ends the call, after whole rows
        TestWorld<QX_Pixel8> dst(40, 200, FillKind::opaque, 2);
        TransformCall call{.matrices = std::vector(matrices, scaled(1.5, 1)), .quality = quality, .field = field};
        call.progress = &progress;
        EXPECT_EQ(call(src.record(), dst.record()), matrices == 3 ? 517 : 0);
        std::vector<std::pair<int, int>> expected;
        for (int i = 0; i < count; ++i) expected.emplace_back(i * rows, 200);
        EXPECT_EQ(polls.calls, expected) << quality << " " << field;
    }
    // Where there is no progress function the call asks to abort.
    const QX_ProgressInfo abort{&polls, &Polls::abort, nullptr};
    for (const auto& [quality, matrix] : each(std::array{0, 1}, std::array{moved(0, 0), scaled(1.5, 1)})) {
        polls = {.stop_at = 0};
        TestWorld<QX_Pixel8> dst(40, 200, FillKind::opaque, 2);
        const TransformCall call{.matrices = {matrix}, .quality = quality, .progress = &abort};
        EXPECT_EQ(call(src.record(), dst.record()), 517);
        EXPECT_EQ(polls.calls.size(), 1u);
    }
}

}  // namespace
}  // namespace qx::test
