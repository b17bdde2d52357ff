// SPDX-License-Identifier: Apache-2.0
// Convolution at every level against plain sums, and what is known of it.
#include "QX/filters/QX_Convolve.h"

#include <cmath>
#include <random>

#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_PerDepth.h"
#include "tests/support/Refusals.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

using Kernel = std::vector<std::int32_t>;

struct Convolved {
    int size = 3;
    std::uint32_t flags = 0;
    std::array<Kernel, 4> kernel{};
    const QX_ProgressInfo* progress = nullptr;

    int operator()(const QX_LayerDef* src, QX_LayerDef* dst) const {
        const auto at = [&](int i) { return kernel[static_cast<std::size_t>(i)].data(); };
        return QX_Convolve(progress, src, nullptr, flags, size, at(0), at(1), at(2), at(3), dst);
    }
    bool along_row() const { return (flags & 33) == 1; }
    bool down_column() const { return (flags & 33) == 33; }
    int taps() const { return (flags & 1) != 0 ? size : size * size; }
};

/// One channel of one pixel as told: integers in 64 bits, of which 32 count, floats in the kernel's order.
template <class Pixel> auto expected(const Convolved& c, TestWorld<Pixel>& src, int x, int y, int channel) {
    using D = DepthOf<Pixel>;
    constexpr bool real = D::number == 32;
    const Kernel& kernel = c.kernel[static_cast<std::size_t>(channel)];
    std::int64_t sum = 0, weights = 0;
    float real_sum = 0;
    for (int i = 0; i < c.taps(); ++i) {
        const int half = c.size / 2, dx = c.down_column() ? 0 : i % c.size - half;
        const int dy = c.along_row() ? 0 : c.down_column() ? i - half : i / c.size - half;
        const std::int32_t w = kernel[static_cast<std::size_t>(i)];
        weights += w;
        if (!src.has(x + dx, y + dy)) continue;
        const auto v = reinterpret_cast<const QX_ChannelOf<Pixel>*>(&src.at(x + dx, y + dy))[channel];
        if constexpr (real) {
            real_sum += v * static_cast<float>(w);
        } else {
            sum += std::int64_t{v} * w;
        }
    }
    const auto low = [](std::int64_t v) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(v)); };
    std::int32_t divisor = low((c.flags & 2) != 0 ? weights : std::int64_t{c.taps()} * 256);
    if (divisor == 0) divisor = 1;
    const bool clamps = (c.flags & 4) == 0;
    if constexpr (real) {
        float v = real_sum / static_cast<float>(divisor);
        if (clamps) v = v < 0 ? 0.0f : v > 1 ? 1.0f : v;
        if (channel == 0) v = v > 1 ? 1.0f : v < 1e-16f ? 0.0f : v;
        return v;
    } else {
        std::int64_t v = std::int64_t{low(sum)} / divisor;
        if (clamps) v = std::clamp<std::int64_t>(v, 0, D::full);
        return static_cast<QX_ChannelOf<Pixel>>(v);
    }
}

template <class Pixel>
void expect_convolved(const Convolved& c, TestWorld<Pixel>& src, TestWorld<Pixel>& dst, int offset_x = 0,
                      int offset_y = 0) {
    ASSERT_EQ(c(src.record(), dst.record()), 0);
    for (const auto& [x, y] : places(dst.world().width, dst.world().height)) {
        for (int i = 0; i < 4; ++i) {
            const auto made = reinterpret_cast<const QX_ChannelOf<Pixel>*>(&dst.at(x, y))[i];
            const auto want = expected<Pixel>(c, src, x + offset_x, y + offset_y, i);
            ASSERT_EQ(std::memcmp(&made, &want, sizeof made), 0)
                << made << " is not " << want << " at " << x << ", " << y << " channel " << i << " size " << c.size
                << " flags " << c.flags;
        }
    }
}

enum class Weights { small, large, opposed };
Convolved random_kernels(int size, std::uint32_t flags, Weights kind, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    Convolved c{.size = size, .flags = flags};
    for (Kernel& kernel : c.kernel) {
        for (int i = 0; i < c.taps(); ++i) {
            const auto v = static_cast<std::int32_t>(random());
            kernel.push_back(kind == Weights::large ? v : kind == Weights::opposed ? v % 512 : 1 + (v & 255));
        }
    }
    return c;
}

template <class Pixel> class ConvolveAt : public testing::Test {};
TYPED_TEST_SUITE(ConvolveAt, AllDepths);

