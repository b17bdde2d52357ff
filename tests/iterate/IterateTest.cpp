// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_Iterate.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <utility>

#include "QX/indep/QX_Slots.h"
#include "tests/iterate/IterateSupport.h"
#include "tests/support/Refusals.h"

namespace {

using namespace qx::test;

/// What a call did: the pixels in the order of their visits, and the counts that were polled.
struct Trace {
    std::vector<std::pair<int, int>> visits{};
    std::vector<void*> ins{};
    std::vector<std::pair<int, int>> polls{};
    std::map<int, int> answers{};  ///< of a poll, by count
    std::pair<int, int> stop_at{-1, -1};
    int stop_code = 0;

    static int pixel(void* refcon, std::int32_t x, std::int32_t y, void* in, void*) {
        auto& self = *static_cast<Trace*>(refcon);
        self.visits.emplace_back(x, y);
        self.ins.push_back(in);
        return self.stop_at == std::pair<int, int>(x, y) ? self.stop_code : 0;
    }
    static int progress(void* refcon, std::int32_t count, std::int32_t total) {
        auto& self = *static_cast<Trace*>(refcon);
        self.polls.emplace_back(count, total);
        const auto found = self.answers.find(count);
        return found != self.answers.end() ? found->second : 0;
    }
    QX_InData in_data() {
        QX_InData data{};
        data.effect_ref = this;
        data.progress = &progress;
        return data;
    }
};

TEST(Iterate, ClipsToAreaAndBothWorlds) {
    struct Case {
        const char* name;
        M_LRect area;
        int src_width, src_height;  // 0: no source
        int columns, rows;          // what is visited, and how many rows are polled
        int rows_polled;
    };
    const Case cases[] = {
        {"inside", {1, 1, 3, 2}, 0, 0, 2, 1, 1},
        {"over all edges", {-9, -9, 90, 90}, 0, 0, 6, 4, 4},
        {"source is smaller", {0, 0, 6, 4}, 3, 2, 3, 2, 2},
        {"left at the width keeps its polls", {6, 0, 9, 3}, 0, 0, 0, 0, 3},
        {"left past the width", {7, 0, 9, 3}, 0, 0, 0, 0, 0},
        {"right below 1", {-5, 0, 0, 3}, 0, 0, 0, 0, 0},
        {"bottom below 1", {0, -5, 3, 0}, 0, 0, 0, 0, 0},
        {"top past the height", {0, 5, 3, 9}, 0, 0, 0, 0, 0},
        {"left at the source's width", {3, 0, 6, 4}, 3, 4, 0, 0, 4},
        {"left past the source's width", {4, 0, 6, 4}, 3, 4, 0, 0, 0},
        {"top past the source's height", {0, 3, 6, 4}, 6, 2, 0, 0, 0},
        {"inverted", {4, 3, 2, 1}, 0, 0, 0, 0, 0},
    };
    const Born born(1);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Picture<QX_Pixel8> dst(6, 4), src(c.src_width, c.src_height);
        Trace trace;
        QX_InData data = trace.in_data();
        EXPECT_EQ(QX_Iterate(&data, 0, 9, c.src_width != 0 ? &src.record : nullptr, &c.area, &trace, &Trace::pixel,
                             &dst.record),
                  0);
        EXPECT_EQ(trace.visits.size(), static_cast<std::size_t>(c.columns * c.rows));
        EXPECT_EQ(trace.polls.size(), static_cast<std::size_t>(c.rows_polled));
        if (c.rows != 0) {
            EXPECT_EQ(trace.visits.front(), std::pair(std::max(c.area.left, 0), std::max(c.area.top, 0)));
        }
    }
}

