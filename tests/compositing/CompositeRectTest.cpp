// SPDX-License-Identifier: Apache-2.0
// Rectangles behind other worlds against a plain model.
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

using Routine = qx::CompositeRectFn;
struct Form {
    Routine* routine;
    bool straight;
};
constexpr Form kForms[] = {{&QX_CompositeRectBest_Straight, true},
                           {&QX_CompositeRectDraft_Straight, true},
                           {&QX_CompositeRectBest_Premul, false},
                           {&QX_CompositeRectDraft_Premul, false}};

using I = std::int64_t;
I mul(I x, I y) { return model::Eight::mul(x, y); }

QX_Pixel8 behind(bool straight, const QX_Pixel8& s, I o, const QX_Pixel8& d) {
    const I a = s.alpha, seen = 255 - d.alpha;
    const auto each_colour = [&](I alpha, const auto& f) {
        const auto at = [](I v) { return static_cast<std::uint8_t>(v & 255); };
        return QX_Pixel8{at(alpha), at(f(s.red, d.red)), at(f(s.green, d.green)), at(f(s.blue, d.blue))};
    };
    if (seen == 0) return d;
    if (straight && d.alpha == 0) return {static_cast<std::uint8_t>(mul(o, a)), s.red, s.green, s.blue};
    if (straight) {
        const I k = seen * a * o, w = d.alpha * 65025 + k;
        return each_colour(w / 65025, [=](I cs, I cd) { return (cs * k + cd * d.alpha * 65025) / w; });
    }
    const auto channel = [=](I cs, I cd) { return d.alpha == 0 ? mul(o, cs) : cd + mul(seen, mul(o, cs)); };
    return each_colour(channel(a, d.alpha), channel);
}

struct Place2 {
    M_LRect rect;
    int x, y;
};
const Place2 kPlaces[] = {{{0, 0, 23, 70}, 0, 0},   {{0, 0, 23, 70}, 4, 9},   {{3, 5, 20, 69}, 10, 16},
                          {{3, 5, 20, 68}, 10, 15}, {{7, 69, 23, 70}, 0, 79}, {{23, 70, 23, 70}, 27, 80},
                          {{5, 5, 5, 60}, 27, 3}};

TEST(RectangleBehind, IsItsFormulaInItsRowsAndNowhereElse) {
    const Born born;
    std::uint64_t seed = 0;
    for (const auto& [form, fill, opacity, field, place] :
         each(kForms, kAllFills, std::array{255, 254, 128, 1, 0}, std::array{0, 1, 2, -5}, kPlaces)) {
        ++seed;
        TestWorld<QX_Pixel8> src(23, 70, FillKind::random, seed), dst(27, 80, fill, seed + 1);
        TestWorld<QX_Pixel8> wanted(27, 80, fill, seed + 1);
        const auto& [r, x0, y0] = place;
        for (const auto& [x, y] : places(r.right - r.left, r.bottom - r.top)) {
            const bool odd = (y0 + y) % 2 != 0;
            if (opacity == 0 || (field == 1 && odd) || (field != 0 && field != 1 && !odd)) continue;
            QX_Pixel8& d = wanted.at(x0 + x, y0 + y);
            d = behind(form.straight, src.at(r.left + x, r.top + y), opacity, d);
        }
        const bool whole = r == M_LRect{0, 0, 23, 70};
        ASSERT_EQ(form.routine(nullptr, whole ? nullptr : &r, static_cast<std::uint8_t>(opacity), src.record(), x0, y0,
                               field, 12345, dst.record()),
                  0);
        ASSERT_EQ(dst.pixels(), wanted.pixels()) << "seed " << seed << ' ' << name(r) << " opacity " << opacity
                                                 << " field " << field << (form.straight ? " straight" : " premul");
    }
}

/// Every pair of alphas, with the largest and smallest colours.
TEST(RectangleBehind, EveryPairOfAlphas) {
    const Born born;
    for (const auto& [form, opacity, bright] : each(kForms, std::array{255, 77}, std::array{0, 255})) {
        TestWorld<QX_Pixel8> src(256, 256, FillKind::random, 3), dst(256, 256, FillKind::random, 4);
        for (const auto& [x, y] : places(256, 256)) {
            const auto c = [](int v) { return static_cast<std::uint8_t>(v); };
            src.at(x, y) = {c(x), 255, c(bright), c(y)}, dst.at(x, y) = {c(y), c(bright), 255, c(x)};
        }
        const auto before = dst.pixels(), from = src.pixels();
        ASSERT_EQ(
            form.routine(nullptr, nullptr, static_cast<std::uint8_t>(opacity), src.record(), 0, 0, 0, 0, dst.record()),
            0);
        const auto after = dst.pixels();
        for (std::size_t i = 0; i < after.size(); ++i) {
            ASSERT_EQ(after[i], behind(form.straight, from[i], opacity, before[i])) << from[i] << before[i];
        }
    }
}

