// SPDX-License-Identifier: Apache-2.0
// Operations on whole areas: what they write, and above all what they leave.
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

constexpr int kWidth = 7, kHeight = 5;
constexpr M_LRect kWhole{0, 0, kWidth, kHeight}, kAnywhere{INT_MIN, INT_MIN, INT_MAX, INT_MAX};
constexpr M_LRect kRects[] = {{2, 1, 5, 3},   {0, 1, 7, 3},   {6, 0, 7, 5}, {-4, 2, 3, 9}, {3, -8, 90, 1},
                              {-9, -9, 9, 9}, {0, 0, 7, 5},   {2, 2, 2, 4}, {5, 4, 2, 1},  {7, 0, 9, 5},
                              {0, 5, 7, 8},   {-5, 0, -1, 5}, {},           kAnywhere};

/// Runs body(canvas, rect) for every rectangle, depth and padding. A padding that aligns no row is among them.
template <class Body> void on_every_canvas(const Body& body) {
    for (const auto& [rect, depth, padding] : each(kRects, kDepths, std::array{12, 5, 0})) {
        SCOPED_TRACE(name(rect));
        Canvas canvas{depth, kWidth, kHeight, padding};
        body(canvas, rect);
    }
}

TEST(Clear, TakesWhatItShouldAndLeavesTheRest) {
    on_every_canvas([](Canvas& canvas, const M_LRect& rect) {
        const auto inside = [&](int x, int y, int) { return holds(rect, x, y) ? 0 : -1; };
        const bool full_rows = rect.left <= 0 && rect.right >= kWidth;
        if (canvas.padding != 0 || !full_rows || rect.top <= 0) {  // else it passes its bottom: below
            canvas.world->Clear(&rect);
            canvas.expect(inside);
        }
        const int depth = canvas.depth, padding = canvas.padding;
        Canvas filled{depth, kWidth, kHeight, padding}, alpha{depth, kWidth, kHeight, padding},
            rest{depth, kWidth, kHeight, padding};
        filled.world->Fill(QX_PixelFloat{}, &rect);  // has no order of edges
        filled.expect(inside);
        EXPECT_EQ(QX_ClearAlphaExceptRect(nullptr, &rect, alpha.world.get()), 0);
        alpha.expect([&](int x, int y, int byte) { return !holds(rect, x, y) && byte < alpha.pixel / 4 ? 0 : -1; });
        rest.world->ClearExceptRect(rect);
        rest.expect([&](int x, int y, int) { return holds(rect, x, y) ? -1 : 0; });
    });
}

TEST(Clear, OnATightlyPackedReferenceCountsTheWholeWorldFromItsTop) {
    for (const int depth : kDepths) {
        Canvas canvas{depth, kWidth, kHeight, 0};
        const M_LRect rect{-1, 2, kWidth, 3};
        canvas.world->Clear(&rect);
        auto wanted = Canvas::made(canvas.memory.size());
        std::fill_n(wanted.begin() + (kHeight + 2) * canvas.rowbytes, kHeight * canvas.rowbytes, std::uint8_t{});
        EXPECT_TRUE(canvas.memory == wanted) << depth;
    }
}

TEST(Clear, EndsAtTheBlocksEndInAnOwningWorld) {
    const M_LRect last_row{0, 4, 3, 5};
    const World owner(QX_World::New(3, 5, 32, 0));
    EXPECT_FALSE(owner->SubWorldSafetyGutterHasBeenOverWritten());
    owner->Clear(&last_row);  // would reach four rows past the block, which AddressSanitizer would see
    EXPECT_TRUE(owner->SubWorldSafetyGutterHasBeenOverWritten());

    const World narrowed(QX_World::New(4, 6, 16, 0));
    narrowed->Fill(QX_Pixel16{1, 2, 3, 4}, nullptr);
    const auto* pixels = static_cast<const QX_Pixel16*>(narrowed->data);
    narrowed->ShrinkToSubRect({0, 0, 4, 2});
    const M_LRect second_row{0, 1, 4, 2};
    narrowed->Clear(&second_row);
    for (int y = 0; y < 6; ++y) EXPECT_EQ(pixels[4 * y + 3].blue, y == 1 || y == 2 ? 0 : 4) << y;
}

