// SPDX-License-Identifier: Apache-2.0
// Mask buffers with one another, against formulas of one sample.
#include "QX/world/QX_UnoCombine.h"

#include "platform/M_Tables.h"
#include "tests/world/UnoSupport.h"

namespace qx::test {
namespace {

/// The library's running noise from its start on.
class Noise {
public:
    Noise() {
        EXPECT_EQ(RND_GetPrimeSizedTable(&table_, &count_), 0);
        QX_ResetDitherRandomIndex();
    }
    std::uint32_t next() { return table_[used_++ % count_]; }

private:
    const std::uint32_t* table_ = nullptr;
    std::int32_t count_ = 0, used_ = 0;
};

struct Accumulate {
    int mode = 7;
    float opacity = 1, limit = 1;
    const M_LRect* rect = nullptr;
    const M_LPoint* point = nullptr;

    int operator()(const QX_UnoBuffer* src, QX_UnoBuffer* dst, const QX_ProgressInfo* progress = nullptr) const {
        return QX_AccumulateUnoBuffers(progress, src, mode, opacity, limit, rect, point, dst);
    }
    bool clears() const { return mode == 3 || mode == 5; }
};

/// A share as a sample.
int share(float v, int depth, bool up) {
    const float scaled = (v > 0 ? std::fmin(v, 1.0f) : 0.0f) * static_cast<float>(full_of(depth));
    return static_cast<int>(up ? std::ceil(scaled) : std::floor(static_cast<double>(scaled) + 0.5));
}

/// What becomes of d. `noise` is asked where it is used.
int expected(const Accumulate& c, int from, int to, int s, int d, Noise& noise) {
    const int full = full_of(from), o = share(c.opacity, from, false), l = share(c.limit, from, true);
    if (from != to) return std::min(d + (product(s, o, 8) * 32768 + 128) / 255, 32768);
    const bool whole = o == full && l == full;
    const int t = product(s, o, from);
    if (c.mode == -1) {
        if (d >= l) return d;
        const std::int64_t p = std::int64_t{t} * (l - d) + (noise.next() & (from == 8 ? 255 : 32767));
        return d + static_cast<int>(from == 8 ? p * 257 / 65536 : p / 32768);
    }
    if (!whole && c.mode == 1) return d < l ? d + product(t, l - d, from) : d;
    if (!whole) return std::min(d + t, full);
    switch (c.mode) {
        case 2:
            return product(full - s, d, from);
        case 3:
            return product(s, d, from);
        case 4:
            return std::max(s, d);
        case 5:
            return std::min(s, d);
        case 6:
            return std::abs(s - d);
        case 7:
            return std::min(s + d, full);
        default:
            return full - product(full - s, full - d, from);
    }
}

/// Where samples of a source land, and which do.
struct Landing {
    M_LRect rect;
    int dx, dy, width, height;

