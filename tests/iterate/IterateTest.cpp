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

/// What a call did: pixels in the order of their visits, with what they were handed, and the counts that were polled.
template <class Pixel> struct Trace {
    static inline Pixel outside{};  ///< stands for any clear pixel beside the source
    std::vector<std::tuple<int, int, void*, void*>> visits{};
    Pairs polls{};
    int code = 0;
    std::array<int, 4> answers{};   ///< of the polls in turn
    std::pair<int, int> stop_at{};  ///< a pixel whose code is 77
    const Pixel *first{}, *last{};  ///< of the source

    int visit(int x, int y, void* in, void* out) {
        const bool beside = in != nullptr && in != out && (in < first || in > last);
        EXPECT_TRUE(!beside || *static_cast<Pixel*>(in) == Pixel{});
        visits.emplace_back(x, y, beside ? &outside : in, out);
        return stop_at == std::pair(x, y) ? 77 : 0;
    }
    int poll(int count, int total) {
        polls.emplace_back(count, total);
        return answers[polls.size() - 1];
    }
    static int pixel(void* refcon, std::int32_t x, std::int32_t y, void* in, void* out) {
        return static_cast<Trace*>(refcon)->visit(x, y, in, out);
    }
    static int progress(void* refcon, std::int32_t count, std::int32_t total) {
        return static_cast<Trace*>(refcon)->poll(count, total);
    }
};

template <class Pixel> using IterateForms = BornAtDepth<Pixel, 1>;
TYPED_TEST_SUITE(IterateForms, AllDepths);

/// Random areas, sources that are a part of a picture, places, codes and answers, with the ends of the scale among
/// them.
TYPED_TEST(IterateForms, VisitAndPollWhatTheyShould) {
    constexpr int kWidth = 6, kHeight = 4;
    Numbers below(31);
    const auto any = [&](int low, int high) {
        return below(0, 12) != 0 ? below(low, high) : below(0, 2) != 0 ? INT32_MIN : INT32_MAX;
    };
    Picture<TypeParam> dst(kWidth, kHeight), around(7, 6);
    for (auto* world : {&dst, &around}) fill_pixels<TypeParam>(world->pixels, FillKind::opaque, 1);
    for (int round = 0; round < 6000; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        const OriginFn form = std::array{&without_origin, &QX_IterateOrigin, no_clip()}[round % 3];
        const bool placed = round % 3 != 0, clips = round % 3 != 2, has_area = below(0, 4) != 0;
        QX_LayerDef src = around.record;
        src.data = &around.at(2, 2), src.width = below(-3, 5), src.height = below(-3, 4);
        QX_LayerDef* const source = below(0, 4) != 0 ? &src : nullptr;
        const M_LPoint origin{placed ? any(-5, 8) : 0, placed ? any(-5, 6) : 0};
        const M_LRect area =
            has_area ? M_LRect{any(-9, 9), any(-9, 7), any(-3, 12), any(-3, 9)} : M_LRect{0, 0, kWidth, kHeight};
        const int base = below(0, 2) * 10, total = below(0, 4) * 25;
        Trace<TypeParam> got{.stop_at = {below(0, 12), below(0, 4)}, .first = &around.at(2, 2)};
        got.last = &around.at(std::max(src.width, 1) + 1, std::max(src.height, 1) + 1);
        for (int& answer : got.answers) answer = std::array{0, 0, 0, 1, 9, 517}[below(0, 6)];
        Trace<TypeParam> want = got;
        QX_InData data{};
        data.effect_ref = &got, data.progress = below(0, 8) != 0 ? &Trace<TypeParam>::progress : nullptr;
        QX_InData* const in_data = below(0, 8) != 0 ? &data : nullptr;

        // An area that touches the right edge still polls for its rows, where there is no place for the source.
        const bool polls_anyway = !placed && area.right >= 1 && area.left <= kWidth &&
                                  (source == nullptr || !has_area || area.left <= src.width);
        int rows = 0;
        for (int y = 0; y < kHeight && want.code != 77 && want.code != 517; ++y) {
            const std::int64_t sy = std::int64_t{y} - origin.y;
            const bool in_rows = sy >= 0 && sy < src.height;
            bool polls = polls_anyway && y >= area.top && y < area.bottom && (source == nullptr || in_rows);
            for (int x = 0; x < kWidth && want.code != 77; ++x) {
                const std::int64_t sx = std::int64_t{x} - origin.x;
                const bool covered = in_rows && sx >= 0 && sx < src.width;
                if (!holds(area, x, y) || (source != nullptr && clips && !covered)) continue;
                void* const out = &dst.at(x, y);
                void* in = placed ? nullptr : out;
                if (source != nullptr) in = &want.outside;
                if (source != nullptr && covered) in = &around.at(static_cast<int>(sx) + 2, static_cast<int>(sy) + 2);
                want.code = want.visit(x, y, in, out);
                polls = true;
            }
            if (!polls || want.code == 77) continue;
            ++rows;
            const bool heard = total != 0 && in_data != nullptr && data.progress != nullptr;
            want.code = heard ? want.poll(base + rows, total) : 0;
        }
        EXPECT_EQ(form(in_data, base, total, source, has_area ? &area : nullptr, &origin, &got,
                       &Trace<TypeParam>::pixel, &dst.record),
                  want.code);
        EXPECT_EQ(got.visits, want.visits);
        EXPECT_EQ(got.polls, want.polls);
        if (!placed && want.code != 77 && sizeof(TypeParam) == 4) {
            got.polls.clear();
            EXPECT_EQ(QX_IterateLUT(in_data, base, total, source, has_area ? &area : nullptr, nullptr, nullptr, nullptr,
                                    nullptr, &dst.record),
                      want.code);
            EXPECT_EQ(got.polls, want.polls);
        }
        if (this->HasFailure()) return;
    }
}

