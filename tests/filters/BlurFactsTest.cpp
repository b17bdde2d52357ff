// SPDX-License-Identifier: Apache-2.0
// What is known of line blurs, whatever their formulas: exact sums, laws, refusals.
#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BoxBlurPass.h"
#include "tests/filters/BlurModel.h"

namespace qx::test {
namespace {

template <class Pixel> class BlurFacts : public testing::Test {
protected:
    static constexpr double kFull = DepthOf<Pixel>::full;
    static constexpr bool kReal = DepthOf<Pixel>::number == 32;
    /// What a float may be off by rounding; integers are exact.
    static constexpr double kNear = kReal ? 2e-5 : 0;
    Born born_{1};

    static Plate<Pixel> of_size(int width, int height) { return {width, height, FillKind::clear, 0}; }
    static Plate<Pixel> along(const Blur& blur, const Plate<Pixel>& src) {
        Plate<Pixel> dst(src.width, src.height, FillKind::random, 99);
        blur(src.world.get(), dst.world.get());
        return dst;
    }
    static Plate<Pixel> turned(const Plate<Pixel>& p) {
        Plate<Pixel> out = of_size(p.height, p.width);
        for (const auto& [x, y] : places(p.width, p.height)) std::memcpy(out.place(y, x), p.place(x, y), sizeof(Pixel));
        return out;
    }
    static void expect_near(const Plate<Pixel>& a, const Plate<Pixel>& b, double limit, int dx = 0, int dy = 0) {
        for (const auto& [x, y] : places(a.width, a.height)) {
            for (unsigned c = 0; c < 4; ++c) {
                ASSERT_NEAR(a.at(x, y)[c], b.at(x + dx, y + dy)[c], limit) << x << ", " << y << " channel " << c;
            }
        }
    }
};
TYPED_TEST_SUITE(BlurFacts, AllDepths);

TYPED_TEST(BlurFacts, MeansAreThoseOfExactSums) {
    constexpr int length = 400;
    const double limit_gaussian = this->kReal ? 4e-6 : DepthOf<TypeParam>::number == 8 ? 0.5 + 1e-9 : 0.55;
    const double limit_box = this->kReal ? 2e-5 : DepthOf<TypeParam>::number == 8 ? 0.51 : 0.55;
    const Plate<TypeParam> src(length, 3, FillKind::extremes, 4);
    for (const auto& [radius, box, edges] :
         each(std::array{0.5f, 4.0f, 20.0f, 63.25f, 100.0f}, std::array{0, 1}, std::array{0, 1})) {
        const int reach = static_cast<int>(std::ceil(radius));
        const auto weight = [&, r = radius, b = box](int k) {
            if (b != 0) return k == reach ? 1024 - std::floor((static_cast<double>(reach) - r) * 1024) : 1024.0;
            return k == 0 ? 255.0 : std::floor(255 * QXp_GaussianValue(k / (r + 1.0)));
        };
        double full = 0;
        for (int k = -reach; k <= reach; ++k) full += weight(std::abs(k));
        const auto made =
            this->along({.radius = radius, .flags = edges != 0 ? 31u : 15u, .iterations = box - (1 - box)}, src);
        for (const auto& [x, c] : places(length, 4)) {
            double sum = 0, used = 0;
            for (int k = std::max(-reach, -x); k <= std::min(reach, length - 1 - x); ++k) {
                sum += weight(std::abs(k)) * static_cast<double>(src.at(x + k, 1)[static_cast<unsigned>(c)]);
                used += weight(std::abs(k));
            }
            const double want =
                std::clamp(sum / (edges != 0 ? used : full), box != 0 ? 0.0 : -9.0, box != 0 ? this->kFull : 9e9);
            ASSERT_NEAR(made.at(x, 1)[static_cast<unsigned>(c)], want, box != 0 ? limit_box : limit_gaussian)
                << radius << " at " << x;
        }
    }
}

TYPED_TEST(BlurFacts, NoRadiusChangesNothing) {
    const Plate<TypeParam> src(50, 20, FillKind::edges, 3);
    for (const auto& [radius, passes] : each(std::array{0.0f, -4.0f, NAN}, std::array{-1, 1, 3})) {
        const auto made = this->along({.radius = radius, .iterations = passes}, src);
        this->expect_near(made, src, this->kReal ? 1.2e-7 : 0);
    }
}

TYPED_TEST(BlurFacts, WhatIsSolidStaysSolid) {
    for (const auto& [radius, passes] : each(std::array{0.5f, 3.0f, 19.6f, 64.0f, 100.0f}, std::array{-1, 1, 3})) {
        for (int i = 0; i < 4; ++i) {
            Plate<TypeParam> src = this->of_size(150, 2);
            Plate<TypeParam> colour(1, 1, FillKind::opaque, static_cast<std::uint64_t>(i));
            for (const auto& [x, y] : places(150, 2))
                std::memcpy(src.place(x, y), colour.place(0, 0), sizeof(TypeParam));
            if (this->kReal && !(std::ranges::min(colour.at(0, 0)) >= 0 && std::ranges::max(colour.at(0, 0)) <= 1))
                continue;
            this->expect_near(this->along({.radius = radius, .flags = 31, .iterations = passes}, src), src,
                              this->kNear);
        }
    }
}

TYPED_TEST(BlurFacts, RowsOfThePictureTurnedAreItsColumns) {
    const Plate<TypeParam> src(61, 33, FillKind::layer, 8);
    for (const int passes : {-1, 1, 2}) {
        Blur rows{.radius = 4.5f, .iterations = passes, .straight = true}, columns = rows, across = rows;
        columns.from_columns = columns.to_columns = true;
        across.from_columns = true;
        const auto by_columns = this->along(columns, src);
        this->expect_near(this->along(rows, this->turned(src)), this->turned(by_columns), 0);
        Plate<TypeParam> transposed = this->of_size(33, 61);
        across(src.world.get(), transposed.world.get());
        this->expect_near(transposed, this->turned(by_columns), 0);
    }
}

TYPED_TEST(BlurFacts, ACutDestinationIsTheCutOfTheWhole) {
    const Plate<TypeParam> src(90, 30, FillKind::opaque, 8);
    for (const auto& [passes, columns, flags] :
         each(std::array{-1, 1, 3}, std::array{false, true}, std::array{15u, 31u})) {
        const Blur blur{
            .radius = 5, .flags = flags, .iterations = passes, .from_columns = columns, .to_columns = columns};
        const auto whole = this->along(blur, src);
        Plate<TypeParam> part = this->of_size(40, 11);
        part.world->origin_x = 23, part.world->origin_y = 9;
        blur(src.world.get(), part.world.get());
        this->expect_near(part, whole, passes >= 0 ? this->kNear : 0, 23, 9);
    }
}

TYPED_TEST(BlurFacts, CopiesOfLinesAndTheAlphaOfTheDestinationDontShow) {
    const Plate<TypeParam> src(70, 40, FillKind::layer, 2);
    for (const auto& [passes, straight] : each(std::array{-1, 0, 1, 3}, std::array{false, true})) {
        Blur blur{.radius = 3.25f, .flags = 11, .iterations = passes, .straight = straight};
        const auto without = this->along(blur, src);
        blur.copies = true;
        EXPECT_TRUE(this->along(blur, src).memory == without.memory) << blur;
        Plate<TypeParam> other(70, 40, FillKind::random, 99);
        const auto alpha = straight ? GK::kAlphaType_Straight : GK::kAlphaType_Premultiplied;
        const auto dst_alpha = straight ? GK::kAlphaType_Premultiplied : GK::kAlphaType_Straight;
        if (passes < 0)
            QX_GaussianBlur1D(nullptr, src.world.get(), 3.25f, 11, 0, alpha, 0, dst_alpha, false, other.world.get());
        else
            QX_BoxBlur1D(nullptr, src.world.get(), 3.25f, 11, passes, 0, alpha, 0, dst_alpha, false, other.world.get());
        EXPECT_TRUE(other.memory == without.memory) << blur;
    }
}

TYPED_TEST(BlurFacts, WithoutPassesLinesBesideTheSourceAloneChange) {
    const Plate<TypeParam> src(5, 5, FillKind::random, 2), before(5, 9, FillKind::random, 3);
    for (const int passes : {0, -7, INT_MIN}) {
        Plate<TypeParam> dst(5, 9, FillKind::random, 3);
        dst.world->origin_y = -2;
        QX_BoxBlur1D(nullptr, src.world.get(), 4, 15, passes, 0, GK::kAlphaType_Straight, 0, GK::kAlphaType_Straight,
                     false, dst.world.get());
        for (const auto& [x, y] : places(5, 9)) {
            EXPECT_EQ(dst.at(x, y), (y >= 2 && y < 7 ? before.at(x, y) : std::array<QX_ChannelOf<TypeParam>, 4>{}));
        }
    }
}

TEST(BoxBlurGeometry, ALineBufferHoldsTheLongestSpanOfAnyNumberOfPasses) {
    Numbers number(7);
    for (int i = 0; i < 2000; ++i) {
        const int passes = number(1, 12), src_length = number(0, 40), dst_length = number(0, 40);
        const GK::BoxBlur_1DImgOpInfo info(static_cast<float>(number(0, 6)), 15, passes, GK::kAlphaType_Premultiplied,
                                           0, src_length, 1, GK::kAlphaType_Straight, number(-50, 50), dst_length, 1,
                                           false);
        std::int64_t longest = 0;
        for (int p = 0; p + 1 < passes; ++p) longest = std::max(longest, info.GetSpanWidthAtIndex(p));
        ASSERT_EQ(info.GetScratchSize(), longest);
        ASSERT_EQ(info.GetSpanWidthAtIndex(passes - 1), dst_length);
    }
    const GK::BoxBlur_1DImgOpInfo most(32767, 15, INT_MAX, GK::kAlphaType_Premultiplied, INT_MIN, 100, 1,
                                       GK::kAlphaType_Straight, INT_MAX, 100, 2, true);
    EXPECT_EQ(most.GetSpanWidthAtIndex(0), 100 + 2 * 32767);
    EXPECT_EQ(most.GetSpanWidthAtIndex(INT_MAX - 2), 100 + 2 * 32767);
    EXPECT_GT(most.GetScratchSize(), std::int64_t{1} << 45);
}

/// Calls on a picture of 8 bits.
class BlurCalls : public testing::Test {
protected:
    Born born_{1};
    Plate<QX_Pixel8> src_{20, 70, FillKind::random, 1}, dst_{20, 70, FillKind::random, 2};
    const std::vector<std::byte> before_ = dst_.memory;
    static constexpr auto kStraight = GK::kAlphaType_Straight;

