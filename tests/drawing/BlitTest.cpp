// SPDX-License-Identifier: Apache-2.0
// The blit for display, against a model.
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

constexpr QX_PixelFloat kA{0.5f, 0.25f, 0.5f, 0.75f}, kB{1, 1, 0.5f, 0}, kBlack{1, 0, 0, 0};

template <class Pixel> class Blit : public testing::Test {};
TYPED_TEST_SUITE(Blit, AllDepths);

/// Every style, in any number of bands: heights that they do not divide, and fewer rows than bands.
TYPED_TEST(Blit, FlattensOverItsBackdrop) {
    using K = model::DepthModel<TypeParam>;
    using N = typename K::N;
    constexpr int depth = DepthOf<TypeParam>::number;
    const auto stored = [](float v) { return static_cast<N>(converted(v, 32, depth)); };
    const auto shown = [](N v) { return static_cast<std::uint8_t>(converted(static_cast<double>(v), depth, 8)); };
    TestWorld<TypeParam> src(40, 41, FillKind::layer, 4);
    for (const auto& [style, swapped, first, bands, height] :
         each(std::array{kQX_BlitPlain, kQX_BlitCheckerboard, kQX_BlitMatte}, std::array{false, true},
              std::array{kA, kBlack}, std::array{1, 3, 7, 32}, std::array{1, 6, 31, 39})) {
        const Born born(bands);
        TestWorld<QX_Pixel8> dst(50, 50, FillKind::opaque, 5), want(50, 50, FillKind::opaque, 5);
        QX_SpecialCasePixelBlit(&src.world(), {3, 2}, style, swapped, {1, 0}, first, kB, 4, {5, 6, 35, 6 + height},
                                &dst.world());
        const bool checker = style == kQX_BlitCheckerboard, matte = style == kQX_BlitMatte;
        const bool on_black = style == kQX_BlitPlain && first.red == 0;
        N weight{};  // of the matte, carried on within a part
        for (const auto& [column, row] : places(30, height)) {
            const int x = column + 5, y = row + 6, rows = height / bands;
            if (column == 0 && (row == 0 || (rows > 0 && row % rows == 0 && row / rows < bands))) {
                weight = stored(first.alpha);
            }
            const TypeParam s = src.at(column + 3, row + 2);
            const N a = s.alpha;
            if (a < K::full) weight = K::mul(K::full - a, weight);
            const auto flattened = [&](N c, float under) {
                const N u = stored(under);
                if (a >= K::full) return shown(c);
                if (matte) return shown(K::lerp(u - c, weight) + c);
                if (on_black) return shown(K::mul(c, a));
                return a > 0 ? shown(K::lerp(c - u, a) + u) : static_cast<std::uint8_t>(converted(under, 32, 8));
            };
            const QX_PixelFloat& b = checker && (((x - 1) ^ y) & 4) == 0 ? kB : first;
            QX_Pixel8& to = want.at(x, y);
            if (a <= 0 && !matte && !on_black) to.alpha = static_cast<std::uint8_t>(converted(b.alpha, 32, 8));
            to.red = flattened(s.red, b.red);
            to.green = flattened(s.green, b.green);
            to.blue = flattened(s.blue, b.blue);
            if (swapped) std::swap(to.red, to.blue);
        }
        ASSERT_EQ(dst.pixels(), want.pixels()) << "style " << style << " in " << bands << " bands of " << height;
    }
}

TEST(Blit16, RefusesADepthThatIsNoneBeforeAnythingElse) {
    const Born born(1);
    const BadWorlds bad;
    TestWorld<QX_Pixel8> dst(4, 4, FillKind::random, 2);
    const auto before = dst.pixels();
    const auto blit = [&](int x) {
        return code_of([&] {
            QX_SpecialCasePixelBlit(&bad.odd, {x, 0}, kQX_BlitPlain, false, {0, 0}, kA, kB, 1, {0, 0, 4, 4},
                                    &dst.world());
        });
    };
    const std::string text = "Unknown world bitdepth in SpecialCasePixelBlit";
    expect_refused({{[&] { return blit(0); }, text}, {[&] { return blit(-1); }, text}});
    EXPECT_EQ(before, dst.pixels());
}

/// Rectangles and origins at the ends of the scale of coordinates: where the source reaches, it is what it would be
/// nearer by.
TEST(Blit16, TakesAnyCoordinates) {
    const Born born(1);
    TestWorld<QX_Pixel16> src(4, 4, FillKind::layer, 1);
    constexpr int kLeast = INT32_MIN, kMost = INT32_MAX;
    const auto blit = [&](M_LPoint point, M_LPoint origin, const M_LRect& rect) {
        TestWorld<QX_Pixel8> dst(4, 4, FillKind::random, 2);
        QX_SpecialCasePixelBlit(&src.world(), point, kQX_BlitCheckerboard, false, origin, kA, kB, 2, rect,
                                &dst.world());
        return dst.pixels();
    };
    const auto untouched = TestWorld<QX_Pixel8>(4, 4, FillKind::random, 2).pixels();
    const auto usual = blit({0, 0}, {0, 0}, {0, 0, 4, 4});
    EXPECT_NE(usual, untouched);
    EXPECT_EQ(blit({0, 0}, {kLeast, kLeast}, {0, 0, 4, 4}), usual);  // a multiple of the squares
    const M_LRect all{0, 0, 4, 4};
    // Columns: point, rectangle
    const Cases<int, int, M_LRect> nowhere = {{-1, 0, all},
                                              {0, -1, all},
                                              {9, 9, all},
                                              {0, 0, {2, 2, 2, 4}},
                                              {kMost, 0, {-kMost, 0, 4, 4}},
                                              {0, kMost, {0, kLeast, 4, 4}},
                                              {0, 0, {kLeast, kLeast, kMost, kMost}},
                                              {7, 9, {7, 9, kMost, kMost}}};
    for (const auto& [x, y, rect] : nowhere) EXPECT_EQ(blit({x, y}, {0, 0}, rect), untouched) << name(rect);
}

}  // namespace
}  // namespace qx::test