TEST(Iterate, BadArguments) {
    const Born born(1);
    Picture<QX_Pixel8> dst(4, 4), src(4, 4);
    Picture<QX_Pixel16> deep(4, 4);
    BadWorlds bad;
    QX_LayerDef *const s = &src.record, *const d = &dst.record;
    static constexpr M_LPoint origin{0, 0};
    const auto pixel = [](void*, std::int32_t, std::int32_t, void*, void*) { return 1; };
    const std::string depths = "QX_Iterate requires source and dst worlds to be same depth";
    for (const OriginFn form : {&QX_IterateOrigin, no_clip(), &without_origin}) {
        const auto call = [&](QX_LayerDef* from, QX_LayerDef* to, QX_IteratePixelFunc fn) {
            return [=] { return form(nullptr, 0, 0, from, nullptr, &origin, nullptr, fn, to); };
        };
        expect_refused(kOnGpu, {call(&bad.gpu, d, pixel), call(&bad.empty, &bad.gpu, nullptr)});
        expect_refused(kBadParameter, {call(&bad.empty, d, pixel), call(s, nullptr, pixel),
                                       call(nullptr, &bad.empty, pixel), call(nullptr, d, nullptr)});
        expect_refused(depths, {call(&deep.record, d, pixel)});
    }
    const auto lut = [](QX_LayerDef* from, QX_LayerDef* to) {
        return [=] { return QX_IterateLUT(nullptr, 0, 0, from, nullptr, nullptr, nullptr, nullptr, nullptr, to); };
    };
    expect_refused(kBadParameter, {lut(&deep.record, d), lut(nullptr, &deep.record)});
    expect_refused(kOnGpu, {lut(nullptr, &bad.gpu)});
    Picture<QX_PixelFloat> real(4, 4);
    EXPECT_EQ(lut(nullptr, &real.record)(), 0) << "deep worlds are refused, float is not seen";
}

TEST(IterateLUT, MapsEveryChannelThroughItsTable) {
    const Born born(1);
    Picture<QX_Pixel8> src(16, 16), dst(16, 16);
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    for (int i = 0; i < 256; ++i) src.at(i % 16, i / 16) = {byte(i), byte(i ^ 0x55), byte(255 - i), byte(i * 7)};
    std::uint8_t tables[4][256];
    for (const auto& [i, t] : places(256, 4)) tables[t][i] = byte(i * (2 * t + 3) + t);
    for (int given = 0; given < 16; ++given) {  // each subset of the four tables
        SCOPED_TRACE(given);
        const auto table = [&](int t) { return (given >> t & 1) != 0 ? tables[t] : nullptr; };
        const auto map = [&](int t, std::uint8_t v) { return (given >> t & 1) != 0 ? byte(v * (2 * t + 3) + t) : v; };
        for (QX_LayerDef* from : {&src.record, static_cast<QX_LayerDef*>(nullptr)}) {  // then in place
            if (from == nullptr) std::copy(src.pixels.begin(), src.pixels.end(), dst.pixels.begin());
            EXPECT_EQ(QX_IterateLUT(nullptr, 0, 0, from, nullptr, table(0), table(1), table(2), table(3), &dst.record),
                      0);
            for (const auto& [x, y] : places(16, 16)) {
                const QX_Pixel8 s = src.at(x, y), want{map(0, s.alpha), map(1, s.red), map(2, s.green), map(3, s.blue)};
                ASSERT_EQ(dst.at(x, y), want);
            }
        }
    }
}

TEST(Iterate, EveryPixelOnceAtAnyBandCount) {
    for (const auto& [bands, height] : each(std::array{1, 2, 7, 32}, std::array{1, 5, 31, 32, 33, 100})) {
        SCOPED_TRACE(bands);
        const Born born(bands);
        Picture<QX_Pixel16> src(61, height), world(61, height), want(61, height);
        for (const auto& [x, y] : places(61, height)) {
            const auto column = static_cast<std::uint16_t>(x), row = static_cast<std::uint16_t>(y);
            src.at(x, y).alpha = static_cast<std::uint16_t>(x * y);
            want.at(x, y) = {src.at(x, y).alpha, column, row, 1};
        }
        const auto pixel = [](void*, std::int32_t x, std::int32_t y, void* in, void* out) {
            auto& to = *static_cast<QX_Pixel16*>(out);
            to = {static_cast<QX_Pixel16*>(in)->alpha, static_cast<std::uint16_t>(x), static_cast<std::uint16_t>(y),
                  static_cast<std::uint16_t>(to.blue + 1)};
            return 0;
        };
        for (const OriginFn form : {&without_origin, &QX_IterateOrigin, no_clip()}) {
            const M_LPoint origin{0, 0};
            std::fill(world.pixels.begin(), world.pixels.end(), QX_Pixel16{});
            EXPECT_EQ(form(nullptr, 0, 0, &src.record, nullptr, &origin, nullptr, pixel, &world.record), 0);
            EXPECT_TRUE(world.pixels == want.pixels) << "and nothing behind the rows";
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
