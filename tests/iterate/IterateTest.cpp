// SPDX-License-Identifier: Apache-2.0
#include "tests/iterate/IterateSupport.h"

namespace {

using namespace qx::test;
using Pairs = std::vector<std::pair<int, int>>;

/// The forms of the family by the type of one. QX_Iterate takes no origin.
using OriginFn = decltype(&QX_IterateOrigin);
int without_origin(QX_InData* in, std::int32_t base, std::int32_t total, QX_LayerDef* src, const M_LRect* area,
                   const M_LPoint*, void* refcon, QX_IteratePixelFunc pixel, QX_LayerDef* dst) {
    return QX_Iterate(in, base, total, src, area, refcon, pixel, dst);
}
OriginFn no_clip() { return qx::slot<qx::Slot::IterateOriginNoClip>(); }

int mapped(QX_InData* in, int total, QX_LayerDef* src, const M_LRect* area, QX_LayerDef* dst) {
    return QX_IterateLUT(in, 0, total, src, area, nullptr, nullptr, nullptr, nullptr, dst);
}

/// What a call did: the pixels in the order of their visits, and the counts that were polled.
struct Trace {
    Pairs visits{}, polls{};
    std::vector<void*> ins{};
    std::map<int, int> answers{};  ///< of a poll, by count
    std::pair<int, int> stop_at{-1, -1};
    QX_InData data{};

    Trace() { data.effect_ref = this, data.progress = &progress; }
    Trace(Trace&&) = delete;