/// Asked before each row behind which a multiple of 32 are left; the rows before it are done then, and no others.
TEST(RectangleBehind, Progress) {
    const Born born;
    const std::vector<std::pair<int, int>> all = {{6, 70}, {38, 70}, {70, 70}};
    for (const auto& [form, field, stop_at, aborts] :
         each(kForms, std::array{0, 1, 2}, std::array{-1, 0, 1, 2}, std::array{false, true})) {
        TestWorld<QX_Pixel8> src(5, 70, FillKind::opaque, 1), dst(5, 70, FillKind::clear, 2);
        const auto before = dst.pixels();
        Polls polls{.stop_at = stop_at};
        const QX_ProgressInfo info{&polls, &Polls::abort, aborts ? nullptr : &Polls::progress};
        EXPECT_EQ(form.routine(&info, nullptr, 255, src.record(), 0, 0, field, 0, dst.record()),
                  stop_at < 0 ? 0 : polls.code);
        const std::size_t asked = stop_at < 0 ? 3 : static_cast<std::size_t>(stop_at) + 1;
        ASSERT_EQ(polls.calls.size(), asked);
        for (std::size_t i = 0; i < asked && !aborts; ++i) EXPECT_EQ(polls.calls[i], all[i]);
        const int done = stop_at < 0 ? 70 : all[asked - 1].first - 1;
        for (int y = 0; y < 70; ++y) {
            const bool drawn = y < done && (field == 0 || y % 2 == field - 1);
            EXPECT_EQ(dst.at(0, y), drawn ? src.at(0, y) : before[static_cast<std::size_t>(5 * y)]) << y;
        }
    }
}

TEST(RectangleBehind, RefusesWhatLeavesAWorld) {
    const Born born;
    BadWorlds bad;
    TestWorld<QX_Pixel8> src(8, 9, FillKind::random, 1), dst(10, 11, FillKind::clear, 2);
    TestWorld<QX_Pixel16> deep(10, 11, FillKind::random, 1);
    Picture<QX_Pixel8> wide(32768, 1), high(1, 32768), wider(32769, 2);
    const auto before = dst.pixels();
    constexpr M_LRect whole{0, 0, 8, 9};
    struct Call {
        QX_LayerDef* src;
        M_LRect rect;
        int x, y;
        QX_LayerDef* dst;
        std::string text = kBadParameter;
    };
    QX_LayerDef *const from = src.record(), *const to = dst.record();
    const Call calls[] = {{&bad.gpu, whole, 0, 0, to, kOnGpu},
                          {from, whole, 0, 0, &bad.gpu, kOnGpu},
                          {nullptr, whole, 0, 0, to},
                          {from, whole, 0, 0, nullptr},
                          {&bad.empty, whole, 0, 0, to},
                          {from, whole, 0, 0, &bad.empty},
                          {deep.record(), whole, 0, 0, to},
                          {from, whole, 0, 0, deep.record()},
                          {from, {-1, 0, 8, 9}, 0, 0, to},
                          {from, {0, -1, 8, 9}, 0, 0, to},
                          {from, {0, 0, 9, 9}, 0, 0, to},
                          {from, {0, 0, 8, 10}, 0, 0, to},
                          {from, {5, 0, 4, 9}, 0, 0, to},
                          {from, {0, 5, 8, 4}, 0, 0, to},
                          {from, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, 0, 0, to},
                          {from, whole, -1, 0, to},
                          {from, whole, 0, -1, to},
                          {from, whole, 3, 0, to},
                          {from, whole, 0, 3, to},
                          {from, whole, INT_MAX, 0, to},
                          {from, whole, 0, INT_MAX, to},
                          {&wide.record, {0, 0, 32768, 1}, 0, 0, &wider.record},
                          {&high.record, {0, 0, 1, 32768}, 0, 0, &high.record}};
    for (const auto& [form, call] : each(kForms, calls)) {
        expect_refused(call.text, {[&, form = form, c = call] {
                           return form.routine(nullptr, &c.rect, 255, c.src, c.x, c.y, 0, 0, c.dst);
                       }});
    }
    EXPECT_EQ(dst.pixels(), before);
    const M_LRect longest{1, 0, 32768, 1};
    EXPECT_EQ(QX_CompositeRectBest_Premul(nullptr, &longest, 9, &wide.record, 2, 1, 0, 0, &wider.record), 0);
}

}  // namespace
}  // namespace qx::test
