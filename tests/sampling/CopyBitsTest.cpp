// SPDX-License-Identifier: Apache-2.0
// Copies from rectangle to rectangle, against a slow model of one direction at a time.
#include "QX/sampling/QX_CopyBits.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>

#include "QX/indep/QX_Chunk.h"
#include "QX/indep/QX_Fill.h"
#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampPB.h"
#include "platform/FK_Frames.h"
#include "platform/M_Matrix.h"
#include "tests/indep/WorldSupport.h"
#include "tests/support/Pixels.h"
#include "tests/support/TestHost.h"

namespace qx::test {
namespace {

/// For each place of the destination in one direction the place of the source that lands there, or -1.
std::vector<int> landed(int s0, int s1, int s_end, int d0, int d1, int d_end) {
    std::vector<int> map(static_cast<std::size_t>(d_end), -1);
    if (s1 <= s0 || d1 <= d0 || s0 >= s_end || d0 >= d_end || s1 < 1 || d1 < 1) return map;
    const int sw = s1 - s0, dw = d1 - d0;
    if (s0 < 0) d0 += -s0 * dw / sw, s0 = 0;
    if (s1 > s_end) d1 -= (s1 - s_end) * dw / sw, s1 = s_end;
    if (d0 < 0) s0 += -d0 * sw / dw, d0 = 0;
    if (d1 > d_end) s1 -= (d1 - d_end) * sw / dw, d1 = d_end;
    if (s1 <= s0 || d1 <= d0) return map;
    int acc = 0, at = d0;
    for (int s = s0; s < s1; ++s) {
        acc += d1 - d0;
        for (int n = acc / (s1 - s0); n > 0; --n, acc -= s1 - s0) map[static_cast<std::size_t>(at++)] = s;
    }
    EXPECT_EQ(at, d1);
    return map;
}

/// A channel at another depth, by the table of rules.
double converted(double v, int from, int to) {
    if (from == to) return v;
    const auto n = static_cast<std::uint64_t>(from == 32 ? 0 : v);
    if (from == 8 && to == 16) return static_cast<double>((n * 0x404040408000u + 0x4040404080u) >> 39);
    if (from == 16 && to == 8) return static_cast<double>((n * 255 + 16384) >> 15);
    if (to == 32) return static_cast<float>(v) * (from == 8 ? 0.003921569f : 3.0517578e-5f);
    const float full = to == 8 ? 255.0f : 32768.0f, x = static_cast<float>(v) * full;
    return x < 0 ? 0 : x > full ? full : std::floor(x + 0.5f);
}

double channel(const QX_World& w, int x, int y, int c) {
    const auto* row = static_cast<const std::byte*>(w.data) + std::ptrdiff_t{y} * w.rowbytes;
    if (w.Depth() == 8) return reinterpret_cast<const std::uint8_t*>(row)[4 * x + c];
    if (w.Depth() == 16) return reinterpret_cast<const std::uint16_t*>(row)[4 * x + c];
    return double{reinterpret_cast<const float*>(row)[4 * x + c]};
}

template <class Pixel> void fill_as(QX_World& w, unsigned seed) {
    for (int y = 0; y < w.height; ++y) {
        fill_pixels<Pixel>({static_cast<QX_WorldX<Pixel>&>(w).Row(y), static_cast<std::size_t>(w.width)},
                           FillKind::random, seed * 1000 + static_cast<unsigned>(y));
    }
}

World made(int width, int height, int depth, unsigned seed) {
    World w(QX_World::New(width, height, static_cast<short>(depth), 1));
    if (depth == 8) fill_as<QX_Pixel8>(*w, seed);
    if (depth == 16) fill_as<QX_Pixel16>(*w, seed);
    if (depth == 32) fill_as<QX_PixelFloat>(*w, seed);
    return w;
}

/// Every channel of `got` is that of the source place that `from(x, y)` names, or of `before` for a place below 0.
template <class From>
void expect_landed(const QX_World& got, const QX_World& before, const QX_World& src, const From& from) {
    for (int y = 0; y < got.height; ++y) {
        for (int x = 0; x < got.width; ++x) {
            const auto [sx, sy] = from(x, y);
            for (int c = 0; c < 4; ++c) {
                const double want = sx < 0 || sy < 0 ? channel(before, x, y, c)
                                                     : converted(channel(src, sx, sy, c), src.Depth(), got.Depth());
                ASSERT_EQ(channel(got, x, y, c), want) << "at " << x << "," << y << " from " << sx << "," << sy;
            }
        }
    }
}

TEST(CopyBitsDraft, RepeatsAndSkipsFromTheSum) {
    const auto scaled = [](int from, int to) {
        const World src = made(from, 1, 8, 0), dst(QX_World::New(to, 1, 8, 1));
        for (int x = 0; x < from; ++x) std::memset(static_cast<std::byte*>(src->data) + 4 * x, 'a' + x, 4);
        EXPECT_EQ(QX_CopyBits_Draft_Static(nullptr, src.get(), dst.get(), nullptr, nullptr), 0);
        std::string text;
        for (int x = 0; x < to; ++x) text += static_cast<char>(channel(*dst, x, 0, 2));
        return text;
    };
    EXPECT_EQ(scaled(3, 4), "abcc");
    EXPECT_EQ(scaled(4, 3), "bcd");
    EXPECT_EQ(scaled(2, 6), "aaabbb");
    EXPECT_EQ(scaled(6, 1), "f");
}

TEST(CopyBitsDraft, IsTheModelAtAllDepthsAndRectangles) {
    std::mt19937 random(3);
    const auto number = [&](int from, int to) {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
    };
    for (unsigned i = 0; i < 4500; ++i) {
        const int depths[] = {8, 16, 32}, from = depths[i % 3], to = depths[i / 3 % 3];
        const World src = made(number(1, 14), number(1, 12), from, i),
                    dst = made(number(1, 14), number(1, 12), to, i + 1);
        const World before = made(dst->width, dst->height, to, i + 1);
        const auto rect = [&](const QX_World& w) {
            const int left = number(-9, w.width + 2), top = number(-9, w.height + 2);
            return M_LRect{left, top, left + number(-1, 30), top + number(-1, 24)};
        };
        M_LRect s = rect(*src), d = rect(*dst);
        const bool all_src = i % 5 == 0, all_dst = i % 7 == 0;
        if (i % 11 == 0) d = s;
        ASSERT_EQ(
            QX_CopyBits_Draft_Static(nullptr, src.get(), dst.get(), all_src ? nullptr : &s, all_dst ? nullptr : &d), 0);
        if (all_src) s = {0, 0, src->width, src->height};
        if (all_dst) d = {0, 0, dst->width, dst->height};
        auto columns = landed(s.left, s.right, src->width, d.left, d.right, dst->width);
        auto rows = landed(s.top, s.bottom, src->height, d.top, d.bottom, dst->height);
        SCOPED_TRACE(testing::Message() << "case " << i << " " << from << "->" << to << " " << name(s) << " to "
                                        << name(d));
        expect_landed(*dst, *before, *src, [&](int x, int y) {
            return std::pair(columns[static_cast<std::size_t>(x)], rows[static_cast<std::size_t>(y)]);
        });
        if (HasFatalFailure()) return;
    }
}

/// Rows of a larger buffer: nothing behind a row is touched; the same rectangle of one world stays.
TEST(CopyBitsDraft, PaddingAndCopiesInPlaceStay) {
    for (const int depth : {8, 16, 32}) {
        for (const int padding : {0, 16}) {
            Canvas from{depth, 5, 4, 16}, to{depth, 5, 4, padding};
            for (auto& byte : from.memory) byte = static_cast<std::uint8_t>(byte + 100);
            ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, from.world.get(), to.world.get(), nullptr, nullptr), 0);
            to.expect([&](int x, int y, int byte) { return from.first()[y * from.rowbytes + x * from.pixel + byte]; });
            Canvas same{depth, 5, 4, padding};
            const M_LRect part{-1, 1, 4, 9};
            ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, same.world.get(), same.world.get(), nullptr, nullptr), 0);
            ASSERT_EQ(QX_CopyBits_Draft_Static(nullptr, same.world.get(), same.world.get(), &part, &part), 0);
            same.expect([](int, int, int) { return -1; });
        }
    }
}