TYPED_TEST(ConvolveAt, EveryLevelGivesThePlainSums) {
    const Cases<int, int> sizes = {{67, 9}, {1, 40}, {37, 3}, {5, 5}, {150, 20}};
    constexpr FillKind fills[] = {FillKind::random, FillKind::extremes, FillKind::layer};
    std::uint64_t seed = 0;
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto& [area, size, flags, kind] :
             each(sizes, std::array{1, 3, 5, 7}, std::array{0u, 2u, 6u, 1u, 33u, 35u, 4u},
                  std::array{Weights::small, Weights::large, Weights::opposed})) {
            const auto [width, height] = area;
            ++seed;
            TestWorld<TypeParam> src(width, height, fills[seed % 3], seed), dst(width, height, FillKind::clear, 0);
            expect_convolved<TypeParam>(random_kernels(size, flags, kind, seed), src, dst);
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(ConvolveAt, ManyWeightsGiveThePlainSumsToo) {
    std::uint64_t seed = 100;
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto& [size, kind] : each(std::array{23, 33}, std::array{Weights::large, Weights::opposed})) {
            TestWorld<TypeParam> src(70, 36, FillKind::random, ++seed), dst(70, 36, FillKind::clear, 0);
            expect_convolved<TypeParam>(random_kernels(size, 2, kind, seed), src, dst);
            if (this->HasFatalFailure()) return;
        }
    }
}

TYPED_TEST(ConvolveAt, PicturesLieByTheirOriginsWhereThatIsAsked) {
    const Born born(1);
    for (const auto& [dx, dy, honoured] : each(std::array{-50, -3, 10}, std::array{-4, 0, 7}, std::array{0, 1})) {
        TestWorld<TypeParam> src(40, 12, FillKind::random, 3), dst(33, 9, FillKind::clear, 0);
        dst.record()->origin_x = 100 + dx, dst.record()->origin_y = 20 + dy;
        src.record()->origin_x = 100, src.record()->origin_y = 20;
        const Convolved c = random_kernels(5, honoured != 0 ? 0x102 : 2, Weights::small, 9);
        expect_convolved<TypeParam>(c, src, dst, dx * honoured, dy * honoured);
        if (this->HasFatalFailure()) return;
    }
}

TEST(Convolve, AnImpulseBecomesTheKernelTurnedRound) {
    const Born born(1);
    TestWorld<QX_Pixel8> src(5, 5, FillKind::clear, 0), dst(5, 5, FillKind::clear, 0);
    src.world().Clear(nullptr);
    src.at(2, 2) = {255, 255, 255, 255};
    Convolved c;
    for (Kernel& kernel : c.kernel) kernel = {0, 256, 512, 768, 1024, 1280, 1536, 1792, 2048};
    ASSERT_EQ(c(src.record(), dst.record()), 0);
    for (const auto& [x, y] : places(3, 3)) EXPECT_EQ(dst.at(3 - x, 3 - y).red, 255 * (3 * y + x) / 9);
}

TEST(Convolve, RefusalsLeaveTheDestination) {
    const Born born(1);
    BadWorlds bad;
    TestWorld<QX_Pixel8> src(4, 4, FillKind::random, 1), dst(4, 4, FillKind::random, 2);
    TestWorld<QX_Pixel16> deep(4, 4, FillKind::random, 3);
    const std::vector<QX_Pixel8> before = dst.pixels();
    const Convolved good = random_kernels(3, 0, Weights::small, 1);
    const auto of_size = [&](int size) {
        Convolved c = good;
        c.size = size;
        return [=, &src, &dst] { return c(src.record(), dst.record()); };
    };
    const auto with = [&](const QX_LayerDef* from, QX_LayerDef* to) { return [=] { return good(from, to); }; };
    expect_refused(kOnGpu, {with(&bad.gpu, dst.record()), with(src.record(), &bad.gpu)});
    expect_refused(kBadParameter, {with(nullptr, dst.record()), with(src.record(), nullptr),
                                   with(&bad.empty, dst.record()), of_size(-1), of_size(0), of_size(2), [&] {
                                       return QX_Convolve(nullptr, src.record(), nullptr, 0, 3, good.kernel[0].data(),
                                                          nullptr, good.kernel[0].data(), good.kernel[0].data(),
                                                          dst.record());
                                   }});
    expect_refused("QX_Convolve requires source and dst worlds to be same depth", {with(deep.record(), dst.record())});
    EXPECT_EQ(dst.pixels(), before);
}

TEST(Convolve, ProgressIsAskedOnceMoreThan2048WeightsAreUsedAndEndsTheWork) {
    const Born born(1);
    TestWorld<QX_Pixel8> src(64, 20, FillKind::random, 1), dst(64, 20, FillKind::clear, 2),
        before(64, 20, FillKind::clear, 2);
    Polls polls{.stop_at = 1};
    const QX_ProgressInfo info{&polls, nullptr, &Polls::progress};
    Convolved c = random_kernels(5, 1, Weights::small, 1);  // 320 weights a row: the seventh passes 2,048
    c.progress = &info;
    EXPECT_EQ(c(src.record(), dst.record()), 517);
    EXPECT_EQ(polls.calls, (std::vector<std::pair<int, int>>{{7, 20}, {14, 20}}));
    EXPECT_NE(dst.at(30, 13), before.at(30, 13));
    EXPECT_EQ(dst.at(30, 14), before.at(30, 14));
}

}  // namespace
}  // namespace qx::test
