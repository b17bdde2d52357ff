// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "QX/drawing/QX_DebugFont.h"
#include "QX/drawing/QX_DebugPrint.h"
#include "tests/support/TestHost.h"
#include "tests/world/WorldSupport.h"

namespace qx::test {
namespace {

/// Cells of a world that text leaves something in, by left top corner, with what is covered there.
template <class Pixel> std::string covered(const QX_World& world) {
    std::string all;
    for (int y = 0; y < world.height; ++y) {
        for (int x = 0; x < world.width; ++x) {
            all += static_cast<const QX_WorldX<Pixel>&>(world).Row(y)[x].alpha != 0 ? '#' : '.';
        }
        all += '\n';
    }
    return all;
}

std::string printed(int width, int height, int x, int y, const char* text) {
    const World world(QX_World::New(width, height, 8, 1));
    QX_DebugPrint(world.get(), x, y, {1, 1, 1, 1}, "%s", text);
    return covered<QX_Pixel8>(*world);
}

TEST(DebugPrint, DrawsTheTable) {
    const World world(QX_World::New(8, 12, 16, 1));
    QX_DebugPrint(world.get(), 1, 0, {1, 0.5f, 0, 0}, "%c%d", '\r', 4);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool inside = x >= 1 && x < 7 && y >= 1 && y <= 10;  // the first byte is the bottom row
            const bool set = inside && (debug_font.glyph[int{'4'}][10 - y] & 128 >> (x - 1)) != 0;
            const QX_Pixel16& p = static_cast<QX_WorldX<QX_Pixel16>&>(*world).Row(y)[x];
            EXPECT_EQ(p.alpha, set ? 32768 : 0) << x << "," << y;
            EXPECT_EQ(p.red, set ? 16384 : 0);
        }
    }
    EXPECT_NE(covered<QX_Pixel16>(*world).find('#'), std::string::npos);
}

TEST(DebugPrint, MovesByCellsTabsAndLines) {
    EXPECT_EQ(printed(60, 40, 2, 3, "ab"), printed(60, 40, 2, 3, "a\rb"));
    const std::string plain = printed(60, 40, 8, 3, "b"), empty = printed(60, 40, 0, 0, "");
    EXPECT_EQ(printed(60, 40, 2, 3, " b"), plain);
    EXPECT_EQ(printed(60, 40, 2, 3,
                      "\xE9\x01"
                      "b"),
              printed(60, 40, 14, 3, "b"))
        << "blanks outside ASCII";
    EXPECT_EQ(printed(60, 40, 6, 3, "\tb"), printed(60, 40, 26, 3, "b"));
    EXPECT_EQ(printed(60, 40, 8, 3, " \nb"), printed(60, 40, 8, 13, "b"));
    EXPECT_EQ(printed(14, 12, 8, 0, "b"), printed(14, 12, 0, 0, "")) << "x + 6 reaches the width";
    EXPECT_NE(printed(15, 12, 8, 0, "b"), printed(15, 12, 0, 0, ""));
    EXPECT_EQ(printed(15, 10, 0, 0, "b"), printed(15, 10, 0, 0, ""));
    EXPECT_EQ(printed(30, 12, -6, 0, "bc"), printed(30, 12, 0, 0, "c")) << "x advances anyway";
    EXPECT_EQ(printed(60, 40, 2, -1, "b"), empty);
}

TEST(DebugPrint, EveryVisibleCharacterIsItsOwn) {
    std::map<std::string, char> seen;
    for (char c = ' '; c < 127; ++c) {
        const char text[] = {c, 0};
        EXPECT_TRUE(seen.emplace(printed(8, 12, 0, 0, text), c).second) << c;
    }
}

TEST(DebugPrint, LaysTranslucentColourOver) {
    const World world(QX_World::New(8, 12, 8, 0));
    world->Fill(QX_Pixel16{32768, 0, 32768, 0}, nullptr);
    QX_DebugPrint(world.get(), 0, 0, {0.2f, 1, 0, 0}, "-");
    const QX_Pixel8 dash = static_cast<QX_WorldX<QX_Pixel8>&>(*world).Row(5)[2];
    EXPECT_EQ(dash.alpha, 255);
    EXPECT_EQ(dash.red, 51);
    EXPECT_EQ(dash.green, 204);
    Reports reports;
    const World deep(QX_World::New(8, 12, 32, 1));
    EXPECT_EQ(code_of([&] { QX_DebugPrint(deep.get(), 0, 0, {1, 1, 1, 1}, "x"); }), 3);
    EXPECT_EQ(reports.all().size(), 1u);
}

}  // namespace
}  // namespace qx::test