TEST(Iterate, CodesOfPixelsAndPolls) {
    struct Case {
        const char* name;
        std::map<int, int> answers;
        std::pair<int, int> stop_at;
        int code;
        std::size_t visits;
    };
    const Case cases[] = {
        {"a pixel stops", {}, {1, 0}, 77, 2},
        {"interrupted", {{2, 517}}, {-1, -1}, 517, 6},
        {"an answer that is not the last row's is lost", {{1, 1}, {2, 9}, {3, 0}}, {-1, -1}, 0, 9},
        {"the last row's is the result", {{1, 1}, {3, 8}}, {-1, -1}, 8, 9},
    };
    const Born born(1);
    Picture<QX_Pixel8> dst(3, 3), src(3, 3);
    const std::uint8_t* none = nullptr;
    const std::vector<std::pair<int, int>> from_a_base{{11, 100}, {12, 100}, {13, 100}};
    Trace based;
    QX_InData of_base = based.in_data();
    EXPECT_EQ(QX_Iterate(&of_base, 0, 0, nullptr, nullptr, &based, &Trace::pixel, &dst.record), 0);
    EXPECT_TRUE(based.polls.empty()) << "a total of 0 asks for none";
    EXPECT_EQ(QX_Iterate(&of_base, 10, 100, nullptr, nullptr, &based, &Trace::pixel, &dst.record), 0);
    EXPECT_EQ(based.polls, from_a_base);
    of_base.progress = nullptr;
    EXPECT_EQ(QX_Iterate(&of_base, 10, 100, nullptr, nullptr, &based, &Trace::pixel, &dst.record), 0);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Trace trace;
        trace.answers = c.answers;
        trace.stop_at = c.stop_at;
        trace.stop_code = 77;
        QX_InData data = trace.in_data();
        const M_LPoint origin{0, 0};
        EXPECT_EQ(QX_Iterate(&data, 0, 3, &src.record, nullptr, &trace, &Trace::pixel, &dst.record), c.code);
        EXPECT_EQ(trace.visits.size(), c.visits);
        EXPECT_EQ(QX_IterateOrigin(&data, 0, 3, &src.record, nullptr, &origin, &trace, &Trace::pixel, &dst.record),
                  c.code);
        EXPECT_EQ(trace.visits.size(), 2 * c.visits);
        if (c.stop_at.first >= 0) continue;
        EXPECT_EQ(QX_IterateLUT(&data, 0, 3, nullptr, nullptr, none, none, none, none, &dst.record), c.code);
    }
}

template <class Pixel> void check_origin_forms() {
    Picture<Pixel> dst(6, 4), src(3, 2);
    const auto no_clip = qx::slot<qx::Slot::IterateOriginNoClip>();
    using Point = M_LPoint;
    const std::pair<Point, Point> cases[] = {// of the origin, and the size that the source tells
                                             {{0, 0}, {3, 2}},
                                             {{-1, -1}, {3, 2}},
                                             {{2, 3}, {3, 2}},
                                             {{5, 0}, {3, 2}},
                                             {{-5, 0}, {3, 2}},
                                             {{6, 4}, {3, 2}},
                                             {{2, 2}, {-3, -3}},
                                             {{-1, -1}, {-3, 2}},
                                             {{2, 0}, {3, -2}},
                                             {{0, 0}, {0, 2}},
                                             {{INT32_MAX, INT32_MIN}, {3, 2}},
                                             {{INT32_MIN, INT32_MIN}, {-3, -3}},
                                             {{INT32_MAX, INT32_MAX}, {-3, -3}}};
    for (const auto& [origin, size] : cases) {
        src.record.width = size.x, src.record.height = size.y;
        for (const M_LRect area : {M_LRect{0, 0, 6, 4}, {-3, 1, 4, 9}}) {
            SCOPED_TRACE(testing::Message() << sizeof(Pixel) << " origin " << origin.x << "," << origin.y);
            Trace clipped, all;
            EXPECT_EQ(
                QX_IterateOrigin(nullptr, 0, 0, &src.record, &area, &origin, &clipped, &Trace::pixel, &dst.record), 0);
            EXPECT_EQ(no_clip(nullptr, 0, 0, &src.record, &area, &origin, &all, &Trace::pixel, &dst.record), 0);
            std::size_t next = 0, next_covered = 0;
            for (int y = std::max(area.top, 0); y < std::min(area.bottom, 4); ++y) {
                for (int x = std::max(area.left, 0); x < std::min(area.right, 6); ++x, ++next) {
                    ASSERT_LT(next, all.visits.size());
                    ASSERT_EQ(all.visits[next], std::pair(x, y));
                    const std::int64_t sx = std::int64_t{x} - origin.x, sy = std::int64_t{y} - origin.y;
                    const bool covered = sx >= 0 && sy >= 0 && sx < size.x && sy < size.y;
                    if (!covered) {  // a pixel that is gone by now, but no pixel of the source
                        ASSERT_NE(all.ins[next], nullptr);
                        ASSERT_TRUE(all.ins[next] < &src.pixels.front() || all.ins[next] > &src.pixels.back());
                        continue;
                    }
                    void* expected = &src.at(static_cast<int>(sx), static_cast<int>(sy));
                    ASSERT_EQ(all.ins[next], expected);
                    ASSERT_LT(next_covered, clipped.visits.size());
                    ASSERT_EQ(clipped.visits[next_covered], std::pair(x, y));
                    ASSERT_EQ(clipped.ins[next_covered++], expected);
                }
            }
            EXPECT_EQ(all.visits.size(), next);
            EXPECT_EQ(clipped.visits.size(), next_covered);
        }
    }
}

