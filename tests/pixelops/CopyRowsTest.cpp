// SPDX-License-Identifier: Apache-2.0
// Copies between depths: every pair clipped, then rows one by one: every value, the noise that is drawn and in which
// order, overlaps and fields.
#include "platform/M_Tables.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

void convert(QX_World& to, const QX_World& from, bool dither = false) {
    to.CopyRectPossiblyDifferentBitdepth(&from, {0, 0, from.width, from.height}, dither, 0, 0, nullptr);
}

TEST(Copy, AllPairsClipped) {
    const M_LRect rects[] = {{0, 0, 23, 9}, {-3, 2, 11, 40}, {5, -4, 90, 6}, {30, 30, 40, 40}, {9, 9, 3, 3}};
    const M_LPoint corners[] = {{0, 0}, {-4, 3}, {15, 5}, {100, 0}};
    for (const auto& [from, to, r, p] : each(kDepths, kDepths, rects, corners)) {
        SCOPED_TRACE(testing::Message() << from << "->" << to << " " << name(r) << " at " << p.x << "," << p.y);
        const World src = make(23, 9, from), dst = made(19, 12, to, 5), before = made(19, 12, to, 5);
        convert(*src, *made(23, 9, from == 32 && to != 32 ? 16 : from, 11));  // floats within full scale
        dst->CopyRectPossiblyDifferentBitdepth(src.get(), r, false, p.x, p.y, nullptr);
        for (const auto& [i, y] : places(19 * 4, 12)) {
            const int x = i / 4, c = i % 4, sx = x - p.x + r.left, sy = y - p.y + r.top;
            const bool inside = holds(r, sx, sy) && holds({0, 0, 23, 9}, sx, sy);
            const double want = inside ? converted(channel(*src, sx, sy, c), from, to) : channel(*before, x, y, c);
            ASSERT_EQ(channel(*dst, x, y, c), want) << x << "," << y << " channel " << c;
        }
    }
}

TEST(Copy, EveryIntegerGoesToTheNearestAndBack) {
    constexpr int columns = 16385;  // two rows hold the values 0..32768, and one more
    for (const auto& [from, to] : each(std::array{8, 16}, kDepths)) {
        const World src = make(columns, 2, from), dst = make(columns, 2, to), back = make(columns, 2, from);
        const auto value = [](int i, int y) { return (y * columns + i / 4 + i % 4 * 5000) % 32769; };
        if (from == 8) set_channels<std::uint8_t>(*src, value);
        if (from == 16) set_channels<std::uint16_t>(*src, value);
        convert(*dst, *src);
        convert(*back, *dst);
        for (const auto& [i, y] : places(4 * columns, 2)) {
            const double v = channel(*src, i / 4, y, i % 4);
            ASSERT_EQ(channel(*dst, i / 4, y, i % 4), converted(v, from, to)) << v << " to depth " << to;
            ASSERT_TRUE(to < from || channel(*back, i / 4, y, i % 4) == v) << v << " from depth " << to;
        }
    }
}

TEST(Copy, FloatTo8RoundsByAlignment) {
    alignas(16)
        QX_PixelFloat pixels[2] = {{0.5f / 255, 1.5f / 255, 2.5f / 255, NAN}, {2.0f, -1.0f, 3e9f, 254.5f / 255}};
    alignas(16) std::byte moved[36];
    std::memcpy(moved + 4, pixels, sizeof pixels);
    QX_Pixel8 out[2];
    const World dst(QX_World::NewReference(out, 2, 1, 8, 8));
    const auto expect = [&](void* data, const QX_Pixel8& first, const QX_Pixel8& second) {
        const World src(QX_World::NewReference(data, 2, 1, 32, 32));
        convert(*dst, *src);
        EXPECT_EQ(out[0], first);
        EXPECT_EQ(out[1], second);
    };
    expect(pixels, {0, 2, 2, 0}, {255, 0, 255, 254});                  // nearest even, all clamped
    expect(moved + 4, {1, 2, 3, 0}, {254, 0, 255, 255});               // half up, alpha 510 keeps its low bits
    standalone::SetProcessorLevel(standalone::ProcessorLevel::plain);  // without vectors every row is of that kind
    expect(pixels, {1, 2, 3, 0}, {254, 0, 255, 255});
    standalone::SetProcessorLevel(standalone::DetectedProcessorLevel());
}

