// SPDX-License-Identifier: Apache-2.0
// Where a transfer writes, what covers it, and how it fails.
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

template <class Pixel> using TransferAtDepth = BornAtDepth<Pixel, 1>;
TYPED_TEST_SUITE(TransferAtDepth, AllDepths);

/// Random rectangles, places, masks and fields, with the mode that shows coverage as it is.
TYPED_TEST(TransferAtDepth, WritesWhereAndWhatItShould) {
    Numbers below(11);
    const auto between = [&](int a, int b) { return below(a, b + 1); };
    for (unsigned round = 0; round < 300; ++round) {
        TestWorld<TypeParam> src(between(1, 24), between(1, 12), FillKind::random, round);
        TestWorld<TypeParam> dst(between(1, 24), between(1, 12), FillKind::random, round + 1000);
        TestWorld<TypeParam> mask(between(1, 16), between(1, 8), FillKind::random, round + 2000);
        const std::uint32_t kind = round % 5;  // 4: no mask
        const QX_MaskWorld mask_record = mask_at(*mask.record(), between(-8, 12), between(-4, 6), kind);
        const int left = between(-6, 10), top = between(-6, 6);
        TransferCall call{.mode = mode_of(xfer_replace), .mask = kind == 4 ? nullptr : &mask_record};
        call.src_rect = {left, top, left + between(0, 30), top + between(0, 14)};
        call.field = between(0, 3), call.dest_x = between(-10, 12), call.dest_y = between(-6, 6);
        const auto before = dst.pixels();
        ASSERT_EQ(call(src.record(), dst.record()), 0);
        std::size_t at = 0;
        for (const auto& [x, y] : places(dst.world().width, dst.world().height)) {
            const int sx = x - call.dest_x + left, sy = y - call.dest_y + top;
            const int mx = x - mask_record.x, my = y - mask_record.y;
            const bool in_src = holds(call.src_rect, sx, sy) && src.has(sx, sy), in_mask = mask.has(mx, my);
            const bool kept = (call.field == 1 && y % 2 == 1) || (call.field == 2 && y % 2 == 0) ||
                              (kind % 2 == 0 && kind < 4 && !in_mask);
            TypeParam expected = in_src && !kept ? src.at(sx, sy) : before[at];
            if (in_src && !kept && kind < 4 && in_mask) {
                const auto coverage = model::coverage(mask.at(mx, my), kind);
                expected =
                    model::row_pixel<TypeParam>({xfer_replace, coverage, kFull<TypeParam>}, nullptr, expected, {});
            }
            ASSERT_EQ(dst.at(x, y), expected)
                << "round " << round << " at " << x << ", " << y << " kind " << kind << " field " << call.field;
            ++at;
        }
    }
}

TYPED_TEST(TransferAtDepth, AMaskWithoutPixelsCoversNothingWhereverItLies) {
    TestWorld<TypeParam> src(9, 5, FillKind::opaque, 1), mask(3, 3, FillKind::random, 2);
    for (const auto& [place, kind] : each(std::array{INT32_MIN, -1, 0, INT32_MAX}, std::array{0u, 1u, 2u, 3u})) {
        TestWorld<TypeParam> dst(9, 5, FillKind::clear, 3);
        const auto before = dst.pixels();
        QX_MaskWorld record = mask_at(*mask.record(), place, place, kind);
        record.world.width = record.world.height = -3;
        EXPECT_EQ(TransferCall{.mask = &record}(src.record(), dst.record()), 0);
        EXPECT_EQ(dst.pixels(), kind % 2 == 0 ? before : src.pixels()) << place << " " << kind;
    }
}

TEST(Transfer, ProgressIsCalledOnMultiplesOf128AndEndsTheWork) {
    const Born born(1);
    TestWorld<QX_Pixel8> src(3, 400, FillKind::opaque, 1), dst(3, 400, FillKind::clear, 2),
        start(3, 400, FillKind::clear, 2);
    Polls polls;
    const QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
    // Rows 128 and 256 are even: skipped rows report too.
    TransferCall call{.src_rect = {0, 0, 3, 300}, .progress = &info, .field = 2, .dest_y = 1};
    ASSERT_EQ(call(src.record(), dst.record()), 0);
    EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{127, 300}, {255, 300}}));
    polls = {.stop_at = 0};
    call.field = 0;
    TestWorld<QX_Pixel8> again(3, 400, FillKind::clear, 2);
    EXPECT_EQ(call(src.record(), again.record()), kQX_Interrupted);
    EXPECT_EQ(again.at(0, 128).alpha, 255);
    EXPECT_EQ(0, std::memcmp(&again.at(0, 129), &start.at(0, 129), 12));
}