    static std::function<int()> both(int which, const QX_World* src, QX_World* dst, float radius = 2) {
        return thrown([=] { Blur{.radius = radius, .iterations = which, .straight = true}(src, dst); });
    }
};

TEST_F(BlurCalls, RefusalsThrowAndLeaveTheDestination) {
    Plate<QX_Pixel16> deep(20, 70, FillKind::random, 3);
    QX_WorldX<QX_Pixel8> gpu(nullptr, 4, 4, 16), empty(nullptr, 4, 4, 16);
    BadWorlds bad;
    gpu.platform_ref = bad.gpu.platform_ref;
    for (const int kind : {-1, 1}) {
        const auto call = [&](const QX_World* src, QX_World* dst) { return both(kind, src, dst); };
        QX_World *const src = src_.world.get(), *const dst = dst_.world.get();
        expect_refused(kOnGpu, {call(&gpu, dst), call(src, &gpu), call(&gpu, nullptr)});
        expect_refused(kBadParameter, {call(nullptr, dst), call(src, nullptr), call(&empty, dst), call(src, &empty)});
        expect_refused("", {call(src, deep.world.get()), call(deep.world.get(), dst), call(&bad.odd, &bad.odd),
                            call(src, &bad.odd)});
    }
    EXPECT_TRUE(dst_.memory == before_);
}

TEST_F(BlurCalls, OlderBlursAnswer5) {
    EXPECT_EQ(QX_FastBlur_Straight(1, nullptr, &dst_), 5);
    EXPECT_EQ(QX_FastBlur_Premul(), 5);
}

TEST_F(BlurCalls, APassOfABoxTakesNeighbouringPixelsAlone) {
    const BlurLine<QX_Pixel8> line{dst_.place(0, 0), 4, 20}, column{dst_.place(0, 0), dst_.rowbytes, 20};
    expect_refused("untested SSE2 codepath in blur",
                   {thrown([&] { QXp_BoxBlurPass(BoxWindow(2, 15), line, 0, column); })});
    EXPECT_TRUE(dst_.memory == before_);
}

TEST_F(BlurCalls, AbortIsAskedOnceALineAndItsAnswerThrown) {
    for (const auto& [kind, columns] : each(std::array{-1, 2}, std::array{false, true})) {
        Polls polls, stopping{.stop_at = 0};
        const QX_ProgressInfo info{&polls, &Polls::abort, &Polls::progress}, stop{&stopping, &Polls::abort, nullptr};
        Blur blur{.radius = 2, .iterations = kind, .from_columns = columns, .to_columns = columns, .progress = &info};
        blur(src_.world.get(), dst_.world.get());
        EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>(columns ? 20 : 70, {-1, -1})));
        Plate<QX_Pixel8> left(20, 70, FillKind::random, 2);
        blur.progress = &stop;
        EXPECT_EQ(code_of([&] { blur(src_.world.get(), left.world.get()); }), 517);
        EXPECT_TRUE(left.memory == before_);
    }
}