TEST(Copy, FloatTo16KeepsLowBitsOfAlphaAndClampsColour) {
    const Cases<float, int, int> cases = {
        // from, alpha, colour
        {1.5f, 49152, 32768}, {2.0f, 0, 32768},     {-0.25f, 65536 - 8191, 0},  // -8192 + 0.5 is truncated towards zero
        {-1e-6f, 0, 0},       {1e30f, 0, 32768},    {-1e30f, 0, 0},
        {NAN, 0, 0},          {INFINITY, 0, 32768}, {0.5f, 16384, 16384},
        {1.0f / 65536, 1, 1}};
    const World real = make(1, 1, 32), deep = make(1, 1, 16);
    for (const auto& [from, alpha, colour] : cases) {
        SCOPED_TRACE(from);
        set_channels<float>(*real, [v = from](int, int) { return v; });
        convert(*deep, *real, true);  // no noise in this pair
        expect_channels<std::uint16_t>(*deep, [a = alpha, c = colour](int i, int) { return i == 0 ? a : c; });
    }
}

/// Rows are counted from the first one that is copied.
TEST(Copy, PollsEvery64RowsAndThrowsTheAnswer) {
    const World src = make(2, 200, 8), dst = make(2, 200, 16);
    src->Fill(QX_Pixel16{32768, 0, 0, 0}, nullptr);
    for (const int top : {0, 10}) {
        Polls polls{.stop_at = 1};
        QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
        const auto copy = [&] {
            dst->CopyRectPossiblyDifferentBitdepth(src.get(), {0, 0, 2, 200}, false, 0, top, &info);
        };
        EXPECT_EQ(code_of(copy), 517);
        EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{63, 200 - top}, {127, 200 - top}}));
        EXPECT_EQ(channel(*dst, 0, top + 127, 0), 32768);
        EXPECT_EQ(channel(*dst, 0, top + 128, 0), 0);
    }
}

/// The host's noise, walked through as the library should.
class Noise {
public:
    Noise() {
        static const int code = qx::start_noise();
        EXPECT_EQ(code, 0);
        convert(*make(1, 1, 8), *make(1, 1, 16), true);  // moves the cursor
        QX_ResetDitherRandomIndex();
        RND_GetPrimeSizedTable(&table_, &count_);
    }
    std::uint32_t next() { return table_[cursor_++ % count_]; }

private:
    const std::uint32_t* table_ = nullptr;
    std::int32_t count_ = 0;
    std::int32_t cursor_ = 0;
};

TEST(Dither, From16BitsDrawsInMemoryOrderThroughTheWholeTable) {
    const World deep = make(20011, 3, 16), narrow = make(20011, 3, 8);
    set_channels<std::uint16_t>(*deep, [](int i, int y) { return (i * 7919 + y) % 32769; });
    for (const auto level : kLevels) {
        const Born born(1, level);
        Noise noise;
        convert(*narrow, *deep, true);
        expect_channels<std::uint8_t>(*narrow, [&](int i, int y) {
            return (row<std::uint16_t>(*deep, y)[i] * 255u + noise.next() % 32768) / 32768;
        });
    }
}

/// One channel with its noise: half a step to either side, clamped.
int dithered(float c, std::uint32_t noise) {
    const float noisy = (c + static_cast<float>(noise) * 9.094947e-13f) - 0.001953125f;
    return static_cast<int>(std::fmin(std::fmax(noisy * 255.0f, 0.0f), 255.0f) + 0.5f);
}

TEST(Dither, FromFloatDrawsAlphaRedBlueGreen) {
    const World real = make(3011, 2, 32), narrow = make(3011, 2, 8);
    set_channels<float>(*real, [](int i, int) {
        return i < 80 ? (i / 4 % 2 == 0 ? 1e9f : -1e9f) : static_cast<float>(i % 701) / 600.0f - 0.05f;
    });
    for (const auto level : kLevels) {
        const Born born(1, level);
        Noise noise;
        convert(*narrow, *real, true);
        for (const auto& [x, y] : places(3011, 2)) {
            for (const int i : {4 * x, 4 * x + 1, 4 * x + 3, 4 * x + 2}) {
                ASSERT_EQ(row<std::uint8_t>(*narrow, y)[i], dithered(row<float>(*real, y)[i], noise.next()))
                    << "row " << y << " channel " << i << " at level " << static_cast<int>(level);
            }
        }
    }
}

