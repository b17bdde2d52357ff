// SPDX-License-Identifier: Apache-2.0
// The filters and the alpha merges of the row driver against the model, at every level.
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

using model::Pivot;

/// All 65,536 pairs of two channels at 8 bits; a million and the edges elsewhere.
template <class Pixel> std::vector<Pixel> pairs() {
    std::vector<Pixel> all;
    for (const FillKind kind : {FillKind::random, FillKind::edges, FillKind::extremes, FillKind::clear}) {
        std::vector<Pixel> some(kind == FillKind::random ? 300'000 : 20'000);
        fill_pixels<Pixel>(some, kind, 17);
        all.insert(all.end(), some.begin(), some.end());
    }
    const auto byte = [](int v) { return static_cast<QX_ChannelOf<Pixel>>(v); };
    for (int i = 0; i < 65536 && sizeof(Pixel) == 4; ++i) {
        all[static_cast<std::size_t>(i)] = {byte(i / 256), byte(i % 256), byte(255 - i % 256), byte(i % 256 ^ 0x55)};
    }
    return all;
}

template <class Pixel> class Filters : public testing::Test {
protected:
    static void expect_same(const std::vector<Pixel>& expected, const std::vector<Pixel>& got,
                            const std::vector<Pixel>& from) {
        for (std::size_t i = 0; i < from.size(); ++i) {
            ASSERT_TRUE(same_pixel(expected[i], got[i]))
                << from[i] << " at " << i << " gives " << got[i] << ", not " << expected[i];
        }
    }
    template <class Check> static void at_every_level(const Check& check) {
        for (const auto level : kLevels) {
            SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level));
            const Born born(1, level);
            check();
        }
    }
};
TYPED_TEST_SUITE(Filters, AllDepths);

TYPED_TEST(Filters, AreTheModels) {
    const std::vector<TypeParam> from = pairs<TypeParam>();
    const auto count = static_cast<std::int32_t>(from.size());
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(testing::Message() << "filter " << i);
        std::vector<TypeParam> expected;
        for (const TypeParam& p : from) {
            expected.push_back(model::filtered(static_cast<Pivot>(1 + i / 2), i % 2 == 0, p));
        }
        this->at_every_level([&] {
            const auto filter = filter_slot<TypeParam>(i);
            std::vector<TypeParam> in_place = from, copied(from.size());
            ASSERT_EQ(filter(count, nullptr, in_place.data()), 0);
            ASSERT_EQ(filter(count, from.data(), copied.data()), 0);
            this->expect_same(expected, in_place, from);
            this->expect_same(expected, copied, from);
        });
    }
}

/// Every pair of a source and a destination alpha at 8 bits, under several opacities, with a mask and without.
TYPED_TEST(Filters, MergesAreTheModels) {
    using Channel = QX_ChannelOf<TypeParam>;
    const std::vector<TypeParam> from = pairs<TypeParam>();
    const auto count = static_cast<std::int32_t>(from.size());
    std::vector<TypeParam> dst(from.size()), mask(from.size());
    fill_pixels<TypeParam>(mask, FillKind::random, 23);
    for (std::size_t i = 0; i < from.size(); ++i) dst[i] = {from[i].red, from[i].green, from[i].blue, from[i].alpha};
    for (const double part : {1.0, 0.98, 0.5, 0.01, 0.0}) {
        const Channel opacity = static_cast<Channel>(part * static_cast<double>(DepthOf<TypeParam>::full));
        for (const bool masked : {false, true}) {
            SCOPED_TRACE(testing::Message() << "opacity " << +opacity << (masked ? ", masked" : ""));
            std::vector<TypeParam> expected;
            for (std::size_t i = 0; i < from.size(); ++i) {
                const auto coverage = masked ? std::optional<Channel>(mask[i].alpha) : std::nullopt;
                expected.push_back(model::merged(from[i], opacity, coverage, dst[i]));
            }
            this->at_every_level([&] {
                std::vector<TypeParam> got = dst;
                const auto merge = slot<SlotsOf<TypeParam>.merge>();
                ASSERT_EQ(merge(count, from.data(), opacity, masked ? mask.data() : nullptr, got.data()), 0);
                this->expect_same(expected, got, from);
            });
        }
    }
}

/// A pass that fails ends the row: what it left is not touched any more, its alpha too.
TYPED_TEST(Filters, AFailedPassEndsTheRow) {
    using Pixel = TypeParam;
    const Born born;
    static constexpr Pixel kLeft{1, 0, 1, 0};
    using Passes = QX_BlendModeDescriptor<Pixel>;
    const auto fails = [](std::int32_t, const QX_BlendingMode<Pixel>*, const QX_LinearBlendingTables*, const Pixel*,
                          const Pixel*, Pixel* dst) {
        *dst = kLeft;
        return 9;
    };
    for (const int xfer : {xfer_over, xfer_multiply, xfer_linear_dodge}) {
        Passes passes(QX_BlendingMode<Pixel>(mode_of(xfer, 1.0f, true)), false, nullptr);
        ASSERT_NE(passes.keeps_alpha, 0);
        passes.row = fails;
        const Pixel src{};
        Pixel dst{};
        QX_ChannelOf<Pixel> alpha{};
        EXPECT_EQ(slot<SlotsOf<Pixel>.driver>()(1, &passes, &src, nullptr, &dst, &alpha), 9);
        EXPECT_EQ(dst, kLeft) << name_of(xfer);
    }
}

}  // namespace
}  // namespace qx::test