TEST(CopyBitsDraft, NumbersBeyond32BitsAreTold) {
    Reports reports;
    const World src = made(4, 4, 8, 1), dst = made(4, 4, 16, 2), before = made(4, 4, 16, 2);
    const M_LRect huge_x{INT_MIN, 0, INT_MAX, 4}, huge_y{0, -1, 4, INT_MAX}, wide{-70000, 0, 70000, 4},
        tall{0, -70000, 4, 70000};
    const struct {
        M_LRect s, d;
        char axis;
    } cases[] = {{huge_x, {0, 0, 4, 4}, 'x'}, {{0, 0, 4, 4}, huge_x, 'x'}, {huge_y, {0, 0, 4, 4}, 'y'},
                 {wide, wide, 'x'},           {tall, tall, 'y'},           {{0, 0, 40000, 4}, {0, 0, 80000, 4}, 'x'}};
    for (const auto& c : cases) {
        reports.clear();
        EXPECT_EQ(QX_CopyBits_Draft_Static(nullptr, src.get(), dst.get(), &c.s, &c.d), 3);
        EXPECT_EQ(reports.last_text(), std::string("QXp_CopyBitsUniversal ") + c.axis + " overflow detected");
        EXPECT_EQ(std::memcmp(dst->data, before->data, 4 * 4 * 8), 0);
    }
    EXPECT_EQ(QX_CopyBits_Draft_Static(nullptr, src.get(), src.get(), &wide, &wide), 0) << "a move needs no quotients";
}