TEST(Fields, OneIsEvenTwoIsOddOthersAllAndSkippedRowsDrawNoNoise) {
    // Tightly packed, and with padding.
    for (const auto& [depth, width, field] : each(std::array{8, 16}, std::array{8, 7}, std::array{-1, 0, 1, 2, 3})) {
        const World from = made(width, 5, depth, 1), to = make(width, 5, 8);
        Noise noise;
        to->CopyRectPossiblyDifferentBitdepthWithField(from.get(), {0, 0, width, 5}, field);
        expect_channels<std::uint8_t>(*to, [&, depth = depth, field = field](int i, int y) {
            const auto v = static_cast<std::uint32_t>(channel(*from, i / 4, y, i % 4));
            if ((field == 1 || field == 2) && y % 2 != field - 1) return 0u;
            return depth == 8 ? v : (v * 255 + (noise.next() & 0x7FFF)) >> 15;
        });
    }
}

TEST(Overlap, WithinARowNothingIsLostAndRowsGoFromTheTop) {
    const std::pair<M_LRect, M_LPoint> cases[] = {
        {{0, 0, 9, 3}, {2, 0}}, {{3, 0, 9, 3}, {0, 0}}, {{0, 0, 8, 2}, {1, 1}}, {{0, 1, 9, 3}, {0, 0}}};
    for (const auto& c : cases) {
        const auto& [rect, to] = c;
        const World w = make(9, 3, 32);  // of pixels that name their place
        set_channels<float>(*w, [](int i, int y) { return 100 * y + i / 4; });
        w->CopyRect(w.get(), rect, to.x, to.y);
        const int dx = to.x - rect.left, dy = to.y - rect.top;
        expect_channels<float>(*w, [&](int i, int y) {
            int from_x = i / 4, from_y = y;
            // Towards the bottom a row is taken that has been written before: it comes from further up.
            while (holds(c.first, from_x - dx, from_y - dy)) {
                from_x -= dx, from_y -= dy;
                if (dy <= 0) break;
            }
            return static_cast<float>(100 * from_y + from_x);
        });
    }
}

TEST(Overlap, OneMoveOfWholeWorldsIsSafe) {
    // Columns: size, and how far the copy lies behind
    const Cases<int, int, int> cases = {{6, 5, 3}, {6, 5, -3}, {0, 0, 2}, {-1, -4, 2},
                                        {0, 7, 2}, {-1, 3, 2}, {4, -1, 2}};
    for (const auto& [width, height, shift] : cases) {
        std::vector<std::uint32_t> memory(40);
        for (std::uint32_t i = 0; i < 40; ++i) memory[i] = i;
        const World from(QX_World::NewReference(memory.data() + 5, width, height, 8, 4 * width));
        const World to(QX_World::NewReference(memory.data() + 5 + shift, width, height, 8, 4 * width));
        to->CopyWorld(from.get());
        const int first = 5 + shift, last = first + std::max(width, 0) * std::max(height, 0);
        for (int i = 0; i < 40; ++i) {
            const int want = i >= first && i < last ? i - shift : i;
            EXPECT_EQ(memory[static_cast<std::size_t>(i)], static_cast<std::uint32_t>(want)) << i;
        }
    }
}

/// The cursor of the noise is shared by all threads; what they draw need not be exact, but is noise.
TEST(DitherThreads, ShareTheNoise) {
    { const Noise started; }
    const World deep = make(64, 40, 16);
    deep->Fill(QX_Pixel16{16001, 16001, 16001, 16001}, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const World narrow = make(64, 40, 8);
            for (int n = 0; n < 20; ++n) convert(*narrow, *deep, true);
            for (const auto& [c, y] : places(256, 40)) ASSERT_NEAR(row<std::uint8_t>(*narrow, y)[c], 124.5, 0.5);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

/// Worlds that are alike and have padding: only pixels are copied.
TEST(Copy, PaddingOfEqualWorldsStays) {
    Canvas from{8, 13, 5, 8}, to{8, 13, 5, 8};
    for (std::size_t i = 0; i < from.memory.size(); ++i) from.memory[i] = static_cast<std::uint8_t>(i * 37 + 5);
    to.world->CopyWorld(from.world.get());
    to.expect([&](int x, int y, int byte) { return from.first()[y * from.rowbytes + 4 * x + byte]; });
}

}  // namespace
