// SPDX-License-Identifier: Apache-2.0
// The cut into bands changes no pixel.
#include <gtest/gtest.h>

#include <random>

#include "QX/compositing/QX_TransferRect.h"
#include "platform/standalone/Standalone.h"
#include "scene/Composite.h"
#include "scene/Modes.h"
#include "scene/Placing.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using qx::pictures::Picture;

Picture random_pixels(unsigned seed, int width, int height) {
    const auto engine = std::make_shared<std::mt19937>(seed);
    return qx::test::picture<QX_Pixel8>(width, height, true, [=](int, int) {
        const auto v = (*engine)();
        const std::uint8_t alphas[] = {0, 255, static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v >> 16)};
        return QX_Pixel8{alphas[v & 3], static_cast<std::uint8_t>(v >> 24), static_cast<std::uint8_t>(v >> 16),
                         static_cast<std::uint8_t>(v >> 4)};
    });
}

TEST(Composite, BandsGiveWhatOneTransferGives) {
    const qx::test::Born library(1);
    const auto background = random_pixels(1, 57, 90), layer = random_pixels(2, 50, 80), mask = random_pixels(3, 40, 70);
    for (const ModeName& mode : all_modes()) {
        for (int kind = mode.number == xfer_mask_crossfade ? 0 : -1; kind < 4; ++kind) {
            SCOPED_TRACE(std::string(mode.name) + ", mask " + std::to_string(kind));
            Transfer t;
            t.layer = layer.world.get();
            t.x = -5;
            t.y = 17;
            t.mode = mode.number;
            t.opacity = 0.75f;
            t.field = mode.number % 3;
            t.rgb_only = mode.number % 2 == 0;
            t.seed = 12345;
            if (kind >= 0) {
                t.mask = mask.world.get();
                t.mask_x = 3;
                t.mask_y = 25;
                t.mask_kind = static_cast<QX_MaskKind>(kind);
            }
            auto expected = qx::pictures::at_depth("test", *background.world, 8);
            QX_MaskWorld record{};
            mask.world->FillOutEffectWorld(&record.world);
            record.x = t.mask_x;
            record.y = t.mask_y;
            record.flags = t.mask_kind;
            const QX_CompositeModePlus plus(t.mode, t.opacity, nullptr, t.rgb_only, t.seed);
            const M_LRect all{0, 0, 50, 80};
            ASSERT_EQ(QX_TransferRect(nullptr, 0, 0, t.field, &all, layer.world.get(), &plus, nullptr,
                                      kind >= 0 ? &record : nullptr, t.x, t.y, expected.get()),
                      0);
            for (const int bands : {1, 7, 32}) {
                standalone::SetBandCount(bands);
                auto result = qx::pictures::at_depth("test", *background.world, 8);
                ASSERT_EQ(composite(t, *result), 0);
                EXPECT_TRUE(qx::test::same_pixels(*expected, *result)) << bands;
            }
        }
    }
}

/// Where a transform lands on whole pixels, each pixel of the result is one of the layer's, whatever the quality.
TEST(Composite, TransformsThatMapPixelsToPixels) {
    const qx::test::Born library(32);
    const auto background = random_pixels(6, 64, 64), layer = random_pixels(7, 12, 12);
    struct Case {
        const char* name;
        Placing placing;
        int first_quality, last_quality;
        int (*source)(int x, int y);  ///< of the layer's pixel at (x, y) behind the place: column + 100 * row
        int side;
    };
    const Case cases[] = {
        {"moved", {{20, 30}, {1, 1}, 0, {0, 0}}, 0, 2, [](int x, int y) { return x + 100 * y; }, 12},
        {"anchored", {{26, 36}, {1, 1}, 0, {6, 6}}, 0, 2, [](int x, int y) { return x + 100 * y; }, 12},
        {"half turn", {{26, 36}, {1, 1}, 180, {6, 6}}, 1, 2, [](int x, int y) { return 11 - x + 100 * (11 - y); }, 12},
        {"quarter", {{26, 36}, {1, 1}, -270, {6, 6}}, 1, 2, [](int x, int y) { return y + 100 * (11 - x); }, 12},
        {"mirrored", {{32, 30}, {-1, 1}, 0, {0, 0}}, 1, 2, [](int x, int y) { return 11 - x + 100 * y; }, 12},
        {"doubled", {{20, 30}, {2, 2}, 0, {0, 0}}, 0, 0, [](int x, int y) { return x / 2 + 100 * (y / 2); }, 24},
        {"nothing", {{20, 30}, {0, 1}, 0, {0, 0}}, 0, 2, [](int, int) { return 0; }, 0},
    };
    for (const Case& c : cases) {
        auto expected = qx::pictures::at_depth("test", *background.world, 8);
        for (int y = 0; y < c.side; ++y) {
            for (int x = 0; x < c.side; ++x) {
                const int from = c.source(x, y);
                auto& p = qx::pictures::row_of<QX_Pixel8>(*layer.world, from / 100)[from % 100];
                if (p.alpha < 255) p.alpha = 0;  // so that `over` copies or leaves
                if (p.alpha == 255) qx::pictures::row_of<QX_Pixel8>(*expected, y + 30)[x + 20] = p;
            }
        }
        for (int quality = c.first_quality; quality <= c.last_quality; ++quality) {
            Transfer t;
            t.layer = layer.world.get();
            t.matrices = {matrix_of(c.placing)};
            t.quality = quality;
            auto result = qx::pictures::at_depth("test", *background.world, 8);
            ASSERT_EQ(composite(t, *result), 0);
            EXPECT_TRUE(qx::test::same_pixels(*expected, *result)) << c.name << ", quality " << quality;
        }
    }
}

TEST(Composite, LayerBesideTheBackgroundChangesNothing) {
    const qx::test::Born library(32);
    const auto background = random_pixels(4, 20, 20), layer = random_pixels(5, 10, 10);
    for (const int x : {-10, 20, 1'000'000, -1'000'000}) {
        Transfer t;
        t.layer = layer.world.get();
        t.x = x;
        t.mode = xfer_alpha_multiply;
        auto result = qx::pictures::at_depth("test", *background.world, 8);
        EXPECT_EQ(composite(t, *result), 0);
        EXPECT_TRUE(qx::test::same_pixels(*background.world, *result));
    }
}

}  // namespace
