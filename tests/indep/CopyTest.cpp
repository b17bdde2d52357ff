// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <span>

#include "QX/indep/QX_Noise.h"
#include "QX/indep/QX_World.h"
#include "tests/support/Pixels.h"

namespace {

using qx::test::FillKind;
using World = std::unique_ptr<QX_World>;

World make(int width, int height, int depth) {
    return World(QX_World::New(width, height, static_cast<short>(depth), 1));
}

double channel(const QX_World& w, int x, int y, int c) {
    const auto* row = static_cast<const std::byte*>(w.data) + std::ptrdiff_t{y} * w.rowbytes;
    const int i = 4 * x + c;
    if (w.Depth() == 8) return reinterpret_cast<const std::uint8_t*>(row)[i];
    if (w.Depth() == 16) return reinterpret_cast<const std::uint16_t*>(row)[i];
    return double{reinterpret_cast<const float*>(row)[i]};
}

void fill(QX_World& w, std::uint64_t seed) {
    const auto fill_as = [&]<class Pixel>(Pixel) {
        for (int y = 0; y < w.height; ++y) {
            auto* row = reinterpret_cast<Pixel*>(static_cast<std::byte*>(w.data) + std::ptrdiff_t{y} * w.rowbytes);
            qx::test::fill_pixels(std::span(row, static_cast<std::size_t>(w.width)), FillKind::random,
                                  seed + 97u * static_cast<unsigned>(y));
        }
    };
    if (w.Depth() == 8) fill_as(QX_Pixel8{});
    if (w.Depth() == 16) fill_as(QX_Pixel16{});
    if (w.Depth() == 32) fill_as(QX_PixelFloat{});
}

/// Exact value of a channel at another depth, in rationals; float rounding of the product is at most half a step away.
double scaled(double v, int from, int to) {
    const auto full = [](int depth) { return depth == 8 ? 255.0 : depth == 16 ? 32768.0 : 1.0; };
    return v * full(to) / full(from);
}

TEST(Copy, AllPairsClippedAndInFields) {
    const M_LRect rects[] = {{0, 0, 23, 9}, {-3, 2, 11, 40}, {5, -4, 90, 6}, {30, 30, 40, 40}, {9, 9, 3, 3}};
    const M_LPoint places[] = {{0, 0}, {-4, 3}, {15, 5}, {100, 0}};
    for (const int from : {8, 16, 32}) {
        for (const int to : {8, 16, 32}) {
            const World src = make(23, 9, from);
            fill(*src, 11);
            for (const M_LRect& r : rects) {
                for (const M_LPoint& p : places) {
                    SCOPED_TRACE(testing::Message() << from << "->" << to << " rect " << r.left << "," << r.top
                                                    << " at " << p.x << "," << p.y);
                    const World dst = make(19, 12, to), before = make(19, 12, to);
                    fill(*dst, 5), fill(*before, 5);
                    dst->CopyRectPossiblyDifferentBitdepth(src.get(), r, false, p.x, p.y, nullptr);
                    for (int y = 0; y < 12; ++y) {
                        for (int x = 0; x < 19; ++x) {
                            const int sx = x - p.x + r.left, sy = y - p.y + r.top;
                            const bool hit = sx >= std::max(r.left, 0) && sx < std::min(r.right, 23) &&
                                             sy >= std::max(r.top, 0) && sy < std::min(r.bottom, 9);
                            for (int c = 0; c < 4; ++c) {
                                const double got = channel(*dst, x, y, c);
                                if (!hit) {
                                    ASSERT_EQ(got, channel(*before, x, y, c)) << x << "," << y;
                                } else if (from == to) {
                                    ASSERT_EQ(got, channel(*src, sx, sy, c)) << x << "," << y;
                                } else {
                                    double want = scaled(channel(*src, sx, sy, c), from, to);
                                    const bool clamped = to != 32 && (c != 0 || to == 8);
                                    if (from == 32 && !clamped && (want < 0 || want > 32768)) continue;  // alpha wraps
                                    if (from == 32) want = std::min(std::max(want, 0.0), to == 8 ? 255.0 : 32768.0);
                                    ASSERT_NEAR(got, want, to == 32 ? want * 2e-7 : 0.5 + 0.01)
                                        << x << "," << y << " channel " << c;
                                }
                            }
                        }
                    }
                }
            }
        }
    }
}

TEST(Copy, IntegerStepsAreTheExactQuotients) {
    const World narrow = make(256, 1, 8), wide = make(256, 1, 16), back = make(256, 1, 8);
    for (int v = 0; v < 256; ++v) std::memset(static_cast<std::byte*>(narrow->data) + 4 * v, v, 4);
    wide->CopyRectPossiblyDifferentBitdepth(narrow.get(), {0, 0, 256, 1}, false, 0, 0, nullptr);
    back->CopyRectPossiblyDifferentBitdepth(wide.get(), {0, 0, 256, 1}, false, 0, 0, nullptr);
    for (int v = 0; v < 256; ++v) {
        ASSERT_EQ(channel(*wide, v, 0, v & 3), (v * 32768 + 128) / 255);
        ASSERT_EQ(channel(*back, v, 0, v & 3), v);
    }
}

TEST(Copy, FloatTo8RoundsByAlignment) {
    alignas(16) QX_PixelFloat pixels[3] = {{}, {0.5f / 255, 1.5f / 255, 2.5f / 255, NAN}, {2.0f, -1.0f, 3e9f, 1.0f}};
    QX_Pixel8 out[2];
    const World dst(QX_World::NewReference(out, 2, 1, 8, 8));
    const auto convert = [&](const void* data) {
        const World src(QX_World::NewReference(const_cast<void*>(data), 2, 1, 32, 32));
        dst->CopyRectPossiblyDifferentBitdepth(src.get(), {0, 0, 2, 1}, false, 0, 0, nullptr);
    };
    convert(pixels + 1);  // nearest even, all clamped
    EXPECT_EQ(out[0].alpha, 0);
    EXPECT_EQ(out[0].red, 2);
    EXPECT_EQ(out[0].green, 2);
    EXPECT_EQ(out[0].blue, 0);
    EXPECT_EQ(out[1].alpha, 255);
    EXPECT_EQ(out[1].red, 0);
    EXPECT_EQ(out[1].green, 255);
    alignas(16) std::byte moved[48];
    std::memcpy(moved + 4, pixels + 1, 32);
    convert(moved + 4);  // half up, alpha 510 keeps its low bits
    EXPECT_EQ(out[0].alpha, 1);
    EXPECT_EQ(out[0].red, 2);
    EXPECT_EQ(out[0].green, 3);
    EXPECT_EQ(out[1].alpha, 254);
    EXPECT_EQ(out[1].red, 0);
    EXPECT_EQ(out[1].green, 255);
}

TEST(Copy, FieldsTakeTheirRowsAndDitherRepeats) {
    ASSERT_EQ(qx::start_noise(), 0);
    for (const int from : {16, 32}) {
        const World src = make(400, 50, from), a = make(400, 50, 8), b = make(400, 50, 8), odd = make(400, 50, 8);
        src->Fill(QX_Pixel16{32768, 16400, 100, 9}, nullptr);
        QX_ResetDitherRandomIndex();
        a->CopyRectPossiblyDifferentBitdepth(src.get(), {0, 0, 400, 50}, true, 0, 0, nullptr);
        QX_ResetDitherRandomIndex();
        b->CopyRectPossiblyDifferentBitdepth(src.get(), {0, 0, 400, 50}, true, 0, 0, nullptr);
        EXPECT_EQ(std::memcmp(a->data, b->data, 400 * 50 * 4), 0);
        double sum = 0;
        for (int i = 0; i < 20000; ++i) sum += channel(*a, i % 400, i / 400, 1);
        // A step's two values are drawn by a coin: the mean of 20000 is within 0.025 in all but one of 10^11 runs.
        EXPECT_NEAR(sum / 20000, 16400 * 255.0 / 32768, 0.025) << from;
        odd->CopyRectPossiblyDifferentBitdepthWithField(src.get(), {0, 0, 400, 50}, 2);
        for (int y = 0; y < 50; ++y) EXPECT_EQ(channel(*odd, 7, y, 0), y % 2 == 1 ? 255 : 0);
    }
}

TEST(Copy, PollsEvery64RowsAndThrowsTheAnswer) {
    const World src = make(2, 200, 8), dst = make(2, 200, 16);
    src->Fill(QX_Pixel16{32768, 0, 0, 0}, nullptr);
    int rows[2] = {0, 0};
    QX_ProgressInfo info{rows, nullptr, [](void* p, std::int32_t count, std::int32_t total) {
                             auto* seen = static_cast<int*>(p);
                             seen[0] = count, ++seen[1];
                             return total == 200 && count == 127 ? 517 : 0;
                         }};
    try {
        dst->CopyRectPossiblyDifferentBitdepth(src.get(), {0, 0, 2, 200}, false, 0, 0, &info);
        FAIL();
    } catch (int code) {
        EXPECT_EQ(code, 517);
    }
    EXPECT_EQ(rows[0], 127);
    EXPECT_EQ(rows[1], 2);
    EXPECT_EQ(channel(*dst, 0, 127, 0), 32768);
    EXPECT_EQ(channel(*dst, 0, 128, 0), 0);
}

}  // namespace