    Landing(const M_LRect* r, const M_LPoint* p, int w, int h)
        : rect(r != nullptr ? *r : M_LRect{0, 0, w, h}),
          dx(p != nullptr ? p->x - rect.left : 0),
          dy(p != nullptr ? p->y - rect.top : 0),
          width(w),
          height(h) {}
    bool over(int x, int y) const { return holds({0, 0, width, height}, x - dx, y - dy); }
    bool lands(int x, int y) const { return over(x, y) && holds(rect, x - dx, y - dy); }
    bool any(const QX_UnoBuffer& dst) const {
        const auto all = places(dst.width, dst.height);
        return std::any_of(all.begin(), all.end(), [&](const M_LPoint& p) { return lands(p.x, p.y); });
    }
};

void expect_accumulated(const Accumulate& c, const QX_UnoBuffer& src, QX_UnoBuffer& dst) {
    const auto from = samples(src), before = samples(dst);
    Noise noise;
    ASSERT_EQ(c(&src, &dst), 0);
    const auto after = samples(dst);
    const Landing landing(c.rect, c.point, src.width, src.height);
    const bool clears = c.clears() && landing.any(dst);
    for (const auto& [x, y] : places(dst.width, dst.height)) {
        const auto i = static_cast<std::size_t>(y * dst.width + x);
        int want = static_cast<int>(before[i]), s = -1;
        if (landing.lands(x, y)) {
            s = static_cast<int>(from[static_cast<std::size_t>((y - landing.dy) * src.width + x - landing.dx)]);
            want = expected(c, src.depth, dst.depth, s, want, noise);
        } else if (clears && !landing.over(x, y)) {
            want = 0;
        }
        ASSERT_EQ(after[i], want) << x << ", " << y << ": " << s << " onto " << before[i] << " by " << c.mode
                                  << " depths " << src.depth << ", " << dst.depth << " opacity " << c.opacity
                                  << " limit " << c.limit;
    }
}

constexpr std::pair<float, float> kStrengths[] = {{1.0f, 1.0f}, {0.3f, 1.0f}, {1.0f, 0.61f}, {0.75f, 0.501f},
                                                  {0.0f, 0.2f}, {NAN, 1.0f},  {3.0f, -1.0f}};

TEST(UnoCombine, AllPairsOfSamplesByAllOperators) {
    const auto wide = [](int i) { return i < 128 ? 257 * i / 2 : 32768 - 257 * (255 - i) / 2; };
    for (const auto& [level, depth, mode, strength] :
         each(kLevels, std::array{8, 16}, std::views::iota(-1, 8), kStrengths)) {
        const Born born(1, level);
        const auto value = [&, depth = depth](int i) { return depth == 8 ? i : wide(i); };
        const Buffer src = made_of(256, 256, depth, [&](int, int y) { return value(y); });
        const Buffer dst = made_of(256, 256, depth, [&](int x, int) { return value(x); });
        expect_accumulated({.mode = mode, .opacity = strength.first, .limit = strength.second}, *src, *dst);
        if (HasFatalFailure()) return;
    }
}

M_LRect random_rect(Numbers& random) {
    const int left = random(-9, 40), top = random(-3, 6);
    return {left, top, left + random(-1, 90), top + random(-1, 8)};
}

TEST(UnoCombine, RandomRectanglesAndPointsAtAllWidths) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto seed : seeds(3000)) {
            SCOPED_TRACE(seed);
            Numbers random(static_cast<unsigned>(seed));
            const bool widens = random(0, 8) == 0;
            const int from = widens || random(0, 2) == 0 ? 8 : 16, to = widens ? 16 : from;
            const auto sample = [&](int depth) {
                return [&random, depth](int, int) {
                    return random(0, 3) == 0 ? random(0, 2) * full_of(depth) : random(0, full_of(depth) + 1);
                };
            };
            const Buffer src = made_of(random(1, 68), random(1, 6), from, sample(from));
            const Buffer dst = made_of(random(1, 68), random(1, 6), to, sample(to));
            const auto& [opacity, limit] = kStrengths[static_cast<std::size_t>(std::max(0, random(-4, 7)))];
            const M_LRect rect = random_rect(random);
            const M_LPoint point{random(-20, 60), random(-3, 6)};
            expect_accumulated({.mode = widens ? 7 : random(-1, 8),
                                .opacity = opacity,
                                .limit = limit,
                                .rect = random(0, 3) == 0 ? nullptr : &rect,
                                .point = random(0, 3) == 0 ? nullptr : &point},
                               *src, *dst);
            if (HasFatalFailure()) return;
        }
    }
}

/// Nearest to a product of either sign at 8 bits; at 16 bits its floor, with 16383 or one less in front.
double blended(double a, double b, double d, int depth) {
    const double e = b - d, p = a * e;
    if (depth == 32) return static_cast<float>(d) + static_cast<float>(e) * static_cast<float>(a);
    return depth == 8 ? d + std::round(p / 255) : d + std::floor((p + 16383 - (e < 0)) / 32768);
}

TEST(UnoCombine, TransfersAllTriplesOf8Bits) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        const Buffer b = made_of(256, 256, 8, [](int, int y) { return y; });
        for (int a = 0; a < 256; ++a) {
            const Buffer coverage = made_of(256, 256, 8, [a](int, int) { return a; });
            const Buffer dst = made_of(256, 256, 8, [](int x, int) { return x; });
            ASSERT_EQ(QX_TransferUnoBuffers(nullptr, coverage.get(), b.get(), 0, nullptr, nullptr, dst.get()), 0);
            const auto* made = static_cast<std::uint8_t*>(*dst->handle);
            for (int i = 0; i < 65536; ++i) ASSERT_EQ(made[i], blended(a, i >> 8, i & 255, 8)) << a << " " << i;
        }
    }
}