// --- through the samplers ----------------------------------------------------------------------------

/// What a sampler was asked, written into the pixel; `Area` marks which of the two it was.
template <class Pixel, int Mark>
int marking_sampler(void*, std::int32_t x, std::int32_t y, const QX_SampPB* block, Pixel* out) {
    const auto low = [](std::int64_t v) { return static_cast<QX_ChannelOf<Pixel>>(v & 255); };
    const std::int64_t all = std::int64_t{x} * 31 + std::int64_t{y} * 17;
    *out = {low(Mark), low(all), low(all >> 8),
            low(block->x_radius + 3 * std::int64_t{block->y_radius} + 5 * std::int64_t{block->area})};
    return 0;
}

/// The pixels are those of the two samplers at the positions and with the block that the sizes give.
template <class Pixel> void expect_hq(CopyBitsFn* copy, QX_PointSampler<Pixel> subpixel, QX_PointSampler<Pixel> area) {
    std::mt19937 random(4);
    const auto number = [&](int from, int to) {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
    };
    constexpr int depth = DepthOf<Pixel>::number;
    for (unsigned i = 0; i < 600; ++i) {
        const World src = made(number(1, 14), number(1, 12), depth, i), dst = made(11, 9, depth, i + 1),
                    before = made(11, 9, depth, i + 1);
        const int left = number(-6, 12), top = number(-6, 9), u = number(-3, 5), v = number(-3, 5);
        const M_LRect s{u, v, u + number(4, 20), v + number(4, 20)},
            d{left, top, left + number(1, 20), top + number(1, 20)};
        const std::int64_t sw = s.right - s.left, sh = s.bottom - s.top, dw = d.right - d.left, dh = d.bottom - d.top;
        if (sw == dw && sh == dh) continue;
        SCOPED_TRACE(testing::Message() << "case " << i << " " << name(s) << " to " << name(d));
        ASSERT_EQ(copy(nullptr, src.get(), dst.get(), &s, &d), 0);
        const bool nothing = s.left >= src->width || s.top >= src->height || d.left >= 11 || d.top >= 9 ||
                             s.right < 1 || s.bottom < 1 || d.right < 1 || d.bottom < 1;
        const std::int64_t sx = sw * 65536 / dw, sy = sh * 65536 / dh;
        QX_SampPB block{};
        block.src = src.get();
        block.x_radius = static_cast<std::int32_t>(sx / 2), block.y_radius = static_cast<std::int32_t>(sy / 2);
        block.area = static_cast<std::int32_t>(std::floor(static_cast<double>(sx * sy) / 65536));
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 11; ++x) {
                Pixel want = static_cast<QX_WorldX<Pixel>&>(*before).Row(y)[x];
                if (!nothing && holds(d, x, y)) {
                    const auto px = static_cast<std::int32_t>(sx / 2 - 32768 + s.left * 65536 + sx * (x - d.left));
                    const auto py = static_cast<std::int32_t>(sy / 2 - 32768 + s.top * 65536 + sy * (y - d.top));
                    (sx > 65536 || sy > 65536 ? area : subpixel)(nullptr, px, py, &block, &want);
                }
                ASSERT_EQ(std::memcmp(&want, static_cast<QX_WorldX<Pixel>&>(*dst).Row(y) + x, sizeof want), 0)
                    << x << "," << y;
            }
        }
    }
}