TEST_F(BlurCalls, NothingIsAllocatedALine) {
    for (const int kind : {-1, 1, 3}) {
        const auto allocations = [&](int lines) {
            const Plate<QX_Pixel8> src(40, lines, FillKind::layer, 1);
            const Plate<QX_Pixel8> dst(40, lines, FillKind::clear, 1);
            const std::int64_t before = standalone::Memory().allocations;
            Blur{.radius = 3, .iterations = kind, .straight = true}(src.world.get(), dst.world.get());
            return standalone::Memory().allocations - before;
        };
        EXPECT_EQ(allocations(3), allocations(700)) << kind;
    }
}

TEST_F(BlurCalls, EachAllocationMayFailAndNothingLeaks) {
    for (const auto& [kind, copies] : each(std::array{-1, 1, 3}, std::array{false, true})) {
        const Blur blur{.radius = 2, .iterations = kind, .from_columns = true, .to_columns = true, .copies = copies};
        const auto call = [&] { return code_of([&] { blur(src_.world.get(), dst_.world.get()); }); };
        const std::int64_t blocks = blocks_in_use();
        ASSERT_EQ(call(), 0);
        const auto made = dst_.memory;
        std::int64_t allocations = standalone::Memory().allocations;
        ASSERT_EQ(call(), 0);
        allocations = standalone::Memory().allocations - allocations;
        dst_.memory.assign(before_.begin(), before_.end());
        for (int nth = 1; nth <= allocations; ++nth) {
            const Reports reports;
            EXPECT_EQ(short_of_memory(nth, call), 4) << blur << " allocation " << nth;
            EXPECT_TRUE(reports.all().empty() && dst_.memory == before_);
        }
        EXPECT_EQ(blocks_in_use(), blocks);
        EXPECT_EQ(standalone::AccountedBytes(), 0);
        EXPECT_EQ(call(), 0);
        EXPECT_TRUE(dst_.memory == made);
    }
}

}  // namespace
}  // namespace qx::test
