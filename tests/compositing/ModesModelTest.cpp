// SPDX-License-Identifier: Apache-2.0
// Transfers of every mode against the model, pixel for pixel.
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// The rectangle leaves room on all sides, and begins beside the corner for the seeds of dissolve.
constexpr int kWidth = 203, kHeight = 13, kSeed = 4711;
constexpr M_LRect kRect{3, 2, kWidth - 1, kHeight - 1};

/// Three worlds, and a transfer of the rectangle between two of them.
template <class Pixel> struct Scene {
    TestWorld<Pixel> src, dst, mask;
    QX_MaskWorld record{};
    TransferCall call{};

    /// What is made of the destination.
    std::vector<Pixel> modelled(std::vector<Pixel> out) {
        const int xfer = call.mode.xfer;
        const float opacity = call.mode.opacity * kFull<Pixel>;
        using M = model::ModesOf<Pixel>;
        typename M::Run job{xfer, M::full, static_cast<typename M::N>(M::real ? opacity : opacity + 0.5f)};
        job.second = M::wrap(job.second), job.rgb_only = call.mode.rgb_only;
        std::uint32_t row_seed = kSeed + kRect.left, increment = kRect.top * 12281;
        for (int y = 0; y < kHeight; ++y) {
            std::uint32_t seed = row_seed;
            job.seed = &seed;
            for (int x = 0; x < kWidth; ++x) {
                Pixel& pixel = out[static_cast<std::size_t>(y * kWidth + x)];
                if (!holds(kRect, x, y)) {
                    if (xfer == xfer_alpha_multiply || xfer == xfer_alpha_multiply_luma) pixel.alpha = 0;
                    continue;
                }
                if (call.mask != nullptr) job.first = model::coverage(mask.at(x, y), record.flags);
                const Pixel made = model::row_pixel(job, call.tables, src.at(x, y), pixel);  // of a skipped row too
                if (call.field == 0 || y % 2 == call.field - 1) pixel = made;
            }
            if (y < kRect.top) continue;
            row_seed += increment;
            increment += 12281;
        }
        return out;
    }
};

/// One mode at all levels, with every opacity, mask and switch over every fill of the source; a third of that in linear
/// light. The model runs once.
template <class Pixel> void hold_to_model(int xfer, const QX_LinearBlendingTables* tables) {
    const std::array opacities = {1.0f, 0.5f, 0.004f, 0.0f, 1.9f};  // a record of 16 bits may hold nearly 2
    const std::array both = {false, true};
    const auto cases = each(kAllFills, opacities, both, both);
    std::map<std::size_t, std::vector<Pixel>> expected;
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (std::size_t n = 0; n < cases.size(); n += tables != nullptr ? 3 : 1) {
            const auto& [fill, opacity, rgb_only, masked] = cases[n];
            const FillKind under = kAllFills[(n / 20 + n) % std::size(kAllFills)];
            Scene<Pixel> scene{{kWidth, kHeight, fill, n},
                               {kWidth, kHeight, under, n + 500},
                               {kWidth, kHeight, n % 3 == 0 ? FillKind::layer : FillKind::random, n + 900}};
            scene.record = mask_at(*scene.mask.record(), 0, 0, n / 4 % 4);
            scene.call = {.mode = {xfer, opacity, nullptr, rgb_only, kSeed}, .src_rect = kRect, .tables = tables};
            scene.call.mask = masked || xfer == xfer_mask_crossfade ? &scene.record : nullptr;
            scene.call.field = std::max(0, static_cast<int>(n % 5) - 2);
            scene.call.dest_x = kRect.left, scene.call.dest_y = kRect.top;
            const auto before = scene.dst.pixels();
            ASSERT_EQ(scene.call(scene.src.record(), scene.dst.record()), 0);
            if (opacity > 1 && DepthOf<Pixel>::number == 16) continue;  // the model's tables end at full
            if (expected.count(n) == 0) expected[n] = scene.modelled(before);
            const auto got = scene.dst.pixels();
            const auto [want, made] =
                std::mismatch(expected[n].begin(), expected[n].end(), got.begin(), same_pixel<Pixel>);
            if (want == expected[n].end()) continue;
            const int i = static_cast<int>(want - expected[n].begin()), x = i % kWidth, y = i / kWidth;
            FAIL() << name_of(xfer) << (tables ? ", linear" : "") << ", level " << static_cast<int>(level) << ", case "
                   << n << " at " << x << ", " << y << ": " << scene.src.at(x, y) << " on "
                   << before[static_cast<std::size_t>(i)] << " under " << scene.mask.at(x, y) << " gives " << *made
                   << ", not " << *want;
        }
    }
}

template <class Pixel> class ModesAgainstModel : public testing::Test {};
TYPED_TEST_SUITE(ModesAgainstModel, AllDepths);

/// More than 200,000 pixels of each mode.
TYPED_TEST(ModesAgainstModel, RowsAreTheModels) {
    const QX_LinearBlendingTables tables = tables_of_gamma(2.2f);
    for (const int xfer : modes_from(kQX_FirstMode)) {
        hold_to_model<TypeParam>(xfer, nullptr);
        hold_to_model<TypeParam>(xfer, &tables);
    }
}

/// All pairs of a source and a destination channel at 8 bits, under alphas at the edges and between; then all pairs of
/// alphas, under colours at the ends of the scale.
TEST(AllPairs, AreTheModels) {
    const Born born(1);
    constexpr int n = 256;
    TestWorld<QX_Pixel8> src(n, n, FillKind::clear, 0), start(n, n, FillKind::clear, 0), dst(n, n, FillKind::clear, 0);
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    const Cases<int, int> alphas = {{255, 255}, {128, 255}, {255, 128}, {77, 200}, {1, 1}, {254, 1}, {0, 0}};
    for (const auto& [under, xfer] : each(alphas, modes_from(kQX_FirstMode))) {
        if (xfer == xfer_mask_crossfade || xfer == xfer_dissolve) continue;  // another mask, and seeds
        const auto [a, b] = under;
        for (const auto& [x, y] : places(n, n)) {
            const bool colours = a != 0;
            src.at(x, y) =
                colours ? QX_Pixel8{byte(a), byte(x), byte(255 - x), byte(x ^ 0x55)} : QX_Pixel8{byte(x), 255, 255, 0};
            start.at(x, y) = dst.at(x, y) = colours ? QX_Pixel8{byte(b), byte(y), byte(y * 7 + 3), byte(y ^ 0x55)}
                                                    : QX_Pixel8{byte(y), 255, 0, 255};
        }
        ASSERT_EQ((TransferCall{.mode = mode_of(xfer)}(src.record(), dst.record())), 0);
        for (const auto& [x, y] : places(n, n)) {
            const QX_Pixel8& s = src.at(x, y);
            ASSERT_EQ(model::row_pixel({xfer, 255, 255}, nullptr, s, start.at(x, y)), dst.at(x, y))
                << name_of(xfer) << ": " << s << " on " << start.at(x, y);
        }
    }
}

}  // namespace
}  // namespace qx::test