/// Samplers that mark their pixels stand in the slots.
class CopyBitsHQ : public testing::Test {
protected:
    Born born_;
    CopyBitsHQ() {
        set_slot<Slot::SubpixelSample>(&marking_sampler<QX_Pixel8, 3>);
        set_slot<Slot::SubpixelSamplePremul>(&marking_sampler<QX_Pixel8, 4>);
        set_slot<Slot::AreaSample>(&marking_sampler<QX_Pixel8, 5>);
        set_slot<Slot::AreaSamplePremul>(&marking_sampler<QX_Pixel8, 6>);
        set_slot<Slot::SubpixelSample16>(&marking_sampler<QX_Pixel16, 64>);
        set_slot<Slot::AreaSample16>(&marking_sampler<QX_Pixel16, 65>);
    }
};

TEST_F(CopyBitsHQ, AsksTheSamplersOfTheSlots) {
    expect_hq<QX_Pixel8>(&QX_CopyBits_HQ_Straight, &marking_sampler<QX_Pixel8, 3>, &marking_sampler<QX_Pixel8, 5>);
    expect_hq<QX_Pixel8>(&QX_CopyBits_HQ_Premul, &marking_sampler<QX_Pixel8, 4>, &marking_sampler<QX_Pixel8, 6>);
    expect_hq<QX_Pixel16>(&QX_CopyBits_HQ_Straight, &marking_sampler<QX_Pixel16, 64>, &marking_sampler<QX_Pixel16, 65>);
    expect_hq<QX_PixelFloat>(&QX_CopyBits_HQ_Straight, &QX_SubpixelBilinearFloat,
                             &QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>);
}

/// A footprint of 40,000 pixels passes a signed 16.16 number.
TEST(CopyBitsHQPremul, LargeFootprintsKeepTheirMean) {
    const Born born;
    const World src = made(200, 200, 8, 1), dst = made(1, 1, 8, 2);
    const QX_Pixel8 colour{100, 50, 25, 5};
    QX_Fill(nullptr, &colour, nullptr, src.get());
    ASSERT_EQ(QX_CopyBits_HQ_Premul(nullptr, src.get(), dst.get(), nullptr, nullptr), 0);
    EXPECT_EQ(std::memcmp(dst->data, &colour, sizeof colour), 0);
}

/// The low 16 bits of a size divide: none draws nothing, a negative step is legal.
TEST_F(CopyBitsHQ, SizesBeyond16Bits) {
    const World src = made(4, 4, 8, 1), dst = made(4, 4, 8, 2), before = made(4, 4, 8, 2);
    M_LRect d{0, 0, 65536, 4};
    ASSERT_EQ(QX_CopyBits_HQ_Straight(nullptr, src.get(), dst.get(), nullptr, &d), 0);
    EXPECT_EQ(std::memcmp(dst->data, before->data, 64), 0);
    d.right = 65535;  // as a number of 16 bits -1, and a step of -4
    const M_LRect s{0, 0, 4, 3};
    ASSERT_EQ(QX_CopyBits_HQ_Straight(nullptr, src.get(), dst.get(), &s, &d), 0);
    const std::int64_t x = -131072 - 32768 + 3 * -262144, y = 24576 - 32768;
    EXPECT_EQ(channel(*dst, 3, 0, 1), static_cast<double>((x * 31 + y * 17) & 255));
    EXPECT_EQ(channel(*dst, 3, 0, 2), static_cast<double>((x * 31 + y * 17) >> 8 & 255));
    d = {INT_MIN, 0, INT_MAX, 4};
    EXPECT_EQ(QX_CopyBits_HQ_Straight(nullptr, src.get(), dst.get(), &s, &d), 0);
}

