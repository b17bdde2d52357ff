// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>

#include "QX/pixelops/QX_Fill.h"
#include "QX/world/QX_Frame.h"
#include "tests/support/Refusals.h"
#include "tests/world/WorldSupport.h"

namespace {

using namespace qx::test;

TEST(World, SizesRowbytesAndGutter) {
    const struct {
        int depth, width, rowbytes;
        bool gutter;
    } cases[] = {{8, 5, 32, true}, {16, 3, 32, true}, {32, 3, 48, true}, {32, 1, 16, false}, {16, 1, 16, true}};
    for (const auto& c : cases) {
        const World w(QX_World::New(c.width, 4, static_cast<short>(c.depth), 1));
        EXPECT_EQ(w->rowbytes, c.rowbytes);
        EXPECT_EQ(w->Depth(), c.depth);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(w->data) % 16, 0u);
        EXPECT_FALSE(w->SubWorldSafetyGutterHasBeenOverWritten());
        if (c.gutter) static_cast<char*>(w->data)[3 * c.rowbytes + c.width * c.depth / 2] = 1;
        EXPECT_EQ(w->SubWorldSafetyGutterHasBeenOverWritten(), c.gutter);
    }
}

TEST(World, InvalidSizesAreReported) {
    Reports reports;
    for (const M_LPoint size : {M_LPoint{0, 5}, {5, 0}, {30001, 1}, {1, 30001}, {-1, 1}}) {
        EXPECT_EQ(code_of([&] { World(QX_World::New(size.x, size.y, 8, 0)); }), 516);
        EXPECT_EQ(reports.last_text(),
                  "invalid image buffer size (" + std::to_string(size.x) + "x" + std::to_string(size.y) + ").");
    }
    EXPECT_EQ(code_of([] { World(QX_World::New(M_LRect{10, 0, 0, 5}, 8, 0)); }), 516);
    EXPECT_EQ(reports.last_text(), "invalid image buffer size (-10x5).");
    EXPECT_EQ(code_of([] { World(QX_World::New(M_LRect{INT32_MIN, 0, INT32_MAX, 5}, 8, 0)); }), 516);
    EXPECT_EQ(reports.last_text(), "invalid image buffer size (2147483647x5).");
    EXPECT_EQ(code_of([] { World(QX_World::New(30000, 1, 8, 0)); }), 0);
    EXPECT_EQ(code_of([] { World(QX_World::New(5, 5, 24, 0)); }), 3);
}

TEST(World, EveryFailedAllocationLeaksNothing) {
    Reports reports;
    const auto before = standalone::Memory().blocks_in_use;
    const std::int32_t live = qx::live_world_count();
    for (const int side : {10, 1000}) {
        for (int nth = 1; nth <= 2; ++nth) {
            standalone::FailAllocation(nth);
            const int code = code_of([&] { World(QX_World::New(side, side, 32, 0)); });
            standalone::FailAllocation(0);
            if (nth == 1) {
                EXPECT_EQ(code, 4);
            }
            EXPECT_EQ(standalone::Memory().blocks_in_use, before);
            EXPECT_EQ(qx::live_world_count(), live);
        }
    }
}

TEST(World, ReferencesAndTheirChecks) {
    Reports reports;
    const World w(QX_World::New(M_LRect{10, 20, 30, 40}, 16, 1)), other(QX_World::New(20, 20, 8, 1));
    EXPECT_EQ(w->origin_x, 10);
    EXPECT_EQ(w->origin_y, 20);
    EXPECT_TRUE((w->extent_hint == M_LRect{0, 0, 20, 20}));
    const World part(QX_World::NewReference(w.get(), M_Rect{3, 2, 9, 8}));  // top, left, bottom, right
    EXPECT_EQ(part->data, static_cast<char*>(w->data) + 3 * w->rowbytes + 2 * 8);
    EXPECT_TRUE(part->RefersTo(w.get()));
    EXPECT_FALSE(w->RefersTo(w.get()));
    EXPECT_FALSE(part->RefersTo(other.get()));
    EXPECT_EQ(code_of([&] { part->ReReference(other.get(), {0, 0, 1, 1}); }), 3);
    EXPECT_EQ(reports.last_text(), "can't change bit depth in ReReference");
    EXPECT_EQ(code_of([&] { part->ReReference(part.get(), {0, 0, 99, 1}); }), 3);
    EXPECT_EQ(reports.last_text(), "bad sub rect in ReReference");
    EXPECT_EQ(code_of([&] { part->ReReference(part.get(), {0, 0, 1, 1}); }), 3);
    EXPECT_EQ(reports.last_text(), "can't ReReference self");
    EXPECT_EQ(code_of([&] { w->CopyRect(other.get(), {0, 0, 1, 1}, 0, 0); }), 3);
    w->ShrinkToSubRect({1, 2, 5, 6});
    EXPECT_FALSE(w->IsReference());
    EXPECT_EQ(w->width, 4);
}

TEST(Fill, ColoursAreConvertedAndPaddingStays) {
    const World w8 = make(5, 4, 8), w16 = make(5, 4, 16);
    const QX_PixelFloat over{2.0f, 2.0f, -1.0f, 0.5f};
    EXPECT_EQ(QX_FillFloat(nullptr, &over, nullptr, w16.get()), 0);
    const std::uint16_t deep[] = {0, 32768, 0, 16384};
    for (int i = 0; i < 20; ++i) EXPECT_EQ(row<std::uint16_t>(*w16, 3)[i], deep[i % 4]);
    const M_LRect upside_down{9, 3, -2, 1};
    EXPECT_EQ(QX_FillFloat(nullptr, &over, &upside_down, w8.get()), 0);
    const std::uint8_t narrow[] = {254, 255, 0, 128};
    for (int i = 0; i < 80; ++i) {
        EXPECT_EQ(row<std::uint8_t>(*w8, i / 20)[i % 20], i / 20 == 1 || i / 20 == 2 ? narrow[i % 4] : 0) << i;
    }
    EXPECT_FALSE(w8->SubWorldSafetyGutterHasBeenOverWritten());
}

TEST(Fill, RunsAtAnyAddressAndLength) {
    alignas(16) std::uint8_t buffer[5200];
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (const int columns : {1, 2, 3, 4, 5, 17, 67, 300}) {
            std::memset(buffer, 9, sizeof buffer);
            const World w(QX_World::NewReference(buffer + 32 + offset, columns, 1, 32, columns * 16));
            w->Fill(QX_PixelFloat{1.0f, 0.25f, -2.0f, 8.0f}, nullptr);
            const float want[4] = {1.0f, 0.25f, -2.0f, 8.0f};
            for (int i = 0; i < columns; ++i)
                ASSERT_EQ(std::memcmp(buffer + 32 + offset + 16 * i, want, 16), 0) << offset << " " << columns;
            ASSERT_EQ(buffer[31 + offset], 9);
            ASSERT_EQ(buffer[32 + offset + 16u * static_cast<unsigned>(columns)], 9);
        }
    }
}

TEST(Fill, FaultsHaveTheirCodes) {
    BadWorlds bad;
    expect_refused({{[&] { return QX_Fill(nullptr, nullptr, nullptr, &bad.gpu); }, kOnGpu},
                    {[&] { return QX_Fill(nullptr, nullptr, nullptr, &bad.empty); }, kBadParameter}});
}

}  // namespace
