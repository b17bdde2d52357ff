// SPDX-License-Identifier: Apache-2.0
// Rows of a copy one by one: every value, the noise that is drawn and in which order, overlaps and fields.
#include <cmath>
#include <cstring>

#include "QX/indep/QX_Noise.h"
#include "platform/M_Tables.h"
#include "tests/indep/WorldSupport.h"
#include "tests/support/TestHost.h"

namespace {

using qx::test::World;

World make(int width, int height, int depth) {
    return World(QX_World::New(width, height, static_cast<short>(depth), 1));
}

template <class Channel> Channel* row(const QX_World& w, int y) {
    return reinterpret_cast<Channel*>(static_cast<std::byte*>(w.data) + std::ptrdiff_t{y} * w.rowbytes);
}

void convert(QX_World& to, const QX_World& from, bool dither = false) {
    to.CopyRectPossiblyDifferentBitdepth(&from, {0, 0, from.width, from.height}, dither, 0, 0, nullptr);
}

constexpr int kColumns = 16385;  // two rows hold the values 0..32768, and one more

TEST(CopyRows, All16BitValuesGoToTheNearest8BitOneAndBackFromFloat) {
    const World deep = make(kColumns, 2, 16), narrow = make(kColumns, 2, 8), real = make(kColumns, 2, 32),
                back = make(kColumns, 2, 16);
    for (int i = 0; i < 2 * kColumns; ++i) {
        for (int c = 0; c < 4; ++c) {
            row<std::uint16_t>(*deep, i / kColumns)[4 * (i % kColumns) + c] =
                static_cast<std::uint16_t>((i + c * 5000) % 32769);
        }
    }
    convert(*narrow, *deep);
    convert(*real, *deep);
    convert(*back, *real);
    for (int y = 0; y < 2; ++y) {
        for (int i = 0; i < 4 * kColumns; ++i) {
            const int v = row<std::uint16_t>(*deep, y)[i];
            const int error = row<std::uint8_t>(*narrow, y)[i] * 32768 - v * 255;  // at most half a step; halves go up
            ASSERT_TRUE(error > -16384 && error <= 16384) << v;
            ASSERT_EQ(double{row<float>(*real, y)[i]}, v / 32768.0);
            ASSERT_EQ(row<std::uint16_t>(*back, y)[i], v);
        }
    }
}

TEST(CopyRows, FloatTo16KeepsLowBitsOfAlphaAndClampsColour) {
    const struct {
        float from;
        int alpha, colour;
    } cases[] = {
        {1.5f, 49152, 32768}, {2.0f, 0, 32768},     {-0.25f, 65536 - 8191, 0},  // -8192 + 0.5 is truncated towards zero
        {-1e-6f, 0, 0},       {1e30f, 0, 32768},    {-1e30f, 0, 0},
        {NAN, 0, 0},          {INFINITY, 0, 32768}, {0.5f, 16384, 16384},
        {1.0f / 65536, 1, 1}};
    const World real = make(1, 1, 32), deep = make(1, 1, 16);
    for (const auto& c : cases) {
        for (int i = 0; i < 4; ++i) row<float>(*real, 0)[i] = c.from;
        convert(*deep, *real, true);  // no noise in this pair
        const auto* got = row<std::uint16_t>(*deep, 0);
        EXPECT_EQ(got[0], c.alpha) << c.from;
        for (int i = 1; i < 4; ++i) EXPECT_EQ(got[i], c.colour) << c.from;
    }
}

TEST(CopyRows, RowsFrom8BitsTakeTheFloatFactor) {
    const World narrow = make(256, 1, 8), real = make(256, 1, 32);
    for (int i = 0; i < 1024; ++i) row<std::uint8_t>(*narrow, 0)[i] = static_cast<std::uint8_t>(i / 4);
    convert(*real, *narrow);
    int differ = 0;
    for (int i = 0; i < 1024; ++i) {
        const float v = static_cast<float>(i / 4);
        ASSERT_EQ(row<float>(*real, 0)[i], v * 0.003921569f) << i / 4;
        differ += row<float>(*real, 0)[i] != static_cast<float>(double{v} * (1.0 / 255));
    }
    EXPECT_GT(differ, 0) << "a colour argument's factor gives other bits";
}

TEST(CopyRows, WithoutTheVectorUnitEveryFloatRowTruncates) {
    const World real = make(2, 1, 32), narrow = make(2, 1, 8);
    const float pixels[8] = {2.0f, 2.5f / 255, 0.5f / 255, -1.0f, 256.5f / 255, 1.5f / 255, 9.0f, 254.5f / 255};
    std::memcpy(real->data, pixels, sizeof pixels);
    const auto expect = [&](const std::uint8_t(&want)[8]) {
        convert(*narrow, *real);
        for (int i = 0; i < 8; ++i) EXPECT_EQ(row<std::uint8_t>(*narrow, 0)[i], want[i]) << i;
    };
    standalone::SetProcessorLevel(standalone::ProcessorLevel::plain);
    expect({254, 3, 1, 0, 1, 2, 255, 255});
    standalone::SetProcessorLevel(standalone::DetectedProcessorLevel());
    expect({255, 2, 0, 0, 255, 2, 255, 254});
}

/// The host's noise, walked through as the library should.
class Noise {
public:
    Noise() {
        EXPECT_EQ(qx::start_noise(), 0);
        RND_GetPrimeSizedTable(&table_, &count_);
    }
    std::uint32_t next() { return table_[cursor_++ % count_]; }

private:
    const std::uint32_t* table_ = nullptr;
    std::int32_t count_ = 0;
    std::int32_t cursor_ = 0;
};

TEST(Dither, From16BitsDrawsInMemoryOrderThroughTheWholeTable) {
    const World deep = make(20000, 3, 16), narrow = make(20000, 3, 8);
    for (int y = 0; y < 3; ++y) {
        for (int i = 0; i < 80000; ++i) {
            row<std::uint16_t>(*deep, y)[i] = static_cast<std::uint16_t>((i * 7919 + y) % 32769);
        }
    }
    Noise noise;
    convert(*narrow, *deep, true);
    for (int y = 0; y < 3; ++y) {
        for (int i = 0; i < 80000; ++i) {
            const std::uint32_t v = row<std::uint16_t>(*deep, y)[i];
            ASSERT_EQ(row<std::uint8_t>(*narrow, y)[i], (v * 255 + noise.next() % 32768) / 32768) << y << " " << i;
        }
    }
}

/// One channel with its noise: half a step to either side, clamped.
int dithered(float c, std::uint32_t noise) {
    const float noisy = (c + static_cast<float>(noise) * 9.094947e-13f) - 0.001953125f;
    return static_cast<int>(std::fmin(std::fmax(noisy * 255.0f, 0.0f), 255.0f) + 0.5f);
}

TEST(Dither, FromFloatDrawsAlphaRedBlueGreen) {
    const World real = make(3000, 2, 32), narrow = make(3000, 2, 8);
    for (int y = 0; y < 2; ++y) {
        for (int i = 0; i < 12000; ++i) row<float>(*real, y)[i] = static_cast<float>(i % 701) / 600.0f - 0.05f;
    }
    Noise noise;
    convert(*narrow, *real, true);
    for (int y = 0; y < 2; ++y) {
        for (int i = 0; i < 12000; i += 4) {
            for (const int c : {0, 1, 3, 2}) {
                ASSERT_EQ(row<std::uint8_t>(*narrow, y)[i + c], dithered(row<float>(*real, y)[i + c], noise.next()))
                    << "row " << y << " channel " << i + c;
            }
        }
    }
}

TEST(Dither, ASkippedRowDrawsNone) {
    for (const int field : {1, 2}) {
        const World deep = make(5, 6, 16), narrow = make(5, 6, 8);
        deep->Fill(QX_Pixel16{16001, 8000, 24001, 31}, nullptr);
        Noise noise;
        narrow->CopyRectPossiblyDifferentBitdepthWithField(deep.get(), {0, 0, 5, 6}, field);
        for (int y = 0; y < 6; ++y) {
            for (int i = 0; i < 20; ++i) {
                const bool copied = y % 2 == field - 1;
                const std::uint32_t v = row<std::uint16_t>(*deep, y)[i];
                ASSERT_EQ(row<std::uint8_t>(*narrow, y)[i], copied ? (v * 255 + (noise.next() & 0x7FFF)) >> 15 : 0);
            }
        }
    }
}

TEST(Dither, EndsOfTheRangeStayTheEnds) {
    Noise noise;
    const World deep = make(5000, 1, 16), real = make(5000, 1, 32), narrow = make(5000, 1, 8);
    for (const bool high : {false, true}) {
        deep->Fill(QX_Pixel16{32768, 0, 0, 32768}, nullptr);
        real->Fill(high ? QX_PixelFloat{2.0f, -1.0f, -3.0f, 1.5f} : QX_PixelFloat{1.01f, -0.01f, -1e9f, 1e9f}, nullptr);
        for (const QX_World* source : {deep.get(), real.get()}) {
            convert(*narrow, *source, true);
            for (int i = 0; i < 20000; ++i) {
                ASSERT_EQ(row<std::uint8_t>(*narrow, 0)[i], i % 4 == 0 || i % 4 == 3 ? 255 : 0) << i;
            }
        }
    }
}

TEST(Fields, OneIsEvenTwoIsOddOthersAll) {
    for (const int width : {8, 7}) {  // tightly packed, and with padding
        for (const int field : {-1, 0, 1, 2, 3}) {
            const World from = make(width, 5, 8), to = make(width, 5, 8);
            from->FillAlpha();
            to->CopyRectPossiblyDifferentBitdepthWithField(from.get(), {0, 0, width, 5}, field);
            for (int y = 0; y < 5; ++y) {
                const bool copied = field == 1 ? y % 2 == 0 : field == 2 ? y % 2 == 1 : true;
                EXPECT_EQ(row<std::uint8_t>(*to, y)[4 * width - 4], copied ? 255 : 0) << field << " row " << y;
            }
        }
    }
}

/// Rows of pixels that name their place.
World numbered(int width, int height) {
    World w = make(width, height, 32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) row<float>(*w, y)[4 * x] = static_cast<float>(100 * y + x);
    }
    return w;
}