TEST_F(CopyBitsHQ, AbortIsAskedEvery64Rows) {
    const World src = made(2, 2, 8, 1), dst = made(1, 300, 8, 2);
    static int asked, last;
    QX_ProgressInfo info{nullptr, [](void*) { return ++asked > last ? 77 : 0; },
                         [](void*, std::int32_t, std::int32_t) { return 5; }};
    const M_LRect d{0, -10, 1, 300};
    for (const auto& [limit, code, count] : {std::tuple{100, 0, 5}, {2, 77, 3}, {0, 77, 1}}) {
        std::memset(dst->data, 0, static_cast<std::size_t>(300 * dst->rowbytes));
        asked = 0, last = limit;
        EXPECT_EQ(QX_CopyBits_HQ_Straight(&info, src.get(), dst.get(), nullptr, &d), code);
        EXPECT_EQ(asked, count);
        int rows = 0;
        while (rows < 300 && channel(*dst, 0, rows, 0) == 5) ++rows;
        EXPECT_EQ(rows, code == 0 ? 300 : limit * 64 + 1);
    }
    info.abort_func = nullptr;
    EXPECT_EQ(QX_CopyBits_HQ_Straight(&info, src.get(), dst.get(), nullptr, nullptr), 0);
}

TEST(CopyBits, Refusals) {
    const Born born;
    Reports reports;
    const World w8 = made(4, 4, 8, 1), w16 = made(4, 3, 16, 2), small16 = made(2, 2, 16, 3);
    QX_LayerDef gpu{}, empty{};
    gpu.platform_ref = standalone::NewFakeFrame(GK::kPixelFormat_GPU_BGRA_4444_32f);
    struct Odd final : QX_WorldX<QX_Pixel8> {
        Odd(int w) : QX_WorldX(w, 4, 1) {}
        std::int16_t Depth() const override { return 24; }
    } odd(4), wider(5);
    const char* const not_yet = "gpu effect world is not supported yet.";
    const char* const bad = "bad parameter passed to effect callback";
    const char* const depths = "QX_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth";
    const char* const unknown = "Unknown world bitdepth in##CONDITIONNAME";
    const auto matrix = [](QX_LayerDef* s, QX_LayerDef* d) {
        return QX_CopyBits3_LO_Straight(nullptr, s, &kM_IdentityMatrix, 1, 0, d);
    };
    for (CopyBitsFn* copy : {&QX_CopyBits_Draft, &QX_CopyBits_HQ_Straight, &QX_CopyBits_HQ_Premul}) {
        const auto call = [&](QX_LayerDef* s, QX_LayerDef* d) { return copy(nullptr, s, d, nullptr, nullptr); };
        const bool draft = copy == &QX_CopyBits_Draft, premul = copy == &QX_CopyBits_HQ_Premul;
        const struct {
            std::function<int()> run;
            const char* text;
        } cases[] = {
            {[&] { return call(&gpu, w8.get()); }, not_yet},
            {[&] { return call(w8.get(), &gpu); }, not_yet},
            {[&] { return call(nullptr, w8.get()); }, bad},
            {[&] { return call(w8.get(), nullptr); }, bad},
            {[&] { return call(&empty, w8.get()); }, bad},
            {[&] { return call(w8.get(), &empty); }, bad},
            {[&] { return draft ? 3 : call(w8.get(), w16.get()); }, draft ? nullptr : depths},
            {[&] { return call(&odd, &wider); }, unknown},
            {[&] { return premul ? call(w16.get(), small16.get()) : 3; }, premul ? unknown : nullptr},
            {[&] { return matrix(&gpu, w8.get()); }, not_yet},
            {[&] { return matrix(w8.get(), nullptr); }, "dst_world is NULL"},
            {[&] { return matrix(nullptr, w8.get()); }, bad},
            {[&] { return matrix(w8.get(), &empty); }, bad},
            {[&] { return matrix(&odd, w8.get()); }, unknown},
            {[&] { return matrix(w8.get(), &odd); }, unknown},
        };
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            reports.clear();
            EXPECT_EQ(cases[i].run(), 3) << i;
            ASSERT_EQ(reports.all().size(), cases[i].text != nullptr ? 1u : 0u) << i;
            EXPECT_EQ(reports.last_text(), cases[i].text != nullptr ? cases[i].text : "") << i;
        }
    }
    FK::DisposeVPixFromVideoFrame(gpu.platform_ref);
}

// --- through a matrix --------------------------------------------------------------------------------