TEST(IterateOrigin, VisitsWhatLiesUnderTheSource) {
    const Born born(1);
    check_origin_forms<QX_Pixel8>();
    check_origin_forms<QX_Pixel16>();
    check_origin_forms<QX_PixelFloat>();
}

int expect_clear(void* refcon, std::int32_t, std::int32_t, void* in, void*) {
    for (std::size_t i = 0; i < sizeof(QX_PixelFloat); ++i) {
        if (static_cast<unsigned char*>(in)[i] != 0) ++*static_cast<int*>(refcon);
    }
    return 0;
}

TEST(IterateOrigin, RowsWithoutColumnsMakeNoPolls) {
    const Born born(1);
    Picture<QX_Pixel8> dst(6, 4);
    const M_LRect at_the_edge{6, 0, 9, 3};
    const M_LPoint origin{0, 0};
    Trace trace;
    QX_InData data = trace.in_data();
    for (auto* routine : {&QX_IterateOrigin, qx::slot<qx::Slot::IterateOriginNoClip>()}) {
        EXPECT_EQ(routine(&data, 0, 3, nullptr, &at_the_edge, &origin, &trace, &Trace::pixel, &dst.record), 0);
        EXPECT_TRUE(trace.polls.empty());
    }
    const std::uint8_t* none = nullptr;
    EXPECT_EQ(QX_IterateLUT(&data, 0, 3, nullptr, &at_the_edge, none, none, none, none, &dst.record), 0);
    EXPECT_EQ(trace.polls.size(), 3u) << "as in QX_Iterate";
}

TEST(IterateOrigin, OutsideIsTransparentAndNoSourceIsNull) {
    const Born born(1);
    Picture<QX_PixelFloat> dst(4, 4), src(4, 4);
    for (auto& p : src.pixels) p = {1, 1, 1, 1};
    const M_LPoint beside{4, 0}, origin{1, 1};
    int set_bytes = 0;
    EXPECT_EQ(qx::slot<qx::Slot::IterateOriginNoClip>()(nullptr, 0, 0, &src.record, nullptr, &beside, &set_bytes,
                                                        &expect_clear, &dst.record),
              0);
    EXPECT_EQ(set_bytes, 0);
    for (auto* routine : {&QX_IterateOrigin, qx::slot<qx::Slot::IterateOriginNoClip>()}) {
        Trace trace;
        EXPECT_EQ(routine(nullptr, 0, 0, nullptr, nullptr, &origin, &trace, &Trace::pixel, &dst.record), 0);
        EXPECT_EQ(trace.ins, std::vector<void*>(16, nullptr));
    }
}

