// SPDX-License-Identifier: Apache-2.0
// The blit for display, against a model in double.
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

constexpr QX_PixelFloat kA{0.5f, 0.25f, 0.5f, 0.75f}, kB{1, 1, 0.5f, 0}, kBlack{1, 0, 0, 0};

template <class Pixel> using Blit = BornAtDepth<Pixel, 4>;
TYPED_TEST_SUITE(Blit, AllDepths);

/// Colour on 0 to 255 of a source over a backdrop, before rounding.
double flattened(double c, double alpha, double backdrop) { return 255 * (backdrop + (c - backdrop) * alpha); }

TYPED_TEST(Blit, FlattensOverItsBackdrop) {
    const double full = static_cast<double>(DepthOf<TypeParam>::full);
    TestWorld<TypeParam> src(40, 30, FillKind::layer, 4);
    for (const auto& [x, y] : places(40, 30)) {  // keep to the nominal range
        TypeParam& p = src.at(x, y);
        for (auto* c : {&p.alpha, &p.red, &p.green, &p.blue}) *c = std::clamp(*c, {}, kFull<TypeParam>);
    }
    for (const auto& [swapped, style, first] :
         each(std::array{false, true}, std::array{kQX_BlitPlain, kQX_BlitCheckerboard}, std::array{kA, kBlack})) {
        TestWorld<QX_Pixel8> dst(50, 40, FillKind::opaque, 5), before(50, 40, FillKind::opaque, 5);
        const M_LRect rect{5, 6, 35, 30};
        QX_SpecialCasePixelBlit(&src.world(), {3, 2}, style, swapped, {1, 0}, first, kB, 4, rect, &dst.world());
        for (const auto& [x, y] : places(50, 40)) {
            const QX_Pixel8 old = before.at(x, y), now = dst.at(x, y);
            ASSERT_TRUE(holds(rect, x, y) || old == now) << x << ", " << y;
            if (!holds(rect, x, y)) continue;
            const TypeParam s = src.at(x - 5 + 3, y - 6 + 2);
            const bool checker = style == kQX_BlitCheckerboard;
            const QX_PixelFloat& b = checker && (((x - 1) ^ y) & 4) == 0 ? kB : first;
            const double alpha = s.alpha / full;
            const bool shorter = !checker && first.red == 0;
            EXPECT_EQ(now.alpha, alpha == 0 && !shorter ? std::floor(b.alpha * 255 + 0.5) : old.alpha);
            EXPECT_NEAR(swapped ? now.blue : now.red, flattened(s.red / full, alpha, b.red), 1.51);
            EXPECT_NEAR(now.green, flattened(s.green / full, alpha, b.green), 1.51);
            EXPECT_NEAR(swapped ? now.red : now.blue, flattened(s.blue / full, alpha, b.blue), 1.51);
        }
    }
}

/// The exact steps at 16 bits.
TEST(Blit16, RoundsAsToldAtSixteenBits) {
    const Born born(1);
    TestWorld<QX_Pixel16> src(3, 1, FillKind::opaque, 1);
    src.at(0, 0) = {32768, 16384, 100, 32768};
    src.at(1, 0) = {0, 16384, 100, 32768};
    src.at(2, 0) = {10000, 16384, 100, 32768};
    TestWorld<QX_Pixel8> dst(3, 1, FillKind::clear, 1);
    dst.at(2, 0).alpha = 77;
    QX_SpecialCasePixelBlit(&src.world(), {0, 0}, kQX_BlitPlain, false, {0, 0}, kA, kB, 1, {0, 0, 3, 1}, &dst.world());
    EXPECT_EQ(dst.at(0, 0).red, (16384 * 255 + 16384) >> 15);
    EXPECT_EQ(dst.at(1, 0).alpha, 128);
    EXPECT_EQ(dst.at(1, 0).red, 64);
    const int flattened_red = (((16384 - 8192) * 10000) >> 15) + 8192;
    EXPECT_EQ(dst.at(2, 0).red, (flattened_red * 255 + 16384) >> 15);
    EXPECT_EQ(dst.at(2, 0).alpha, 77);

    // The matte's weight is carried on: 16384, then times 22768 / 32768, and again.
    src.at(0, 0).alpha = src.at(2, 0).alpha = 10000;
    src.at(1, 0).alpha = 32768;
    QX_SpecialCasePixelBlit(&src.world(), {0, 0}, kQX_BlitMatte, false, {0, 0}, kA, kB, 1, {0, 0, 3, 1}, &dst.world());
    const int w1 = (22768 * 16384 + 16383) >> 15, w2 = (22768 * w1 + 16383) >> 15;
    const auto pulled = [](int s, int c, int w) { return (((((c - s) * w) >> 15) + s) * 255 + 16384) >> 15; };
    EXPECT_EQ(dst.at(0, 0).blue, pulled(32768, 24576, w1));
    EXPECT_EQ(dst.at(1, 0).blue, 255);
    EXPECT_EQ(dst.at(2, 0).blue, pulled(32768, 24576, w2));
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

/// Heights that the number of bands does not divide, and fewer rows than bands.
TEST(Blit16, DrawsEveryRowInAnyNumberOfBands) {
    TestWorld<QX_Pixel16> src(5, 40, FillKind::opaque, 1);
    for (const auto& [bands, height] : each(std::array{2, 3, 7, 32}, std::array{1, 6, 31, 39})) {
        const Born born(bands);
        TestWorld<QX_Pixel8> dst(5, 40, FillKind::clear, 1);
        QX_SpecialCasePixelBlit(&src.world(), {0, 0}, kQX_BlitPlain, false, {0, 0}, kA, kB, 1, {0, 0, 5, height},
                                &dst.world());
        for (const auto& [x, y] : places(5, height)) {
            ASSERT_EQ(dst.at(x, y).green, (src.at(x, y).green * 255 + 16384) >> 15) << "row " << y << " of " << height;
        }
    }
}

}  // namespace
}  // namespace qx::test
