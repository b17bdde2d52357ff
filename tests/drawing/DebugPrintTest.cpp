// SPDX-License-Identifier: Apache-2.0
#include "QX/drawing/QX_DebugFont.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

/// Cells of a world that text leaves something in, by left top corner, with what is covered there.
template <class Pixel> std::string covered(const QX_World& world) {
    std::string all;
    for (const auto& [x, y] : places(world.width, world.height)) {
        all += pixel_of<Pixel>(world, x, y).alpha != 0 ? '#' : '.';
        if (x + 1 == world.width) all += '\n';
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
    for (const auto& [x, y] : places(8, 12)) {
        const bool inside = x >= 1 && x < 7 && y >= 1 && y <= 10;  // the first byte is the bottom row
        const bool set = inside && (debug_font.glyph[int{'4'}][10 - y] & 128 >> (x - 1)) != 0;
        EXPECT_EQ(pixel_of<QX_Pixel16>(*world, x, y), set ? (QX_Pixel16{32768, 16384, 0, 0}) : QX_Pixel16{});
    }
    EXPECT_NE(covered<QX_Pixel16>(*world).find('#'), std::string::npos);
}

TEST(DebugPrint, MovesByCellsTabsAndLines) {
    EXPECT_EQ(printed(60, 40, 2, 3, "ab"), printed(60, 40, 2, 3, "a\rb"));
    const std::string plain = printed(60, 40, 8, 3, "b"), empty = printed(60, 40, 0, 0, "");
    EXPECT_EQ(printed(60, 40, 2, 3, " b"), plain);
    EXPECT_EQ(printed(60, 40, 2, 3, "\351\001b"), printed(60, 40, 14, 3, "b")) << "blanks outside ASCII";
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
    EXPECT_EQ(pixel_of<QX_Pixel8>(*world, 2, 5), (QX_Pixel8{255, 51, 204, 0}));
    Reports reports;
    const World deep(QX_World::New(8, 12, 32, 1));
    EXPECT_EQ(code_of([&] { QX_DebugPrint(deep.get(), 0, 0, {1, 1, 1, 1}, "x"); }), 3);
    EXPECT_EQ(reports.all().size(), 1u);
}

}  // namespace
}  // namespace qx::test