TEST(UnoCombine, TransfersByAllCoveragesOf16Bits) {
    constexpr std::array<std::pair<int, int>, 9> kEnds = {
        {{0, 1}, {1, 0}, {0, 3}, {0, 32768}, {32768, 0}, {5, 12}, {30000, 29997}, {100, 32100}, {777, 777}}};
    const auto [width, height] = std::pair(32769, static_cast<int>(kEnds.size()));
    const auto of_row = [&](const auto& member) {
        return [member, &kEnds](int, int y) { return kEnds[static_cast<std::size_t>(y)].*member; };
    };
    const Buffer coverage = made_of(width, height, 16, [](int x, int) { return x; });
    const Buffer b = made_of(width, height, 16, of_row(&std::pair<int, int>::first));
    for (const auto level : kLevels) {
        const Born born(1, level);
        const Buffer dst = made_of(width, height, 16, of_row(&std::pair<int, int>::second));
        ASSERT_EQ(QX_TransferUnoBuffers(nullptr, coverage.get(), b.get(), 0, nullptr, nullptr, dst.get()), 0);
        const auto made = samples(*dst);
        for (std::size_t i = 0; i < made.size(); ++i) {
            const auto& [to, from] = kEnds[i / 32769];
            ASSERT_EQ(made[i], blended(static_cast<double>(i % 32769), to, from, 16)) << from << " to " << to;
        }
    }
}

TEST(UnoCombine, TransfersClipToAllThreeAndClearWhatTheSharedPartDoesNotCover) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto seed : seeds(2000)) {
            SCOPED_TRACE(seed);
            Numbers random(static_cast<unsigned>(seed));
            const int depth = 8 << random(0, 3), mode = random(-1, 9);
            const auto buffer = [&] {
                auto made = std::make_unique<QX_UnoBuffer>(random(1, 68), random(1, 6), depth);
                set_samples(*made, [&](int, int) {
                    if (depth == 32) return random(-99, 999) / 512.0;
                    return random(0, full_of(depth) + 1) * 1.0;
                });
                return made;
            };
            const auto a = buffer(), b = buffer(), dst = buffer();
            const M_LRect rect = random_rect(random);
            const M_LPoint point{random(-20, 60), random(-3, 6)};
            const M_LRect* const r = random(0, 3) == 0 ? nullptr : &rect;
            const M_LPoint* const p = random(0, 3) == 0 ? nullptr : &point;
            const auto va = samples(*a), vb = samples(*b), before = samples(*dst);
            ASSERT_EQ(QX_TransferUnoBuffers(nullptr, a.get(), b.get(), mode, r, p, dst.get()), 0);
            const auto after = samples(*dst);
            const Landing landing(r, p, std::min(a->width, b->width), std::min(a->height, b->height));
            const bool clears = (mode == 3 || mode == 5) && landing.any(*dst);
            for (const auto& [x, y] : places(dst->width, dst->height)) {
                const auto at = [x = x - landing.dx, y = y - landing.dy](const std::vector<double>& all, int width) {
                    return all[static_cast<std::size_t>(y * width + x)];
                };
                const auto i = static_cast<std::size_t>(y * dst->width + x);
                const double want = landing.lands(x, y) ? blended(at(va, a->width), at(vb, b->width), before[i], depth)
                                    : clears && !landing.over(x, y) ? 0
                                                                    : before[i];
                ASSERT_EQ(after[i], want) << x << ", " << y << " depth " << depth << " mode " << mode;
            }
        }
    }
}

TEST(UnoCombine, DeepSamplesBecomeThoseOfAnotherDepth) {
    const auto nearest = [](int s, int precision) {
        const int by = precision == 1 || precision == 4 || precision == 8 ? precision : 16;
        return std::floor(s / static_cast<double>(by) + 0.5);
    };
    const M_LRect rects[] = {{-5, -5, 999, 999}, {3, 2, 201, 200}, {500, 0, 600, 3}};
    const Buffer src = counting(259, 256, 16);
    const auto from = samples(*src);
    for (const auto& [level, depth, precision, rect] :
         each(kLevels, std::array{8, 16, 32}, std::array{1, 2, 4, 8, 16, -3}, rects)) {
        const Born born(1, level);
        QX_UnoBuffer dst(200, 254, depth);
        set_samples(dst, [](int, int) { return 7; });
        ASSERT_EQ(QX_ConvertDeepUnoBuffer(nullptr, src.get(), &rect, precision, &dst), 0);
        const auto made = samples(dst);
        for (const auto& [x, y] : places(200, 254)) {
            const double s = from[static_cast<std::size_t>(y * 259 + x)],
                         whole = nearest(static_cast<int>(s), precision);
            const float real = static_cast<float>(s) * static_cast<float>(1.0 / precision);
            const double want = !holds(rect, x, y) ? 7
                                : depth == 32      ? static_cast<double>(real)
                                : depth == 8       ? std::fmod(whole, 256)
                                                   : whole;
            ASSERT_EQ(made[static_cast<std::size_t>(y * 200 + x)], want) << s << " by " << precision;
        }
    }
}