TEST(Transfer, FailuresReportAndWriteNothing) {
    const Born born(1);
    TestWorld<QX_Pixel8> src(4, 4, FillKind::opaque, 1), dst(4, 4, FillKind::random, 2);
    TestWorld<QX_Pixel16> deep(4, 4, FillKind::opaque, 3);
    BadWorlds bad;
    QX_LayerDef *const s = src.record(), *const d = dst.record();
    const QX_MaskWorld deep_mask = mask_at(*deep.record(), 0, 0, 0), gpu_mask = mask_at(bad.gpu, 0, 0, 0);
    const auto call = [&](QX_LayerDef* from, QX_LayerDef* to, int xfer = 2, const QX_MaskWorld* mask = nullptr) {
        return [=] { return TransferCall{.mode = mode_of(xfer), .mask = mask}(from, to); };
    };
    const auto before = dst.pixels();
    const std::string depths = " worlds to have same bit depth", none = "unimplemented blending mode.";
    expect_refused({{call(deep.record(), d), "QX_TransferRect requires src and dst" + depths},
                    {call(s, d, 2, &deep_mask), "QX_TransferRect requires mask and dst" + depths},
                    {[&] { return TransferCall().with_scratch(deep.record(), d, nullptr); },
                     "QX_TransferRectPlus requires src and dst" + depths},
                    {call(s, d, -4), none, 5, 0, 2},
                    {call(s, d, -1), none, 5, 0, 2},
                    {call(s, d, 41), none, 5, 0, 2}});
    expect_refused(kOnGpu, {call(&bad.gpu, d), call(s, &bad.gpu), call(s, d, 2, &gpu_mask)});
    expect_refused(kBadParameter, {call(&bad.empty, d), call(s, d, xfer_mask_crossfade)});
    // An empty clip comes before the mode, and leaves what is around it.
    for (const int xfer : {41, +xfer_alpha_multiply}) {
        EXPECT_EQ((TransferCall{.mode = mode_of(xfer), .dest_x = 100}(s, d)), 0);
    }
    EXPECT_EQ(before, dst.pixels());
}

/// Every allocation of a transfer fails once: code 4, nothing written, nothing leaked, and the next call works.
TEST(Transfer, EachFailedAllocationGivesItsCode) {
    const Born born(1);
    TestWorld<QX_PixelFloat> src(5000, 2, FillKind::opaque, 1), dst(5000, 2, FillKind::clear, 2);
    const auto before = dst.pixels();
    const std::int64_t blocks = blocks_in_use();
    const TransferCall call;
    for (int nth = 1; nth <= 3; ++nth) {
        Reports reports;
        EXPECT_EQ(short_of_memory(nth, [&] { return call(src.record(), dst.record()); }), 4);
        EXPECT_EQ(reports.last_text(), "out of memory: blending scratch buffer");
        EXPECT_EQ(before, dst.pixels());
        EXPECT_EQ(blocks_in_use(), blocks);
    }
    EXPECT_EQ(short_of_memory(4, [&] { return call(src.record(), dst.record()); }), 0) << "there are three";
}

TEST(Transfer, ScratchGrowsAndIsAskedForBySize) {
    const Born born(1);
    QX_ScratchBlock small{}, large{}, again{};
    ASSERT_EQ(QXp_ReallocScratch(100, 1, false, &small), 0);
    ASSERT_EQ(QXp_ReallocScratch(1024, 4, false, &large), 0);
    ASSERT_EQ(QXp_ReallocScratch(2048, 2, false, &again), 0);  // as many bytes
    EXPECT_EQ(large.mask_row, again.mask_row);
    ASSERT_EQ(QXp_ReallocScratch(10, 1, false, &again), 0);
    EXPECT_EQ(large.mask_row, again.mask_row);
    std::memset(again.mask_row, 1, 1024 * 16);
    std::memset(again.alpha_row, 1, 1024 * 4);
    std::memset(again.motion[6], 1, 26624);
    Reports reports;
    EXPECT_EQ(QXp_ReallocScratch(10, 3, false, &again), 3);
    EXPECT_EQ(reports.last_text(), "Unexpected bitdepth in QXp_ReallocScratch()");

    void* buffers[7];
    const std::int64_t blocks = blocks_in_use();
    standalone::FailAllocation(4);
    EXPECT_EQ(QX_AllocateMotionBlurScratch(buffers), 4);
    EXPECT_EQ(reports.last_text(), "out of memory: motion blur scratch data4");
    EXPECT_EQ(blocks_in_use(), blocks + 3);
    QX_DisposeMotionBlurScratch(buffers);
    EXPECT_EQ(blocks_in_use(), blocks);
}

TEST(CompositeMode, OpacityIsThatOfTheFinerFieldThatCanBeBelieved) {
    const auto opacity = [](std::uint8_t o8, std::uint16_t o16) {
        return QX_CompositeModePlus(QX_CompositeMode{2, 5, o8, 3, o16}).opacity;
    };
    EXPECT_EQ(opacity(128, 0), 128 / 255.0f);
    EXPECT_EQ(opacity(128, 16448), 16448 * 3.0517578e-5f);
    EXPECT_EQ(opacity(255, 32768), 32768 * 3.0517578e-5f);
    EXPECT_EQ(opacity(128, 16448 + 120), 16568 * 3.0517578e-5f);  // within a step of 8 bits, which is 128.5
    EXPECT_EQ(opacity(128, 16448 + 190), 128 / 255.0f);
    EXPECT_EQ(opacity(0, 0), 0.0f);
    const QX_CompositeModePlus mode(QX_CompositeMode{7, -3, 255, 3, 32768});
    EXPECT_TRUE(mode.rgb_only);
    EXPECT_EQ(mode.rand_seed, -3);
    EXPECT_EQ(QX_BlendingMode<QX_Pixel8>(QX_CompositeModePlus(2, 0.999f, nullptr, false, 0)).opacity, 255);
    EXPECT_EQ(QX_BlendingMode<QX_Pixel16>(QX_CompositeModePlus(2, 0.5f, nullptr, false, 0)).opacity, 16384);
}

TEST(CompositeMode, FlagsForTheHost) {
    const std::vector<int> flagged{-3, 0, 1, 2, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 16, 22, 25, 37, 38};
    for (int xfer = -5; xfer < 45; ++xfer) {
        EXPECT_EQ(QX_GetTransferFlags(xfer), std::count(flagged.begin(), flagged.end(), xfer)) << xfer;
    }
}

}  // namespace
}  // namespace qx::test