TEST(CopyBitsMatrix, TakesTheNearestPixelAtAllDepths) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> part(-1.5, 1.5), shift(-6, 12);
    for (unsigned i = 0; i < 900; ++i) {
        const int depths[] = {8, 16, 32}, from = depths[i % 3], to = depths[i / 3 % 3],
                  field = static_cast<int>(i / 9 % 3);
        const World src = made(13, 10, from, i), dst = made(12, 11, to, i + 1), before = made(12, 11, to, i + 1);
        M_Matrix3 m{
            {{part(random), part(random), 0}, {part(random), part(random), 0}, {shift(random), shift(random), 1}}};
        if (i % 4 == 0) m = {{{1, 0, 0}, {0, 1, 0}, {double(i % 7) - 3, 2, 1}}};
        const double det = m.m[0][0] * m.m[1][1] - m.m[0][1] * m.m[1][0];
        if (std::abs(det) < 0.05) continue;
        ASSERT_EQ(QX_CopyBits3_LO_Straight(nullptr, src.get(), &m, 0, field, dst.get()), 0);
        for (int y = 0; y < 11; ++y) {
            for (int x = 0; x < 12; ++x) {
                const double u = x + 0.5 - m.m[2][0], v = y + 0.5 - m.m[2][1];
                const double sx = (u * m.m[1][1] - v * m.m[1][0]) / det, sy = (v * m.m[0][0] - u * m.m[0][1]) / det;
                const bool doubtful = std::abs(sx - std::round(sx)) < 0.01 || std::abs(sy - std::round(sy)) < 0.01;
                if (doubtful && i % 4 != 0) continue;  // a rounding of steps away from the next pixel
                const int px = static_cast<int>(std::floor(sx)), py = static_cast<int>(std::floor(sy));
                const bool skipped = field != 0 && y % 2 == field % 2,
                           inside = px >= 0 && px < 13 && py >= 0 && py < 10;
                for (int c = 0; c < 4; ++c) {
                    const double want = skipped  ? channel(*before, x, y, c)
                                        : inside ? converted(channel(*src, px, py, c), from, to)
                                                 : 0;
                    ASSERT_EQ(channel(*dst, x, y, c), want) << "case " << i << " at " << x << "," << y;
                }
            }
        }
    }
}

TEST(CopyBitsMatrix, ProgressAndWhatHasNoInverse) {
    const World src = made(2, 2, 8, 1), dst = made(2, 200, 8, 2), before = made(2, 200, 8, 2);
    for (const double odd : {0.0, double(NAN), double(INFINITY), 1e-300}) {
        const M_Matrix3 flat{{{odd, 0, 0}, {0, 0, 0}, {0, 0, 1}}};
        EXPECT_EQ(QX_CopyBits3_LO_Straight(nullptr, src.get(), &flat, 0, 0, dst.get()), 0);
    }
    expect_landed(*dst, *before, *src, [](int, int) { return std::pair(-1, -1); });
    static std::vector<int> seen;
    const QX_ProgressInfo info{nullptr, [](void*) { return 99; },
                               [](void*, std::int32_t row, std::int32_t rows) {
                                   seen.push_back(row);
                                   return rows == 200 && row == 128 ? 517 : 0;
                               }};
    EXPECT_EQ(QX_CopyBits3_LO_Straight(&info, src.get(), &kM_IdentityMatrix, 0, 0, dst.get()), 517);
    EXPECT_EQ(seen, (std::vector<int>{0, 64, 128}));
    EXPECT_EQ(channel(*dst, 0, 128, 0), 0);
    EXPECT_EQ(channel(*dst, 0, 129, 0), channel(*before, 0, 129, 0));
}

// --- chunks ------------------------------------------------------------------------------------------

TEST(Chunks, SizesOfTypes) {
    const std::pair<std::uint32_t, int> sizes[] = {{0x44424C38, 8}, {0x46495834, 4}, {0x464C5434, 4}, {0x4C4F4E34, 4},
                                                   {0x55465834, 4}, {0x52474220, 3}, {0x53485432, 2}, {0x55535432, 2},
                                                   {0, 1},          {0x20424752, 1}};
    for (const auto& [type, size] : sizes) {
        std::uint16_t got = 99;
        EXPECT_EQ(QX_ChunkDataSize(type, &got), 0);
        EXPECT_EQ(got, size) << std::hex << type;
    }
}