TEST(UnoCombine, ShortFormsAreTheGeneralOne) {
    const Born born(1);
    const M_LRect rect{5, 1, 40, 9};
    const M_LPoint point{2, 3}, corner{5, 1};
    const auto made = [&](const auto& call) {
        const Buffer src = counting(50, 12, 8), dst = made_of(60, 14, 8, [](int x, int) { return 4 * x; });
        EXPECT_EQ(call(src.get(), dst.get()), 0);
        return samples(*dst);
    };
    EXPECT_EQ(made([&](auto* s, auto* d) { return QX_AccumulateUnoBuffers(nullptr, s, 2, &rect, &point, d); }),
              made(Accumulate{.mode = 2, .rect = &rect, .point = &point}));
    EXPECT_EQ(made([&](auto* s, auto* d) { return QX_AccumulateUnoBuffers(nullptr, s, 2, &rect, d); }),
              made(Accumulate{.mode = 2, .rect = &rect, .point = &corner}));
}

TEST(UnoCombine, FarRectanglesAndPointsDoNotWrap) {
    const Born born(1);
    const M_LRect all{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, behind{5, 5, INT_MAX, INT_MAX};
    const M_LPoint least{INT_MIN, INT_MIN}, most{INT_MAX, INT_MAX};
    const Buffer src = counting(9, 9, 8), start = made_of(9, 9, 8, [](int x, int y) { return x * y; });
    const auto result = [&](bool blends, const M_LRect* r, const M_LPoint* p) {
        const Buffer dst = made_of(9, 9, 8, [](int x, int y) { return x * y; });
        EXPECT_EQ(blends ? QX_TransferUnoBuffers(nullptr, src.get(), src.get(), 3, r, p, dst.get())
                         : QX_AccumulateUnoBuffers(nullptr, src.get(), 3, r, p, dst.get()),
                  0);
        return samples(*dst);
    };
    for (const bool blends : {false, true}) {
        EXPECT_NE(result(blends, nullptr, nullptr), samples(*start));
        EXPECT_EQ(result(blends, &all, &least), result(blends, nullptr, nullptr)) << "the corner on itself";
        EXPECT_EQ(result(blends, &all, &most), samples(*start));
        EXPECT_EQ(result(blends, &behind, &least), samples(*start));
        EXPECT_EQ(result(blends, &behind, &most), samples(*start));
    }
}

TEST(UnoCombine, RefusalsLeaveTheDestination) {
    const Born born(1);
    const Buffer good = counting(3, 3, 8), deep = counting(3, 3, 16), dst = counting(3, 3, 8);
    QX_UnoBuffer real(3, 3, 32);
    DamagedBuffers damaged;
    const auto accumulate = [](const QX_UnoBuffer* s, int mode, QX_UnoBuffer* d, float opacity = 1) {
        return [=] { return Accumulate{.mode = mode, .opacity = opacity}(s, d); };
    };
    const auto transfer = [](const QX_UnoBuffer* a, const QX_UnoBuffer* b, QX_UnoBuffer* d) {
        return [=] { return QX_TransferUnoBuffers(nullptr, a, b, 7, nullptr, nullptr, d); };
    };
    const auto convert = [](const QX_UnoBuffer* s, int precision, QX_UnoBuffer* d) {
        return [=] { return QX_ConvertDeepUnoBuffer(nullptr, s, nullptr, precision, d); };
    };
    for (QX_UnoBuffer* const bad : damaged.all()) {
        expect_refused(
            "damaged mask buffer",
            {accumulate(bad, 7, dst.get()), accumulate(good.get(), 7, bad), transfer(bad, good.get(), dst.get()),
             transfer(good.get(), bad, dst.get()), transfer(good.get(), good.get(), bad), convert(bad, 1, dst.get()),
             convert(deep.get(), 1, bad)});
    }
    expect_refused("damaged mask buffer",
                   {accumulate(&real, 7, dst.get()), accumulate(good.get(), 7, &real), accumulate(&real, 7, &real),
                    transfer(deep.get(), good.get(), dst.get()), transfer(good.get(), deep.get(), dst.get()),
                    transfer(good.get(), good.get(), deep.get())});
    expect_refused(kBadParameter, {accumulate(good.get(), -2, dst.get()), accumulate(good.get(), 8, dst.get()),
                                   accumulate(good.get(), 8, dst.get(), 0.5f), accumulate(deep.get(), 7, dst.get()),
                                   accumulate(good.get(), 1, deep.get()), accumulate(good.get(), 3, deep.get(), 0.5f),
                                   convert(deep.get(), 0, &real)});
    EXPECT_EQ(samples(*dst), samples(*good));
    EXPECT_EQ(QX_ConvertDeepUnoBuffer(nullptr, good.get(), nullptr, 1, nullptr), 0) << "not deep: nothing to do";
    EXPECT_EQ(QX_ConvertDeepUnoBuffer(nullptr, &real, nullptr, 1, dst.get()), 0);
}

/// Calls that go over `rows` rows of a buffer of 400 samples a row.
std::vector<std::function<int(const QX_ProgressInfo*, QX_UnoBuffer*)>> long_calls(const QX_UnoBuffer* src,
                                                                                  const QX_UnoBuffer* deep) {
    return {[=](auto* info, auto* dst) { return Accumulate{.mode = 3}(src, dst, info); },
            [=](auto* info, auto* dst) { return Accumulate{.mode = 1, .opacity = 0.7f}(src, dst, info); },
            [=](auto* info, auto* dst) { return QX_TransferUnoBuffers(info, src, src, 5, nullptr, nullptr, dst); },
            [=](auto* info, auto* dst) { return QX_ConvertDeepUnoBuffer(info, deep, nullptr, 8, dst); }};
}

TEST(UnoCombine, ProgressIsAskedEvery64RowsAndEndsTheWorkWithWholeRowsDone) {
    const Born born(1);
    const Buffer src = made_of(400, 300, 8, [](int, int) { return 99; });
    const Buffer deep = made_of(400, 300, 16, [](int, int) { return 99; });
    for (const auto& call : long_calls(src.get(), deep.get())) {
        const Buffer dst = made_of(420, 300, 8, [](int, int) { return 200; });
        Polls polls{.stop_at = 1};
        const QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
        EXPECT_EQ(call(&info, dst.get()), 517);
        EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{63, 300}, {127, 300}}));
        const auto made = samples(*dst);
        for (int i = 0; i < 420 * 300; ++i) {
            const bool done = i < 420 * 128 && i % 420 < 400;
            ASSERT_EQ(made[static_cast<std::size_t>(i)] != 200, done) << i % 420 << ", " << i / 420;
        }
    }
}

