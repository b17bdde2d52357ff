// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(World, SizesRowbytesAndGutter) {
    // Columns: depth, width, rowbytes, whether there is a gutter
    const Cases<int, int, int, bool> cases = {
        {8, 5, 32, true}, {16, 3, 32, true}, {32, 3, 48, true}, {32, 1, 16, false}, {16, 1, 16, true}};
    for (const auto& [depth, width, rowbytes, gutter] : cases) {
        const World w = make(width, 4, depth);
        EXPECT_TRUE(w->rowbytes == rowbytes && w->Depth() == depth);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(w->data) % 16, 0u);
        EXPECT_FALSE(w->SubWorldSafetyGutterHasBeenOverWritten());
        if (gutter) static_cast<char*>(w->data)[3 * rowbytes + width * depth / 2] = 1;
        EXPECT_EQ(w->SubWorldSafetyGutterHasBeenOverWritten(), gutter);
    }
}

TEST(World, InvalidSizesAreReported) {
    const auto sized = [](int w, int h) { return thrown([=] { World(QX_World::New(w, h, 8, 0)); }); };
    const auto over = [](const M_LRect& r) { return thrown([=] { World(QX_World::New(r, 8, 0)); }); };
    const auto text = [](const std::string& size) { return "invalid image buffer size (" + size + ")."; };
    expect_refused({{sized(0, 5), text("0x5"), 516},
                    {sized(5, 0), text("5x0"), 516},
                    {sized(30001, 1), text("30001x1"), 516},
                    {sized(1, 30001), text("1x30001"), 516},
                    {sized(-1, 1), text("-1x1"), 516},
                    {over({10, 0, 0, 5}), text("-10x5"), 516},
                    {over({INT32_MIN, 0, INT32_MAX, 5}), text("2147483647x5"), 516}});
    EXPECT_EQ(sized(30000, 1)(), 0);
    const Reports quiet;
    EXPECT_EQ(code_of([] { World(QX_World::New(5, 5, 24, 0)); }), 3);
}

TEST(World, ReferencesAndTheirChecks) {
    const World w(QX_World::New(M_LRect{10, 20, 30, 40}, 16, 1)), other(QX_World::New(20, 20, 8, 1));
    EXPECT_TRUE(w->origin_x == 10 && w->origin_y == 20 && w->extent_hint == (M_LRect{0, 0, 20, 20}));
    const World part(QX_World::NewReference(w.get(), M_Rect{3, 2, 9, 8}));  // top, left, bottom, right
    EXPECT_EQ(part->data, static_cast<char*>(w->data) + 3 * w->rowbytes + 2 * 8);
    EXPECT_TRUE(part->RefersTo(w.get()));
    EXPECT_FALSE(w->RefersTo(w.get()));
    EXPECT_FALSE(part->RefersTo(other.get()));
    const auto refer = [&](const World& to, int width) {
        return thrown([&part, &to, width] { part->ReReference(to.get(), {0, 0, width, 1}); });
    };
    expect_refused({{refer(other, 1), "can't change bit depth in ReReference"},
                    {refer(part, 99), "bad sub rect in ReReference"},
                    {refer(part, 1), "can't ReReference self"},
                    {thrown([&] {
                         w->CopyRect(other.get(), {0, 0, 1, 1}, 0, 0);
                     }),
                     "Src and dest bitdepths are different in QX_World::CopyRect"}});
    w->ShrinkToSubRect({1, 2, 5, 6});
    EXPECT_FALSE(w->IsReference());
    EXPECT_EQ(w->width, 4);
}

TEST(Fill, RunsAtAnyAddressAndLength) {
    alignas(16) std::uint8_t buffer[5200];
    const QX_PixelFloat want{1.0f, 0.25f, -2.0f, 8.0f};
    for (const auto& [offset, c] : places(16, 8)) {
        const int columns = std::array{1, 2, 3, 4, 5, 17, 67, 300}[static_cast<std::size_t>(c)];
        std::memset(buffer, 9, sizeof buffer);
        std::uint8_t* const first = buffer + 32 + offset;
        const World w(QX_World::NewReference(first, columns, 1, 32, columns * 16));
        w->Fill(want, nullptr);
        for (int i = 0; i < columns; ++i) {
            ASSERT_EQ(std::memcmp(first + 16 * i, &want, 16), 0) << offset << " " << columns;
        }
        ASSERT_TRUE(first[-1] == 9 && first[16 * columns] == 9);
    }
}

TEST(Fill, FaultsHaveTheirCodes) {
    BadWorlds bad;
    expect_refused({{[&] { return QX_Fill(nullptr, nullptr, nullptr, &bad.gpu); }, kOnGpu},
                    {[&] { return QX_Fill(nullptr, nullptr, nullptr, &bad.empty); }, kBadParameter}});
}

/// A reference lies in the world whose rows its first pixel lies in.
TEST(World, RefersToRowsOfItsOwnOnly) {
    const World whole = make(8, 4, 8);
    const auto rows = [&](int top, int height) {
        return World(QX_World::NewReference(row<char>(*whole, top), 8, height, 8, whole->rowbytes));
    };
    const World middle = rows(1, 2);
    for (int y = 0; y < 4; ++y) EXPECT_EQ(rows(y, 1)->RefersTo(middle.get()), y == 1 || y == 2) << "row " << y;
    EXPECT_FALSE(rows(1, 3)->RefersTo(middle.get())) << "taller than the world";
}

/// What of the hint lies in a part is the part's, in its own coordinates.
TEST(World, PartsTakeTheirPartOfTheHint) {
    const World w = make(20, 20, 8);
    w->extent_hint = {3, 4, 9, 12};
    const World part(QX_World::NewReference(w.get(), M_LRect{2, 3, 8, 9}));
    EXPECT_EQ(part->extent_hint, (M_LRect{1, 1, 6, 6}));
    w->ShrinkToSubRect({4, 5, 20, 20});
    EXPECT_EQ(w->extent_hint, (M_LRect{0, 0, 5, 7}));
}

}  // namespace
