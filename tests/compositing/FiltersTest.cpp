// SPDX-License-Identifier: Apache-2.0
// The filters and the alpha merges of the row driver against the model, at every level.
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

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
    const std::vector<Pixel> from = pairs<Pixel>();
    const std::int32_t count = static_cast<std::int32_t>(from.size());

    /// The result of `modelled(i)` at each place, and of `run()` at every level.
    template <class Model, class Run> void hold(const Model& modelled, const Run& run) const {
        std::vector<Pixel> expected;
        for (std::size_t i = 0; i < from.size(); ++i) expected.push_back(model::pack<Pixel>(modelled(i)));
        for (const auto level : kLevels) {
            const Born born(1, level);
            for (const std::vector<Pixel>& got : run()) {
                const auto [want, made] =
                    std::mismatch(expected.begin(), expected.end(), got.begin(), same_pixel<Pixel>);
                if (want == expected.end()) continue;
                FAIL() << from[static_cast<std::size_t>(want - expected.begin())] << " gives " << *made << ", not "
                       << *want << " at level " << static_cast<int>(level);
            }
        }
    }
};
TYPED_TEST_SUITE(Filters, AllDepths);

TYPED_TEST(Filters, AreTheModels) {
    using Model = model::ModesOf<TypeParam>;
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(testing::Message() << "filter " << i);
        const auto modelled = [&](std::size_t at) {
            return Model::filter(static_cast<model::Pivot>(1 + i / 2), i % 2 == 0, model::unpack(this->from[at]));
        };
        this->hold(modelled, [&] {
            const auto filter = filter_slot<TypeParam>(i);
            std::vector<TypeParam> in_place = this->from, copied(this->from.size());
            EXPECT_EQ(filter(this->count, nullptr, in_place.data()), 0);
            EXPECT_EQ(filter(this->count, this->from.data(), copied.data()), 0);
            return std::array{in_place, copied};
        });
    }
}

/// Every pair of a source and a destination alpha at 8 bits, under several opacities, with a mask and without.
TYPED_TEST(Filters, MergesAreTheModels) {
    using Model = model::ModesOf<TypeParam>;
    std::vector<TypeParam> dst, mask(this->from.size());
    fill_pixels<TypeParam>(mask, FillKind::random, 23);
    for (const TypeParam& p : this->from) dst.push_back({p.red, p.green, p.blue, p.alpha});
    for (const auto& [part, masked] : each(std::array{1.0, 0.98, 0.5, 0.01, 0.0}, std::array{false, true})) {
        const auto opacity = static_cast<QX_ChannelOf<TypeParam>>(part * static_cast<double>(Model::full));
        const TypeParam* const row = masked ? mask.data() : nullptr;
        SCOPED_TRACE(testing::Message() << "opacity " << part << (masked ? ", masked" : ""));
        const auto modelled = [&](std::size_t at) {
            return Model::merge(model::unpack(this->from[at]), opacity, masked ? mask[at].alpha : Model::full,
                                model::unpack(dst[at]));
        };
        this->hold(modelled, [&] {
            std::array got{dst};
            EXPECT_EQ(slot<SlotsOf<TypeParam>.merge>()(this->count, this->from.data(), opacity, row, got[0].data()), 0);
            return got;
        });
    }
}

/// A pass that fails ends the row: what it left is not touched any more, its alpha too.
TYPED_TEST(Filters, AFailedPassEndsTheRow) {
    using Pixel = TypeParam;
    const Born born;
    static constexpr Pixel kLeft{1, 0, 1, 0};
    for (const int xfer : {xfer_over, xfer_multiply, xfer_linear_dodge}) {
        QX_BlendModeDescriptor<Pixel> passes(QX_BlendingMode<Pixel>(mode_of(xfer, 1.0f, true)), false, nullptr);
        ASSERT_NE(passes.keeps_alpha, 0);
        passes.row = [](auto, auto, auto, auto, auto, Pixel* dst) {
            *dst = kLeft;
            return 9;
        };
        const Pixel src{};
        Pixel dst{};
        QX_ChannelOf<Pixel> alpha{};
        EXPECT_EQ(slot<SlotsOf<Pixel>.driver>()(1, &passes, &src, nullptr, &dst, &alpha), 9);
        EXPECT_EQ(dst, kLeft) << name_of(xfer);
    }
}

}  // namespace
}  // namespace qx::test