TEST(Iterate, BadArguments) {
    const Born born(1);
    Picture<QX_Pixel8> dst(4, 4), src(4, 4);
    Picture<QX_Pixel16> deep(4, 4);
    BadWorlds bad;
    QX_LayerDef *const s = &src.record, *const d = &dst.record;
    Trace trace;
    const M_LPoint origin{0, 0};
    const auto pixel = &Trace::pixel;
    constexpr decltype(&QX_IterateOrigin) plain = nullptr;  // stands for the routine without an origin
    const std::string depths = "QX_Iterate requires source and dst worlds to be same depth";
    for (auto* routine : {&QX_IterateOrigin, qx::slot<qx::Slot::IterateOriginNoClip>(), plain}) {
        const auto call = [&](QX_LayerDef* from, QX_LayerDef* to, QX_IteratePixelFunc fn) {
            return [=, &trace, &origin] {
                return routine == plain ? QX_Iterate(nullptr, 0, 0, from, nullptr, &trace, fn, to)
                                        : routine(nullptr, 0, 0, from, nullptr, &origin, &trace, fn, to);
            };
        };
        expect_refused({{call(&bad.gpu, d, pixel), kOnGpu},
                        {call(&bad.empty, &bad.gpu, nullptr), kOnGpu},
                        {call(&bad.empty, d, pixel), kBadParameter},
                        {call(s, nullptr, pixel), kBadParameter},
                        {call(nullptr, &bad.empty, pixel), kBadParameter},
                        {call(nullptr, d, nullptr), kBadParameter},
                        {call(&deep.record, d, pixel), depths}});
    }
    EXPECT_TRUE(trace.visits.empty());
}

TEST(IterateLUT, MapsEveryChannelThroughItsTable) {
    const Born born(1);
    Picture<QX_Pixel8> src(16, 16), dst(16, 20);
    for (int i = 0; i < 256; ++i) {
        const auto v = static_cast<std::uint8_t>(i);
        src.at(i % 16, i / 16) = {v, static_cast<std::uint8_t>(v ^ 0x55), static_cast<std::uint8_t>(255 - v),
                                  static_cast<std::uint8_t>(v * 7)};
    }
    std::array<std::uint8_t, 256> tables[4];
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 256; ++i)
            tables[t][static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i * (2 * t + 3) + t);
    }
    for (int given = 0; given < 16; ++given) {  // each subset of the four tables
        SCOPED_TRACE(given);
        const auto table = [&](int t) { return (given >> t & 1) != 0 ? tables[t].data() : nullptr; };
        const auto map = [&](int t, int v) {
            return (given >> t & 1) != 0 ? static_cast<std::uint8_t>(v * (2 * t + 3) + t) : v;
        };
        EXPECT_EQ(
            QX_IterateLUT(nullptr, 0, 0, &src.record, nullptr, table(0), table(1), table(2), table(3), &dst.record), 0);
        Picture<QX_Pixel8> place = src;
        place.record.data = place.pixels.data();
        EXPECT_EQ(QX_IterateLUT(nullptr, 0, 0, nullptr, nullptr, table(0), table(1), table(2), table(3), &place.record),
                  0);
        for (int i = 0; i < 256; ++i) {
            for (auto* world : {&dst, &place}) {
                const QX_Pixel8 p = world->at(i % 16, i / 16), s = src.at(i % 16, i / 16);
                ASSERT_TRUE(p.alpha == map(0, s.alpha) && p.red == map(1, s.red) && p.green == map(2, s.green) &&
                            p.blue == map(3, s.blue));
            }
        }
        EXPECT_EQ(dst.at(3, 17).alpha, 0);
    }
}

TEST(IterateLUT, RefusesDeepWorldsButDoesNotSeeFloat) {
    const Born born(1);
    Picture<QX_Pixel8> dst(4, 4);
    Picture<QX_Pixel16> deep(4, 4);
    Picture<QX_PixelFloat> real(4, 4);
    BadWorlds bad;
    const auto lut = [](QX_LayerDef* s, QX_LayerDef* d) {
        return [=] { return QX_IterateLUT(nullptr, 0, 0, s, nullptr, nullptr, nullptr, nullptr, nullptr, d); };
    };
    expect_refused({{lut(&deep.record, &dst.record), kBadParameter},
                    {lut(nullptr, &deep.record), kBadParameter},
                    {lut(nullptr, &bad.gpu), kOnGpu}});
    EXPECT_EQ(lut(nullptr, &real.record)(), 0);
}

