// SPDX-License-Identifier: Apache-2.0
// Transforms over the processors: cut into bands, and short of memory.
#include "tests/geometry/TransformSupport.h"

namespace qx::test {
namespace {

template <class Pixel> std::vector<Pixel> drawn_in(int bands, const TransformCall& call) {
    const Born born(bands);
    TestWorld<Pixel> src(300, 70, FillKind::layer, 1), dst(310, 90, FillKind::layer, 2);
    EXPECT_EQ(call(src.record(), dst.record()), 0);
    return dst.pixels();
}

template <class Pixel> class BandedAtDepth : public testing::Test {};
TYPED_TEST_SUITE(BandedAtDepth, AllDepths);

TYPED_TEST(BandedAtDepth, WholeStepsGiveTheSamePixelsInAnyNumberOfBands) {
    standalone::SetPoolLimit(4);
    TestWorld<TypeParam> mask(200, 80, FillKind::random, 3);
    const QX_MaskWorld record = mask_at(*mask.record(), 40, 5, kQX_MaskInverseAlpha);
    const Cases<std::vector<M_Matrix3>, int> motions = {{{moved(4.5, 7.25)}, xfer_over},
                                                        {{moved(-7, 9)}, xfer_over},
                                                        {{scaled(0.5, 0.25)}, xfer_over},
                                                        {{moved(2.5, 2), moved(18.5, 34)}, xfer_over},
                                                        {{moved(0.5, 2), moved(4.5, 6), moved(20.5, 4)}, xfer_over},
                                                        {{scaled(0.5, 0.25)}, xfer_alpha_multiply},  // clear outside
                                                        {{moved(4.5, 7.25)}, xfer_alpha_multiply_luma}};
    for (const auto& [motion, quality] : each(motions, std::array{0, 1, 2})) {
        const auto& [matrices, xfer] = motion;
        TransformCall call{.matrices = matrices, .quality = quality, .mode = mode_of(xfer, 0.8f)};
        call.mask = quality == 1 ? &record : nullptr;
        const auto one = drawn_in<TypeParam>(1, call);
        for (const int bands : {2, 7, 32}) EXPECT_TRUE(drawn_in<TypeParam>(bands, call) == one) << bands;
    }
    standalone::SetPoolLimit(0);
}

TEST(BandedTransform, ThreadsDrawPathsAndTurns) {
    standalone::SetPoolLimit(4);
    for (const int quality : {0, 1, 2}) {
        const TransformCall call{
            .matrices = {placed(100, 0, 1, 0, 0), placed(100, 10, 1.1, 20, 0), placed(100, 25, 1.2, 30, 10)},
            .quality = quality};
        EXPECT_EQ(drawn_in<QX_Pixel8>(32, call), drawn_in<QX_Pixel8>(32, call));
    }
    standalone::SetPoolLimit(0);
}

/// After a failure every row is either as it was or as it becomes in the end.
TEST(BandedTransform, EveryAllocationMayFail) {
    Reports reports;
    standalone::SetExecutor([](const boost::function<void(int)>& task, int count) {
        for (int i = 0; i < count; ++i) task(i);
    });
    for (const int bands : {1, 5}) {
        int failures = 0;
        for (int nth = 1; nth < 100; ++nth) {
            const Born born(bands);
            TestWorld<QX_PixelFloat> src(900, 20, FillKind::opaque, 1);
            TestWorld<QX_PixelFloat> dst(900, 24, FillKind::opaque, 2), before(900, 24, FillKind::opaque, 2),
                after(900, 24, FillKind::opaque, 2);
            const TransformCall call{.matrices = {moved(0.5, 1), moved(3.5, 2), moved(9, 2)}};
            ASSERT_EQ(call(src.record(), after.record()), 0);
            QX_FreeUpSomeMemory();
            const auto blocks = blocks_in_use();
            const int code = short_of_memory(nth, [&] { return call(src.record(), dst.record()); });
            QX_FreeUpSomeMemory();
            EXPECT_EQ(blocks_in_use(), blocks) << nth;
            for (int y = 0; y < 24; ++y) {
                const auto as_in = [&](auto& w) { return std::equal(&dst.at(0, y), &dst.at(0, y) + 900, &w.at(0, y)); };
                ASSERT_TRUE(as_in(before) || as_in(after)) << nth << " row " << y;
            }
            if (code == 0) break;
            EXPECT_EQ(code, 4);
            ++failures;
        }
        EXPECT_EQ(failures, bands == 1 ? 3 : 50);  // three rows; three rows and seven buffers a band
    }
    standalone::SetExecutor({});
}

}  // namespace
}  // namespace qx::test
