// SPDX-License-Identifier: Apache-2.0
// Transfers of every mode against the model, pixel for pixel.
#include "tests/compositing/ModesModel.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

struct RowCase {
    int xfer;
    float opacity;
    bool masked, rgb_only;
    FillKind src, dst;
    std::uint64_t seed;
    const QX_LinearBlendingTables* tables = nullptr;
};
std::ostream& operator<<(std::ostream& out, const RowCase& c) {
    return out << name_of(c.xfer) << ", opacity " << c.opacity << (c.masked ? ", masked" : "")
               << (c.rgb_only ? ", rgb_only" : "") << (c.tables ? ", linear" : "") << ", fills "
               << static_cast<int>(c.src) << " on " << static_cast<int>(c.dst) << ", seed " << c.seed;
}

/// Every opacity, mask and switch over every fill of the source.
std::vector<RowCase> cases_of(int xfer, const QX_LinearBlendingTables* tables, bool brief) {
    std::vector<RowCase> cases;
    std::size_t n = 0;
    const std::array both = {false, true};
    for (const auto& [fill, opacity, rgb_only, masked] :
         each(kAllFills, std::array{1.0f, 0.5f, 0.004f, 0.0f}, both, both)) {
        const std::size_t dst = (n / 16 + n) % std::size(kAllFills);
        if (!brief || n % 3 == 0) {
            cases.push_back(
                {xfer, opacity, masked || xfer == xfer_mask_crossfade, rgb_only, fill, kAllFills[dst], n, tables});
        }
        ++n;
    }
    return cases;
}

/// The worlds of a case. The rectangle leaves room on all sides, and begins beside the corner for the seeds of
/// dissolve.
template <class Pixel> class Scene {
public:
    static constexpr int kWidth = 203, kHeight = 13;
    static constexpr M_LRect kRect{3, 2, kWidth - 1, kHeight - 1};
    explicit Scene(const RowCase& c)
        : case_(c),
          src_(kWidth, kHeight, c.src, c.seed),
          dst_(kWidth, kHeight, c.dst, c.seed + 500),
          mask_(kWidth, kHeight, c.seed % 3 == 0 ? FillKind::layer : FillKind::random, c.seed + 900) {}

    std::vector<Pixel> modelled() {
        constexpr float full = kFull<Pixel>;
        const auto opacity = static_cast<QX_ChannelOf<Pixel>>(case_.opacity * full + (full > 1 ? 0.5f : 0.0f));
        model::RowCall<Pixel> call{case_.xfer, opacity, {}, case_.rgb_only, case_.tables, nullptr};
        std::vector<Pixel> out = dst_.pixels();
        std::uint32_t row_seed = kSeed + kRect.left, increment = kRect.top * 12281;
        for (int y = 0; y < kHeight; ++y) {
            std::uint32_t seed = row_seed;
            call.seed = &seed;
            for (int x = 0; x < kWidth; ++x) {
                Pixel& pixel = out[static_cast<std::size_t>(y * kWidth + x)];
                if (!holds(kRect, x, y)) {
                    if (case_.xfer == xfer_alpha_multiply || case_.xfer == xfer_alpha_multiply_luma) pixel.alpha = 0;
                    continue;
                }
                if (case_.masked) call.mask = mask_.at(x, y).alpha;
                const Pixel made = model::row_pixel(call, src_.at(x, y), pixel);  // of a skipped row too
                if (field() == 0 || y % 2 == field() - 1) pixel = made;
            }
            if (y < kRect.top) continue;
            row_seed += increment;
            increment += 12281;
        }
        return out;
    }

    /// What the library makes of it.
    std::vector<Pixel> transferred() {
        const QX_MaskWorld mask = mask_at(*mask_.record(), 0, 0, 0);
        const TransferCall call{.mode = {case_.xfer, case_.opacity, nullptr, case_.rgb_only, kSeed},
                                .src_rect = kRect,
                                .tables = case_.tables,
                                .mask = case_.masked ? &mask : nullptr,
                                .field = field(),
                                .dest_x = kRect.left,
                                .dest_y = kRect.top};
        TestWorld<Pixel> dst(kWidth, kHeight, case_.dst, case_.seed + 500);
        EXPECT_EQ(call(src_.record(), dst.record()), 0);
        return dst.pixels();
    }

    /// The first pixel that differs, in words; empty when all agree.
    std::string difference(const std::vector<Pixel>& expected, const std::vector<Pixel>& got) {
        const auto [want, made] = std::mismatch(expected.begin(), expected.end(), got.begin(), same_pixel<Pixel>);
        if (want == expected.end()) return "";
        const int i = static_cast<int>(want - expected.begin()), x = i % kWidth, y = i / kWidth;
        std::ostringstream text;
        text << "at " << x << ", " << y << ": source " << src_.at(x, y) << " on " << dst_.at(x, y) << " under "
             << +mask_.at(x, y).alpha << " gives " << *made << ", not " << *want;
        return text.str();
    }

private:
    static constexpr int kSeed = 4711;
    int field() const { return case_.seed % 5 < 3 ? 0 : static_cast<int>(case_.seed % 5) - 2; }
    RowCase case_;
    TestWorld<Pixel> src_, dst_, mask_;
};

