// SPDX-License-Identifier: Apache-2.0
// Transfers cut into bands, each with a scratch block of its own, on the pool.
#include "platform/tesselcore_Threads.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

template <class Pixel>
int transfer_in_bands(const TransferCall& call, TestWorld<Pixel>& src, TestWorld<Pixel>& dst, int bands) {
    const M_LRect whole{0, 0, src.world().width, src.world().height};
    const Bands split(whole, bands);
    std::atomic<int> first_error{0};
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(
        [&](int i) {
            OwnScratch scratch;
            TransferCall band = call;
            band.src_rect = split[i], band.dest_y += split[i].top;
            int code = scratch.allocate(src.world().width, sizeof(QX_ChannelOf<Pixel>), false);
            if (code == 0) code = band.with_scratch(src.record(), dst.record(), scratch.get());
            int none = 0;
            if (code != 0) first_error.compare_exchange_strong(none, code);
        },
        split.count());
    return first_error;
}

template <class Pixel> using BandsAtDepth = BornAtDepth<Pixel, 32>;
TYPED_TEST_SUITE(BandsAtDepth, AllDepths);

TYPED_TEST(BandsAtDepth, AnyCutGivesTheSamePixels) {
    const auto tables = tables_of_gamma(2.2f);
    standalone::SetPoolLimit(4);
    TestWorld<TypeParam> src(61, 70, FillKind::layer, 1), mask(50, 60, FillKind::random, 2);
    const QX_MaskWorld record = mask_at(*mask.record(), 3, 4, kQX_MaskInverseLuma);
    for (const int xfer : modes_from(kQX_FirstMode)) {
        if (xfer == xfer_dissolve || xfer == xfer_alpha_multiply || xfer == xfer_alpha_multiply_luma) continue;
        TransferCall call{.mode = {xfer, 0.9f, nullptr, xfer % 2 == 0, 3}, .mask = &record, .dest_x = 2, .dest_y = 5};
        call.tables = xfer % 3 == 0 ? &tables : nullptr;
        TestWorld<TypeParam> whole(66, 80, FillKind::random, 3);
        ASSERT_EQ(call(src.record(), whole.record()), 0);
        for (const int bands : {1, 2, 7, 32}) {
            TestWorld<TypeParam> dst(66, 80, FillKind::random, 3);
            ASSERT_EQ(transfer_in_bands(call, src, dst, bands), 0);
            ASSERT_EQ(whole.pixels(), dst.pixels()) << "mode " << xfer << " in " << bands << " bands";
        }
    }
    standalone::SetPoolLimit(0);
}

/// The library's scratch block serves one of them at a time.
TYPED_TEST(BandsAtDepth, CallsAtOnceDoNotShowInEachOther) {
    const auto calls = [](int i) {
        std::vector<std::vector<TypeParam>> made;
        for (int k = 0; k < 40; ++k) {
            const int width = 20 + (i * 7 + k * 13) % 50;
            TestWorld<TypeParam> src(width, 9, FillKind::layer, 10 + k), mask(width, 9, FillKind::random, k);
            TestWorld<TypeParam> dst(70, 12, FillKind::random, 3);
            const QX_MaskWorld record = mask_at(*mask.record(), 0, 0, kQX_MaskInverseLuma);
            const TransferCall call{
                .mode = mode_of(k % 2 == 0 ? +xfer_over : +xfer_soft_light, 0.8f, true), .mask = &record, .dest_x = i};
            EXPECT_EQ(call(src.record(), dst.record()), 0);
            made.push_back(dst.pixels());
        }
        return made;
    };
    std::vector<std::vector<std::vector<TypeParam>>> alone, together(8);
    for (int i = 0; i < 8; ++i) alone.push_back(calls(i));
    in_threads(8, [&](int i) { together[static_cast<std::size_t>(i)] = calls(i); });
    EXPECT_EQ(together, alone);
}

TYPED_TEST(BandsAtDepth, NothingIsAllocatedByRowOrPixel) {
    const auto tables = tables_of_gamma(2.2f);
    TestWorld<TypeParam> src(600, 320, FillKind::layer, 1), dst(600, 320, FillKind::random, 2),
        mask(600, 320, FillKind::random, 3);
    const QX_MaskWorld record = mask_at(*mask.record(), 0, 0, kQX_MaskLuma);
    for (const auto& [xfer, linear] :
         each(std::array{+xfer_over, +xfer_soft_light, +xfer_add, +xfer_hue}, std::array{false, true})) {
        const TransferCall call{
            .mode = mode_of(xfer, 1.0f, true), .tables = linear ? &tables : nullptr, .mask = &record};
        OwnScratch scratch;
        ASSERT_EQ(scratch.allocate(600, sizeof(QX_ChannelOf<TypeParam>), false), 0);
        const std::int64_t before = NewCounter::count() + standalone::Memory().allocations;
        EXPECT_EQ(call.with_scratch(src.record(), dst.record(), scratch.get()), 0);
        EXPECT_EQ(NewCounter::count() + standalone::Memory().allocations, before) << name_of(xfer);
    }
}

}  // namespace
}  // namespace qx::test