struct Chunk : QX_ChannelChunk {
    std::vector<std::uint8_t> bytes;
    Chunk(int w, int h, std::uint32_t type, int values, int padding, unsigned seed) : QX_ChannelChunk{} {
        std::uint16_t size = 0;
        QX_ChunkDataSize(type, &size);
        width = w, height = h, dimension = values, data_type = type, row_bytes = w * size * values + padding;
        bytes.resize(static_cast<std::size_t>(row_bytes * h));
        for (auto& b : bytes) b = static_cast<std::uint8_t>(seed = seed * 75 + 74);
        data = bytes.data();
    }
    std::uint8_t at(int x, int y, int size, int i) const {
        return bytes[static_cast<std::size_t>(y * row_bytes + x * size + i)];
    }
};

TEST(ChannelCopy, MovesElementsOfAnySize) {
    std::mt19937 random(5);
    const auto number = [&](int from, int to) {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
    };
    const std::uint32_t types[] = {kQX_ChunkRGB, kQX_ChunkDouble, kQX_ChunkShort, 7};
    const int sizes[] = {3, 8, 2, 1};
    for (unsigned i = 0; i < 1200; ++i) {
        const int kind = number(0, 4), values = number(1, 4), size = sizes[kind] * values;
        const int w = number(1, 9), h = number(1, 7);
        const Chunk src(w, h, types[kind], values, number(0, 2) * 4, i);
        const bool whole = i % 4 == 0;
        Chunk dst(whole ? w : number(1, 9), whole ? h : number(1, 7), types[kind], values, number(0, 2) * 4, i + 1);
        const Chunk before = dst;
        M_LRect s{number(-4, w), number(-4, h), 0, 0}, d{number(-4, dst.width), number(-4, dst.height), 0, 0};
        s.right = s.left + number(1, 14), s.bottom = s.top + number(1, 14);
        d.right = d.left + number(1, 14), d.bottom = d.top + number(1, 14);
        dst.data = dst.bytes.data();
        ASSERT_EQ(QX_ChannelCopy(nullptr, &src, &dst, whole ? nullptr : &s, whole ? nullptr : &d), 0);
        if (whole) s = d = {0, 0, w, h};
        const auto columns = landed(s.left, s.right, w, d.left, d.right, dst.width);
        const auto rows = landed(s.top, s.bottom, h, d.top, d.bottom, dst.height);
        for (int y = 0; y < dst.height; ++y) {
            for (int k = 0; k < dst.width * size; ++k) {
                const int sx = columns[static_cast<std::size_t>(k / size)], sy = rows[static_cast<std::size_t>(y)];
                const bool hit = sx >= 0 && sy >= 0;
                ASSERT_EQ(dst.at(0, y, 0, k), hit ? src.at(sx, sy, size, k % size) : before.at(0, y, 0, k))
                    << "case " << i;
            }
        }
    }
}

TEST(ChannelCopy, Refusals) {
    Reports reports;
    Chunk a(4, 4, kQX_ChunkRGB, 1, 0, 1), b(4, 4, kQX_ChunkRGB, 1, 0, 2), other(4, 4, kQX_ChunkFloat, 1, 0, 3),
        none = a;
    a.data = a.bytes.data(), b.data = b.bytes.data(), other.data = other.bytes.data(), none.data = nullptr;
    const M_LRect wide{-70000, 0, 70000, 4}, tall{0, -70000, 4, 70000};
    const char* const bad = "bad parameter passed to effect callback";
    const struct {
        const QX_ChannelChunk* src;
        QX_ChannelChunk* dst;
        const M_LRect* rect;
        const char* text;
    } cases[] = {{nullptr, &b, nullptr, bad},
                 {&a, nullptr, nullptr, bad},
                 {&none, &b, nullptr, bad},
                 {&a, &none, nullptr, bad},
                 {&a, &other, nullptr, "copy different channel worlds"},
                 {&a, &b, &wide, "QX_ChannelCopy x overflow detected"},
                 {&a, &b, &tall, "QXp_CopyBitsUniversal y underflow detected"}};
    const auto before = b.bytes;
    for (const auto& c : cases) {
        reports.clear();
        EXPECT_EQ(QX_ChannelCopy(nullptr, c.src, c.dst, c.rect, c.rect), 3);
        ASSERT_EQ(reports.all().size(), 1u);
        EXPECT_NE(reports.last_text().find(c.text), std::string::npos) << reports.last_text();
    }
    EXPECT_EQ(b.bytes, before);
}

}  // namespace
}  // namespace qx::test