TEST(Overlap, WithinARowNothingIsLostAndRowsGoFromTheTop) {
    const struct {
        M_LRect rect;
        int x, y;
    } cases[] = {{{0, 0, 9, 3}, 2, 0}, {{3, 0, 9, 3}, 0, 0}, {{0, 0, 8, 2}, 1, 1}, {{0, 1, 9, 3}, 0, 0}};
    for (const auto& c : cases) {
        const World w = numbered(9, 3);
        w->CopyRect(w.get(), c.rect, c.x, c.y);
        const int dx = c.x - c.rect.left, dy = c.y - c.rect.top;
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 9; ++x) {
                int from_x = x, from_y = y;
                // Towards the bottom a row is taken that has been written before: it comes from further up.
                while (qx::test::holds(c.rect, from_x - dx, from_y - dy)) {
                    from_x -= dx, from_y -= dy;
                    if (dy <= 0) break;
                }
                EXPECT_EQ(row<float>(*w, y)[4 * x], static_cast<float>(100 * from_y + from_x)) << x << "," << y;
            }
        }
    }
}

TEST(Overlap, OneMoveOfWholeWorldsIsSafe) {
    for (const int shift : {3, -3}) {
        std::vector<std::uint32_t> memory(40);
        for (std::uint32_t i = 0; i < 40; ++i) memory[i] = i;
        const World from(QX_World::NewReference(memory.data() + 5, 6, 5, 8, 24));
        const World to(QX_World::NewReference(memory.data() + 5 + shift, 6, 5, 8, 24));
        to->CopyWorld(from.get());
        for (int i = 0; i < 40; ++i) {
            const bool copied = i >= 5 + shift && i < 35 + shift;
            EXPECT_EQ(memory[static_cast<std::size_t>(i)], static_cast<std::uint32_t>(copied ? i - shift : i)) << i;
        }
    }
}

TEST(Overlap, WorldsWithoutPixelsMoveNothing) {
    std::uint32_t memory[4] = {1, 2, 3, 4};
    for (const M_LPoint size : {M_LPoint{0, 0}, {-1, -4}, {0, 7}, {-1, 3}, {4, -1}}) {
        const World from(QX_World::NewReference(memory, size.x, size.y, 8, 4 * size.x));
        const World to(QX_World::NewReference(memory + 2, size.x, size.y, 8, 4 * size.x));
        to->CopyWorld(from.get());
        for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(memory[i], i + 1);
    }
}

}  // namespace