TEST(UnoBands, AnyNumberGivesTheSameBitsAndNoAllocationFailsUnheard) {
    const Buffer src = counting(400, 300, 8), deep = counting(400, 300, 16);
    std::map<std::size_t, std::vector<double>> one;
    for (const int bands : {1, 2, 7, 32}) {
        const Born born(bands);
        const auto calls = long_calls(src.get(), deep.get());
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const auto made = [&] { return made_of(420, 310, 8, [](int x, int y) { return x + 3 * y; }); };
            const Buffer dst = made();
            EXPECT_EQ(calls[i](nullptr, dst.get()), 0);
            if (bands == 1) one[i] = samples(*dst);
            EXPECT_EQ(samples(*dst), one[i]) << "call " << i << " bands " << bands;
            int code = 4;
            for (int nth = 1; code == 4; ++nth) {
                const Reports reports;
                const Buffer again = made();
                NewCounter::fail(nth);
                code = calls[i](nullptr, again.get());
                NewCounter::fail(0);
                EXPECT_TRUE(code == 0 || code == 4);
                if (code == 0) {
                    EXPECT_EQ(samples(*again), one[i]);
                }
            }
        }
    }
}

TEST(UnoBands, NoiseOnManyThreadsKeepsItsBounds) {
    const Born born(32);
    const Buffer src = made_of(400, 300, 8, [](int, int) { return 128; }),
                 dst = made_of(400, 300, 8, [](int, int) { return 0; });
    ASSERT_EQ(Accumulate{.mode = -1}(src.get(), dst.get()), 0);
    const auto made = samples(*dst);
    EXPECT_TRUE(std::all_of(made.begin(), made.end(), [](double d) { return d == 127 || d == 128; }));
}

}  // namespace
}  // namespace qx::test