TEST(ClearAlphaExceptRect, MissesPixelsOnlyWhereItWouldWrite) {
    Reports reports;
    // Columns: size, edges of the rectangle, code
    const Cases<int, int, int, int, int, int, int> cases = {
        {4, 3, 0, 0, 4, 3, 0}, {4, 3, -1, -1, 9, 9, 0}, {4, 3, 1, 1, 2, 2, 3}, {4, 3, 0, 0, 0, 0, 3},
        {0, 0, 0, 0, 0, 0, 0}, {-2, -2, 1, 1, 0, 0, 0}, {0, 3, 0, 0, 0, 0, 3}};
    for (const auto& [width, height, left, top, right, bottom, code] : cases) {
        const M_LRect rect{left, top, right, bottom};
        QX_LayerDef record{};
        record.width = width, record.height = height;
        reports.clear();
        EXPECT_EQ(QX_ClearAlphaExceptRect(nullptr, &rect, &record), code) << name(rect);
        EXPECT_EQ(reports.last_text(), code == 0 ? "" : kBadParameter);
    }
    EXPECT_EQ(QX_ClearAlphaExceptRect(nullptr, &kWhole, nullptr), 3);
    EXPECT_EQ(reports.all().back().site, 0x250000 + 13);
}

TEST(Fill, EdgesInAnyOrderAreClippedAndPaddingStays) {
    const auto deep = [](int c) { return static_cast<std::uint16_t>((c * 32768 + 128) / 255); };
    const auto real = [](int c) { return static_cast<float>(c * (1.0 / 255)); };
    const QX_Pixel8 colour{255, 129, 1, 0};
    const QX_Pixel16 as_deep{deep(255), deep(129), deep(1), 0};
    const QX_PixelFloat as_real{real(255), real(129), real(1), 0};
    const void* const wanted[] = {&colour, &as_deep, &as_real};
    on_every_canvas([&](Canvas& canvas, const M_LRect& rect) {
        const auto [left, right] = std::minmax({rect.left, rect.right});
        const auto [top, bottom] = std::minmax({rect.top, rect.bottom});
        const M_LRect turned[] = {rect, {rect.right, rect.top, rect.left, rect.bottom}};
        const M_LRect ordered{left, top, right, bottom};
        const auto* bytes = static_cast<const std::uint8_t*>(wanted[canvas.depth / 16]);
        canvas.world->extent_hint = {};  // plays no part
        for (const M_LRect& given : turned) {
            EXPECT_EQ(QX_Fill(nullptr, &colour, &given, canvas.world.get()), 0);
            canvas.expect([&](int x, int y, int byte) { return holds(ordered, x, y) ? bytes[byte] : -1; });
        }
    });
}

/// A colour and a picture of one float value meet; beyond full scale alpha keeps its low bits, and colour is held.
TEST(Fill, FloatColoursRoundAsRowsDo) {
    const Born born;
    const World from(QX_World::New(1, 1, 32, 0));
    for (const int depth : {8, 16}) {
        const World filled = make(1, 1, depth), copied = make(1, 1, depth);
        for (int i = 0; i <= 100000; ++i) {
            const float v = static_cast<float>(i) / 100000.0f;
            const QX_PixelFloat colour{v, v, 1 - v, v / 2};
            from->Fill(colour, nullptr);
            ASSERT_EQ(QX_FillFloat(nullptr, &colour, nullptr, filled.get()), 0);
            ASSERT_EQ(QX_CopyBits_Draft(nullptr, from.get(), copied.get(), nullptr, nullptr), 0);
            ASSERT_EQ(std::memcmp(filled->data, copied->data, filled->PixelSize()), 0) << v;
        }
        filled->Fill(QX_PixelFloat{2.0f, 2.0f, -1.0f, 0.5f}, nullptr);
        const double full = depth == 8 ? 255 : 32768, want[] = {depth == 8 ? 254.0 : 0, full, 0, std::ceil(full / 2)};
        for (int c = 0; c < 4; ++c) EXPECT_EQ(channel(*filled, 0, 0, c), want[c]);
    }
}