    static int pixel(void* refcon, std::int32_t x, std::int32_t y, void* in, void*) {
        auto& self = *static_cast<Trace*>(refcon);
        self.visits.emplace_back(x, y);
        self.ins.push_back(in);
        return self.stop_at == std::pair<int, int>(x, y) ? 77 : 0;
    }
    static int progress(void* refcon, std::int32_t count, std::int32_t total) {
        auto& self = *static_cast<Trace*>(refcon);
        self.polls.emplace_back(count, total);
        return self.answers.count(count) != 0 ? self.answers[count] : 0;
    }
    int run(OriginFn form, int base, int total, QX_LayerDef* src, const M_LRect* area, QX_LayerDef* dst,
            const M_LPoint& origin = {0, 0}) {
        return form(&data, base, total, src, area, &origin, this, &pixel, dst);
    }
};

TEST(Iterate, ClipsToAreaAndBothWorlds) {
    // Columns: name, area, size of the source or 0 for none, how many pixels are visited and how many rows polled
    const Cases<Text, M_LRect, int, int, std::size_t, std::size_t> cases = {
        {"inside", {1, 1, 3, 2}, 0, 0, 2, 1},
        {"over edges", {-9, -9, 90, 90}, 0, 0, 24, 4},
        {"small source", {0, 0, 6, 4}, 3, 2, 6, 2},
        {"left at the width", {6, 0, 9, 3}, 0, 0, 0, 3},
        {"left past the width", {7, 0, 9, 3}, 0, 0, 0, 0},
        {"right below 1", {-5, 0, 0, 3}, 0, 0, 0, 0},
        {"bottom below 1", {0, -5, 3, 0}, 0, 0, 0, 0},
        {"top past the height", {0, 5, 3, 9}, 0, 0, 0, 0},
        {"left at the source's", {3, 0, 6, 4}, 3, 4, 0, 4},
        {"left past the source's", {4, 0, 6, 4}, 3, 4, 0, 0},
        {"top past the source's", {0, 3, 6, 4}, 6, 2, 0, 0},
        {"inverted", {4, 3, 2, 1}, 0, 0, 0, 0}};
    const Born born(1);
    for (const auto& [name, area, width, height, pixels, rows] : cases) {
        SCOPED_TRACE(name);
        Picture<QX_Pixel8> dst(6, 4), src(width, height);
        Trace trace;
        EXPECT_EQ(trace.run(&without_origin, 0, 9, width != 0 ? &src.record : nullptr, &area, &dst.record), 0);
        EXPECT_TRUE(trace.visits.size() == pixels && trace.polls.size() == rows);
        EXPECT_TRUE(pixels == 0 || trace.visits.front() == std::pair(std::max(area.left, 0), std::max(area.top, 0)));
    }
}

TEST(Iterate, CodesOfPixelsAndPolls) {
    // Columns: name, answers, where a pixel stops, code, visits
    const Cases<Text, std::map<int, int>, std::pair<int, int>, int, std::size_t> cases = {
        {"a pixel stops", {}, {1, 0}, 77, 2},
        {"interrupted", {{2, 517}}, {-1, -1}, 517, 6},
        {"an answer that is not the last row's is lost", {{1, 1}, {2, 9}, {3, 0}}, {-1, -1}, 0, 9},
        {"the last row's is the result", {{1, 1}, {3, 8}}, {-1, -1}, 8, 9},
    };
    const Born born(1);
    Picture<QX_Pixel8> dst(3, 3), src(3, 3);
    Trace based;
    EXPECT_EQ(based.run(&without_origin, 0, 0, nullptr, nullptr, &dst.record), 0);
    EXPECT_TRUE(based.polls.empty()) << "a total of 0 asks for none";
    EXPECT_EQ(based.run(&without_origin, 10, 100, nullptr, nullptr, &dst.record), 0);
    EXPECT_EQ(based.polls, (Pairs{{11, 100}, {12, 100}, {13, 100}}));
    based.data.progress = nullptr;
    EXPECT_EQ(based.run(&without_origin, 10, 100, nullptr, nullptr, &dst.record), 0);
    for (const auto& [name, answers, stop_at, code, visits] : cases) {
        SCOPED_TRACE(name);
        Trace trace;
        trace.answers = answers, trace.stop_at = stop_at;
        for (const OriginFn form : {&without_origin, &QX_IterateOrigin}) {
            trace.visits.clear();
            EXPECT_EQ(trace.run(form, 0, 3, &src.record, nullptr, &dst.record), code);
            EXPECT_EQ(trace.visits.size(), visits);
        }
        EXPECT_TRUE(stop_at.first >= 0 || mapped(&trace.data, 3, nullptr, nullptr, &dst.record) == code);
    }
}

template <class Pixel> using OriginForms = BornAtDepth<Pixel, 1>;
TYPED_TEST_SUITE(OriginForms, AllDepths);

TYPED_TEST(OriginForms, VisitWhatLiesUnderTheSource) {
    Picture<TypeParam> dst(6, 4), src(3, 2);
    constexpr int least = INT32_MIN, most = INT32_MAX;
    // Columns: the origin, and the size that the source tells
    const Cases<int, int, int, int> cases = {
        {0, 0, 3, 2},        {-1, -1, 3, 2},         {2, 3, 3, 2},        {5, 0, 3, 2},  {-5, 0, 3, 2},
        {6, 4, 3, 2},        {2, 2, -3, -3},         {-1, -1, -3, 2},     {2, 0, 3, -2}, {0, 0, 0, 2},
        {most, least, 3, 2}, {least, least, -3, -3}, {most, most, -3, -3}};
    for (const auto& [c, area] : each(cases, std::array{M_LRect{0, 0, 6, 4}, M_LRect{-3, 1, 4, 9}})) {
        const auto& [left, top, width, height] = c;
        const M_LPoint origin{left, top}, size{width, height};
        src.record.width = size.x, src.record.height = size.y;
        SCOPED_TRACE(testing::Message() << "origin " << origin.x << "," << origin.y);
        Trace clipped, all;
        EXPECT_EQ(clipped.run(&QX_IterateOrigin, 0, 0, &src.record, &area, &dst.record, origin), 0);
        EXPECT_EQ(all.run(no_clip(), 0, 0, &src.record, &area, &dst.record, origin), 0);
        Pairs visits, visits_covered;
        std::vector<void*> ins, ins_covered;
        for (const auto& [x, y] : places(6, 4)) {
            if (!holds(area, x, y)) continue;
            const std::int64_t sx = std::int64_t{x} - origin.x, sy = std::int64_t{y} - origin.y;
            visits.emplace_back(x, y);
            if (sx >= 0 && sy >= 0 && sx < size.x && sy < size.y) {
                visits_covered.emplace_back(x, y);
                ins_covered.push_back(&src.at(static_cast<int>(sx), static_cast<int>(sy)));
                ins.push_back(ins_covered.back());
            } else {  // a pixel that is gone by now, but no pixel of the source
                ASSERT_LT(ins.size(), all.ins.size());
                ins.push_back(all.ins[ins.size()]);
                ASSERT_NE(ins.back(), nullptr);
                ASSERT_TRUE(ins.back() < &src.pixels.front() || ins.back() > &src.pixels.back());
            }
        }
        EXPECT_TRUE(all.visits == visits && all.ins == ins);
        EXPECT_TRUE(clipped.visits == visits_covered && clipped.ins == ins_covered);
    }
}

TEST(IterateOrigin, RowsWithoutColumnsMakeNoPolls) {
    const Born born(1);
    Picture<QX_Pixel8> dst(6, 4);
    const M_LRect at_the_edge{6, 0, 9, 3};
    Trace trace;
    for (const OriginFn form : {&QX_IterateOrigin, no_clip()}) {
        EXPECT_EQ(trace.run(form, 0, 3, nullptr, &at_the_edge, &dst.record), 0);
        EXPECT_TRUE(trace.polls.empty());
    }
    EXPECT_EQ(mapped(&trace.data, 3, nullptr, &at_the_edge, &dst.record), 0);
    EXPECT_EQ(trace.polls.size(), 3u) << "as in QX_Iterate";
}

TEST(IterateOrigin, OutsideIsTransparentAndNoSourceIsNull) {
    const Born born(1);
    Picture<QX_PixelFloat> dst(4, 4), src(4, 4);
    for (auto& p : src.pixels) p = {1, 1, 1, 1};
    const M_LPoint beside{4, 0};
    const auto is_clear = [](void*, std::int32_t, std::int32_t, void* in, void*) {
        return *static_cast<QX_PixelFloat*>(in) == QX_PixelFloat{} ? 0 : 1;
    };
    EXPECT_EQ(no_clip()(nullptr, 0, 0, &src.record, nullptr, &beside, nullptr, is_clear, &dst.record), 0);
    for (const OriginFn form : {&QX_IterateOrigin, no_clip()}) {
        Trace trace;
        EXPECT_EQ(trace.run(form, 0, 0, nullptr, nullptr, &dst.record, {1, 1}), 0);
        EXPECT_EQ(trace.ins, std::vector<void*>(16, nullptr));
    }
}

/// A source that is a part of a larger picture ends where it ends.
TEST(IterateOrigin, WhatLiesAroundAPartIsNotSeen) {
    const Born born(1);
    Picture<QX_PixelFloat> dst(6, 6), around(6, 6);
    for (auto& p : around.pixels) p = {1, 1, 1, 1};
    QX_LayerDef part = around.record;
    part.data = &around.at(2, 2), part.width = 2, part.height = 2;
    const auto count_set = [](void* set, std::int32_t, std::int32_t, void* in, void*) {
        *static_cast<int*>(set) += *static_cast<QX_PixelFloat*>(in) == QX_PixelFloat{} ? 0 : 1;
        return 0;
    };
    for (const M_LPoint& origin : places(5, 5)) {
        int set = 0;
        EXPECT_EQ(no_clip()(nullptr, 0, 0, &part, nullptr, &origin, &set, count_set, &dst.record), 0);
        EXPECT_EQ(set, 4) << "origin " << origin.x << ", " << origin.y;
    }
}

TEST(Iterate, BadArguments) {
    const Born born(1);
    Picture<QX_Pixel8> dst(4, 4), src(4, 4);
    Picture<QX_Pixel16> deep(4, 4);
    BadWorlds bad;
    QX_LayerDef *const s = &src.record, *const d = &dst.record;
    Trace trace;
    const auto pixel = &Trace::pixel;
    static constexpr M_LPoint origin{0, 0};
    const std::string depths = "QX_Iterate requires source and dst worlds to be same depth";
    for (const OriginFn form : {&QX_IterateOrigin, no_clip(), &without_origin}) {
        const auto call = [&](QX_LayerDef* from, QX_LayerDef* to, QX_IteratePixelFunc fn) {
            return [=, &trace] { return form(nullptr, 0, 0, from, nullptr, &origin, &trace, fn, to); };
        };
        expect_refused(kOnGpu, {call(&bad.gpu, d, pixel), call(&bad.empty, &bad.gpu, nullptr)});
        expect_refused(kBadParameter, {call(&bad.empty, d, pixel), call(s, nullptr, pixel),
                                       call(nullptr, &bad.empty, pixel), call(nullptr, d, nullptr)});
        expect_refused(depths, {call(&deep.record, d, pixel)});
    }
    const auto lut = [](QX_LayerDef* from, QX_LayerDef* to) {
        return [=] { return mapped(nullptr, 0, from, nullptr, to); };
    };
    expect_refused(kBadParameter, {lut(&deep.record, d), lut(nullptr, &deep.record)});
    expect_refused(kOnGpu, {lut(nullptr, &bad.gpu)});
    Picture<QX_PixelFloat> real(4, 4);
    EXPECT_EQ(lut(nullptr, &real.record)(), 0) << "deep worlds are refused, float is not seen";
    EXPECT_TRUE(trace.visits.empty());
}

TEST(IterateLUT, MapsEveryChannelThroughItsTable) {
    const Born born(1);
    Picture<QX_Pixel8> src(16, 16), dst(16, 20);
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    for (int i = 0; i < 256; ++i) src.at(i % 16, i / 16) = {byte(i), byte(i ^ 0x55), byte(255 - i), byte(i * 7)};
    std::uint8_t tables[4][256];
    for (const auto& [i, t] : places(256, 4)) tables[t][i] = byte(i * (2 * t + 3) + t);
    for (int given = 0; given < 16; ++given) {  // each subset of the four tables
        SCOPED_TRACE(given);
        const auto table = [&](int t) { return (given >> t & 1) != 0 ? tables[t] : nullptr; };
        const auto map = [&](int t, std::uint8_t v) { return (given >> t & 1) != 0 ? byte(v * (2 * t + 3) + t) : v; };
        const auto run = [&](QX_LayerDef* from, QX_LayerDef* to) {
            return QX_IterateLUT(nullptr, 0, 0, from, nullptr, table(0), table(1), table(2), table(3), to);
        };
        Picture<QX_Pixel8> place = src;
        place.record.data = place.pixels.data();
        EXPECT_EQ(run(&src.record, &dst.record), 0);
        EXPECT_EQ(run(nullptr, &place.record), 0);
        for (const auto& [x, y] : places(16, 16)) {
            const QX_Pixel8 s = src.at(x, y), want{map(0, s.alpha), map(1, s.red), map(2, s.green), map(3, s.blue)};
            ASSERT_EQ(dst.at(x, y), want);
            ASSERT_EQ(place.at(x, y), want);
        }
        EXPECT_EQ(dst.at(3, 17).alpha, 0);
    }
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
    for (const auto& [bands, height] : each(std::array{1, 2, 7, 32}, std::array{1, 5, 31, 32, 33, 100})) {
        SCOPED_TRACE(bands);
        const Born born(bands);
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

TEST(Iterate, ExceptionsEndAtTheBoundary) {
    for (const int bands : {1, 32}) {
        SCOPED_TRACE(bands);
        const Born born(bands);
        Reports reports;
        Picture<QX_Pixel8> dst(5, 40);
        const auto pixel = [](void* refcon, std::int32_t, std::int32_t, void*, void*) -> int {
            if (refcon == nullptr) throw std::bad_alloc();
            throw *static_cast<int*>(refcon);
        };
        for (int code : {514, 0})
            EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, &code, pixel, &dst.record), code);
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, pixel, &dst.record), 4);
    }
}

int nothing(void*, std::int32_t, std::int32_t, void*, void*) { return 0; }
int iterate_nothing(Picture<QX_Pixel8>& world) {
    return QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record);
}

TEST(AcceleratedIterate, AllocationsDoNotGrowWithRowsOrPixels) {
    const Born born(32);
    const WithExecutor in_turn(&run_in_turn);
    const auto allocations = [](int width, int height) {
        Picture<QX_Pixel8> world(width, height);
        const std::int64_t before = NewCounter::count(), host = standalone::Memory().allocations;
        EXPECT_EQ(iterate_nothing(world), 0);
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
    ASSERT_EQ(iterate_nothing(world), 0);  // the pool sets itself up on first use; what it allocates is not the call's
    int failures = 0;
    for (int nth = 1; nth < 20; ++nth) {
        NewCounter::fail(nth);
        const int code = iterate_nothing(world);
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4) << code;
        failures += code != 0 ? 1 : 0;
    }
    EXPECT_GE(failures, 1);
}

}  // namespace