int add_one(void* refcon, std::int32_t x, std::int32_t y, void* in, void* out) {
    auto& seen = *static_cast<std::vector<int>*>(refcon);
    const auto* from = static_cast<QX_Pixel16*>(in);
    *static_cast<QX_Pixel16*>(out) = {static_cast<std::uint16_t>(from->alpha + 1), static_cast<std::uint16_t>(x),
                                      static_cast<std::uint16_t>(y), from->blue};
    ++seen[static_cast<std::size_t>(y * 61 + x)];
    return 0;
}

TEST(Iterate, EveryPixelOnceAtAnyBandCount) {
    for (const int bands : {1, 2, 7, 32}) {
        SCOPED_TRACE(bands);
        const Born born(bands);
        for (const int height : {1, 5, 31, 32, 33, 100}) {
            Picture<QX_Pixel16> world(61, height);
            std::vector<int> seen(static_cast<std::size_t>(61 * height));
            EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, &seen, &add_one, &world.record), 0);
            EXPECT_EQ(seen, std::vector<int>(seen.size(), 1));
            for (int y = 0; y < height; ++y) {
                const QX_Pixel16 p = world.at(y % 61, y);
                ASSERT_TRUE(p.alpha == 1 && p.red == y % 61 && p.green == y);
                ASSERT_EQ(world.at(61, y).alpha, 0) << "behind the row";
            }
        }
    }
}

int throw_code(void* refcon, std::int32_t, std::int32_t, void*, void*) { throw *static_cast<int*>(refcon); }
int throw_fault(void*, std::int32_t, std::int32_t, void*, void*) { throw std::bad_alloc(); }

TEST(Iterate, ExceptionsEndAtTheBoundary) {
    for (const int bands : {1, 32}) {
        SCOPED_TRACE(bands);
        const Born born(bands);
        Reports reports;
        Picture<QX_Pixel8> dst(5, 40);
        int code = 514;
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, &code, &throw_code, &dst.record), 514);
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, &code, &throw_fault, &dst.record), 4);
        code = 0;
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, &code, &throw_code, &dst.record), 0);
    }
}

int nothing(void*, std::int32_t, std::int32_t, void*, void*) { return 0; }

TEST(AcceleratedIterate, AllocationsDoNotGrowWithRowsOrPixels) {
    const Born born(32);
    const WithExecutor in_turn([](const boost::function<void(int)>& task, int count) {
        for (int i = 0; i < count; ++i) task(i);
    });
    const auto allocations = [](int width, int height) {
        Picture<QX_Pixel8> world(width, height);
        const std::int64_t before = NewCounter::count(), host = standalone::Memory().allocations;
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record), 0);
        return NewCounter::count() - before + standalone::Memory().allocations - host;
    };
    const std::int64_t few = allocations(8, 64);
    EXPECT_GT(few, 0);
    EXPECT_EQ(allocations(8, 2000), few);
    EXPECT_EQ(allocations(900, 64), few);
}

TEST(AcceleratedIterate, EveryAllocationFailsOnceAndGivesFour) {
    const Born born(8);
    Reports reports;
    Picture<QX_Pixel8> world(4, 40);
    // The pool sets itself up on first use; what it allocates then is not the call's.
    ASSERT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record), 0);
    int failures = 0;
    for (int nth = 1; nth < 20; ++nth) {
        NewCounter::fail(nth);
        const int code = QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record);
        const bool spent = code != 0;
        NewCounter::fail(0);
        if (spent) {
            EXPECT_EQ(code, 4);
        }
        failures += spent ? 1 : 0;
    }
    EXPECT_GE(failures, 1);
}

}  // namespace