TEST(Fill, NullColourIsClearAndNegativeZeroIsNot) {
    for (const int depth : kDepths) {
        Canvas canvas{depth, kWidth, kHeight, 4};
        EXPECT_EQ(QX_Fill16(nullptr, nullptr, nullptr, canvas.world.get()), 0);
        canvas.expect([](int, int, int) { return 0; });
    }
    Canvas canvas{32, kWidth, kHeight, 0};
    const QX_PixelFloat negative{-0.0f, 0, 0, -0.0f};
    EXPECT_EQ(QX_FillFloat(nullptr, &negative, nullptr, canvas.world.get()), 0);
    canvas.expect([](int, int, int byte) { return byte == 3 || byte == 15 ? 0x80 : 0; });
}

TEST(Fill, LargeAreasOfEveryPeriod) {
    for (const QX_Pixel16 colour : {QX_Pixel16{1, 2, 3, 4}, {7, 7, 7, 7}, {}}) {
        const World w(QX_World::New(2901, 1500, 16, 0));  // past the caches, with rows of odd length
        w->Fill(colour, nullptr);
        for (const auto& [x, y] : places(w->width, w->height)) {
            ASSERT_EQ(pixel_of<QX_Pixel16>(*w, x, y), colour) << x << "," << y;
        }
        EXPECT_FALSE(w->SubWorldSafetyGutterHasBeenOverWritten());
    }
}

TEST(Alpha, FillsAndInvertsWhateverTheExtent) {
    for (const int depth : kDepths) {
        Canvas canvas{depth, kWidth, kHeight, 6};
        const double full = depth == 8 ? 255 : depth == 16 ? 32768 : 1;
        canvas.world->extent_hint = {0, 0, 1, 1};
        const double before = channel(*canvas.world, 3, 2, 0);
        canvas.world->InvertAlpha();
        const double inverted = depth == 32 ? double{1.0f - static_cast<float>(before)} : full - before;
        EXPECT_EQ(channel(*canvas.world, 3, 2, 0), inverted);
        canvas.world->InvertAlpha();
        if (depth != 32) canvas.expect([](int, int, int) { return -1; });  // twice gives all back
        canvas.world->FillAlpha();
        for (const auto& [x, y] : places(kWidth, kHeight)) EXPECT_EQ(channel(*canvas.world, x, y, 0), full);
        canvas.world->InvertAlpha();  // of full: zeroes, and colour and padding as they were
        canvas.expect([&](int, int, int byte) { return byte < canvas.pixel / 4 ? 0 : -1; });
    }
}

TEST(Swizzle, ReversesTheChannelsBitForBit) {
    for (const int depth : kDepths) {
        Canvas canvas{depth, 19, 3, 7};
        const auto before = canvas.memory;
        const int channel = canvas.pixel / 4;
        canvas.world->Swizzle();
        canvas.expect([&](int x, int y, int byte) {
            const int from = (3 - byte / channel) * channel + byte % channel;
            return before[static_cast<std::size_t>((3 + y) * canvas.rowbytes + x * canvas.pixel + from)];
        });
        QX_IteratePixels(canvas.world.get());
        EXPECT_TRUE(canvas.memory == before) << depth;
    }
    std::uint32_t signalling[4] = {0x7F800001, 0xFFA00002, 0x80000000, 1};
    World(QX_World::NewReference(signalling, 1, 1, 32, 16))->Swizzle();
    EXPECT_EQ(std::to_array(signalling), (std::array<std::uint32_t, 4>{1, 0x80000000, 0xFFA00002, 0x7F800001}));
}

}  // namespace