/// One mode at all levels; the model runs once.
template <class Pixel> void hold_to_model(int xfer, const QX_LinearBlendingTables* tables, bool brief) {
    const std::vector<RowCase> cases = cases_of(xfer, tables, brief);
    std::vector<std::vector<Pixel>> expected;
    for (const auto level : kLevels) {
        if (level > standalone::DetectedProcessorLevel()) break;
        const Born born(1, level);
        int faults = 0;
        for (std::size_t i = 0; i < cases.size() && faults < 3; ++i) {
            Scene<Pixel> scene(cases[i]);
            if (expected.size() <= i) expected.push_back(scene.modelled());
            const std::string difference = scene.difference(expected[i], scene.transferred());
            EXPECT_EQ(difference, "") << "level " << static_cast<int>(level) << ", " << cases[i];
            faults += difference.empty() ? 0 : 1;
        }
    }
}

template <class Pixel> class ModesAgainstModel : public testing::Test {};
TYPED_TEST_SUITE(ModesAgainstModel, AllDepths);

/// More than 200,000 pixels of each mode.
TYPED_TEST(ModesAgainstModel, RowsOfStoredValues) {
    for (const int xfer : modes_from(kQX_FirstMode)) hold_to_model<TypeParam>(xfer, nullptr, false);
}

TYPED_TEST(ModesAgainstModel, RowsInLinearLight) {
    const QX_LinearBlendingTables tables = tables_of_gamma(2.2f);
    for (const int xfer : modes_from(kQX_FirstMode)) hold_to_model<TypeParam>(xfer, &tables, true);
}

/// The model's own anchors: values that are known without it.
TEST(Model, GivesKnownPixels) {
    // Columns: mode, source, destination, result
    const Cases<int, QX_Pixel8, QX_Pixel8, QX_Pixel8> at8 = {
        {xfer_over, {255, 1, 2, 3}, {255, 9, 9, 9}, {255, 1, 2, 3}},
        {xfer_over, {128, 1, 2, 3}, {0, 9, 9, 9}, {128, 1, 2, 3}},
        {xfer_over, {51, 255, 0, 100}, {255, 0, 255, 100}, {255, 51, 204, 100}},  // a fifth of the way
        {xfer_behind, {200, 1, 2, 3}, {255, 9, 8, 7}, {255, 9, 8, 7}},
        {xfer_add, {255, 200, 100, 0}, {255, 100, 100, 7}, {255, 255, 200, 7}},
        {xfer_multiply, {255, 255, 0, 51}, {255, 77, 77, 100}, {255, 77, 0, 20}},
        {xfer_screen, {255, 255, 0, 51}, {255, 77, 77, 100}, {255, 255, 77, 131}},
        {xfer_difference, {255, 10, 200, 5}, {255, 30, 50, 5}, {255, 20, 150, 0}},
        {xfer_hard_mix, {255, 255, 255, 0}, {255, 0, 1, 255}, {255, 0, 255, 255}},
        {xfer_divide, {255, 0, 0, 255}, {255, 0, 1, 9}, {255, 0, 255, 9}},
        {xfer_alpha_multiply_luma, {255, 255, 255, 255}, {51, 4, 5, 6}, {51, 4, 5, 6}},
        {xfer_alpha_multiply_inverse, {255, 0, 0, 0}, {51, 4, 5, 6}, {0, 4, 5, 6}},
        {xfer_marker_guard, {9, 1, 2, 3}, {7, 0, 255, 0}, {7, 0, 255, 0}},
        {xfer_marker_guard, {9, 1, 2, 3}, {7, 0, 254, 0}, {9, 1, 2, 3}},
        {xfer_luminosity, {255, 60, 60, 60}, {255, 90, 90, 90}, {255, 60, 60, 60}},
    };
    for (const auto& [xfer, src, dst, expected] : at8) {
        EXPECT_EQ(model::row_pixel({xfer, 255, {}}, src, dst), expected) << name_of(xfer);
    }
    const QX_PixelFloat white{1, 1, 1, 1};
    EXPECT_EQ(model::row_pixel({xfer_add, 1.0f, {}}, white, white), (QX_PixelFloat{1, 2, 2, 2}));
    const QX_Pixel16 deep{32768, 1, 32768, 16384};
    EXPECT_EQ(model::row_pixel({xfer_over, 32768, {}}, deep, {32768, 5, 5, 5}), deep);
}

/// All pairs of a source and a destination channel at 8 bits, under alphas at the edges and between.
TEST(AllPairs, AreTheModels) {
    const Born born(1);
    constexpr int n = 256;
    TestWorld<QX_Pixel8> src(n, n, FillKind::clear, 0), start(n, n, FillKind::clear, 0), dst(n, n, FillKind::clear, 0);
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    const Cases<int, int> alphas = {{255, 255}, {128, 255}, {255, 128}, {77, 200}, {1, 1}, {254, 1}};
    for (const auto& [under, xfer] : each(alphas, modes_from(kQX_FirstMode))) {
        if (xfer == xfer_mask_crossfade || xfer == xfer_dissolve) continue;  // another mask, and seeds
        for (const auto& [x, y] : places(n, n)) {
            src.at(x, y) = {byte(std::get<0>(under)), byte(x), byte(255 - x), byte(x ^ 0x55)};
            start.at(x, y) = dst.at(x, y) = {byte(std::get<1>(under)), byte(y), byte(y * 7 + 3), byte(y ^ 0x55)};
        }
        ASSERT_EQ((TransferCall{.mode = mode_of(xfer)}(src.record(), dst.record())), 0);
        for (const auto& [x, y] : places(n, n)) {
            const QX_Pixel8& s = src.at(x, y);
            ASSERT_EQ(model::row_pixel({xfer, 255, {}}, s, start.at(x, y)), dst.at(x, y))
                << name_of(xfer) << ": " << s << " on " << start.at(x, y);
        }
    }
}

}  // namespace
}  // namespace qx::test
