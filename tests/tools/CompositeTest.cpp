// SPDX-License-Identifier: Apache-2.0
// The cut into bands changes no pixel.
#include <gtest/gtest.h>

#include <random>

#include "QX/compositing/QX_TransferRect.h"
#include "platform/standalone/Standalone.h"
#include "tests/tools/Support.h"
#include "tools/qx/Composite.h"
#include "tools/qx/Modes.h"
#include "tools/qx/Options.h"

namespace {

using namespace qx::tool;
using qx::io::Picture;

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
    standalone::SetBandCount(1);
    const Library library;
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
            auto expected = qx::io::at_depth("test", *background.world, 8);
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
                auto result = qx::io::at_depth("test", *background.world, 8);
                ASSERT_EQ(composite(t, *result, nullptr), 0);
                EXPECT_TRUE(qx::test::same_pixels(*expected, *result)) << bands;
            }
        }
    }
    standalone::SetBandCount(32);
}

TEST(Composite, LayerBesideTheBackgroundChangesNothing) {
    const Library library;
    const auto background = random_pixels(4, 20, 20), layer = random_pixels(5, 10, 10);
    for (const int x : {-10, 20, 1'000'000, -1'000'000}) {
        Transfer t;
        t.layer = layer.world.get();
        t.x = x;
        t.mode = xfer_alpha_multiply;
        auto result = qx::io::at_depth("test", *background.world, 8);
        EXPECT_EQ(composite(t, *result, nullptr), 0);
        EXPECT_TRUE(qx::test::same_pixels(*background.world, *result));
    }
}

}  // namespace
