// SPDX-License-Identifier: Apache-2.0
// The cut into bands changes no pixel.
#include "scene/Composite.h"

#include "QX/compositing/QX_TransferRect.h"
#include "scene/Modes.h"
#include "scene/Placing.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

Picture random_pixels(unsigned seed, int width, int height) {
    std::mt19937 random(seed);
    return picture<QX_Pixel8>(width, height, true, [&](int, int) {
        const std::int64_t v = random(), alphas[] = {0, 255, v >> 8, v >> 16};
        return argb(alphas[v & 3], v >> 24, v >> 16, v >> 4);
    });
}
std::unique_ptr<QX_World> copy_of(const Picture& picture) { return at_depth("test", *picture.world, 8); }

void expect_composite(const Transfer& transfer, const Picture& background, const QX_World& expected,
                      const std::string& name) {
    const auto result = copy_of(background);
    ASSERT_EQ(composite(transfer, *result), 0) << name;
    EXPECT_TRUE(same_pixels(expected, *result)) << name;
}

TEST(Composite, BandsGiveWhatOneTransferGives) {
    const Born library(1);
    const auto background = random_pixels(1, 57, 90), layer = random_pixels(2, 50, 80), mask = random_pixels(3, 40, 70);
    QX_MaskWorld record{{}, 3, 25, 0};
    mask.world->FillOutEffectWorld(&record.world);
    const M_LRect all{0, 0, 50, 80};
    for (const Mode& mode : all_modes()) {
        for (int kind = mode.number == xfer_mask_crossfade ? 0 : -1; kind < 4; ++kind) {
            Transfer t{.layer = layer.world.get(),
                       .x = -5,
                       .y = 17,
                       .mode = mode.number,
                       .opacity = 0.75f,
                       .rgb_only = mode.number % 2 == 0,
                       .seed = 12345,
                       .field = mode.number % 3,
                       .mask = kind >= 0 ? mask.world.get() : nullptr,
                       .mask_x = record.x,
                       .mask_y = record.y,
                       .mask_kind = static_cast<QX_MaskKind>(std::max(kind, 0)),
                       .matrices = {}};
            record.flags = t.mask_kind;
            const auto expected = copy_of(background);
            const QX_CompositeModePlus plus(t.mode, t.opacity, nullptr, t.rgb_only, t.seed);
            ASSERT_EQ(QX_TransferRect(nullptr, 0, 0, t.field, &all, layer.world.get(), &plus, nullptr,
                                      kind >= 0 ? &record : nullptr, t.x, t.y, expected.get()),
                      0);
            for (const int bands : {1, 7, 32}) {
                standalone::SetBandCount(bands);
                expect_composite(t, background, *expected,
                                 mode.name + (", mask " + std::to_string(kind)) + ", bands " + std::to_string(bands));
            }
        }
    }
}

/// Where a transform lands on whole pixels, each pixel of the result is one of the layer's, whatever the quality.
TEST(Composite, TransformsThatMapPixelsToPixels) {
    const Born library(32);
    const auto background = random_pixels(6, 64, 64), layer = random_pixels(7, 12, 12);
    // `over` copies or leaves.
    each_pixel<QX_Pixel8>(*layer.world, [](QX_Pixel8& p, int, int) { p.alpha = p.alpha == 255 ? p.alpha : 0; });
    const Placing placings[] = {{{20, 30}, {1, 1}, 0, {0, 0}},   {{26, 36}, {1, 1}, 0, {6, 6}},
                                {{26, 36}, {1, 1}, 180, {6, 6}}, {{26, 36}, {1, 1}, -270, {6, 6}},
                                {{32, 30}, {-1, 1}, 0, {0, 0}},  {{20, 30}, {0, 1}, 0, {0, 0}}};
    for (const Placing& placing : placings) {
        Transfer t{.layer = layer.world.get(), .matrices = {matrix_of(placing)}};
        const auto expected = copy_of(background);
        each_pixel<QX_Pixel8>(*layer.world, [&](const QX_Pixel8& p, int x, int y) {
            M_FloatPoint centre{x + 0.5, y + 0.5};
            M_TransformFloatPoints(t.matrices[0], &centre, 1);
            const bool seen = p.alpha == 255 && placing.scale[0] != 0;
            if (seen) row_of<QX_Pixel8>(*expected, static_cast<int>(centre.y))[static_cast<int>(centre.x)] = p;
        });
        // The draft takes the pixel at the corner of what lies under one: another one where the layer is turned.
        for (t.quality = placing.degrees != 0 || placing.scale[0] < 0 ? 1 : 0; t.quality <= 2; ++t.quality) {
            expect_composite(t, background, *expected, testing::PrintToString(placing.degrees));
        }
    }
}

TEST(Composite, LayerBesideTheBackgroundChangesNothing) {
    const Born library(32);
    const auto background = random_pixels(4, 20, 20), layer = random_pixels(5, 10, 10);
    for (const int x : {-10, 20, 1'000'000, -1'000'000}) {
        const Transfer t{.layer = layer.world.get(), .x = x, .mode = xfer_alpha_multiply, .matrices = {}};
        expect_composite(t, background, *background.world, std::to_string(x));
    }
}

}  // namespace
