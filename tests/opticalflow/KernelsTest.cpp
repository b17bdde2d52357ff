// SPDX-License-Identifier: Apache-2.0
// Kernels, block sums, copies and zooms, which no render asks for.
#include "opticalflow/src/BlockSums.h"
#include "opticalflow/src/CopySampler.h"
#include "opticalflow/src/FrameMixing.h"
#include "opticalflow/src/ImageZoom.h"
#include "opticalflow/src/Kernel1D.h"
#include "opticalflow/src/KernelSampler.h"
#include "opticalflow/src/Pyramid.h"
#include "tests/opticalflow/InsideSupport.h"

namespace qx::test {
namespace {

/// A quadratic tent; `calls` counts.
struct Tent : of::FnKernelFunction {
    float evaluate(float x, float radius) const override {
        ++calls;
        const float rest = 1 - std::fabs(x) / (radius + 1);
        return rest > 0 ? rest * rest : 0;
    }
    mutable int calls = 0;
};

of::FloatTexture& random_texture(of::FloatTexture& to, int w, int h, std::uint64_t seed) {
    scenes::Dice dice(seed);
    EXPECT_TRUE(to.allocate(w, h));
    to.setAddressing(of::Addressing::clamp, of::Addressing::clamp);
    for (const auto& [x, y] : places(w, h)) to.at(x, y) = static_cast<float>(dice.unit());
    return to;
}

TEST(FlowKernels, TapsAreTheFunctionOverItsSum) {
    const Tent tent;
    for (const float radius : {0.0f, 0.5f, 1.0f, 2.25f, 4.0f}) {
        for (const float centre : {0.0f, 0.25f, 3.75f, -0.25f, -2.5f}) {
            of::FnKernel1D kernel;
            kernel.compute(tent, radius, centre);
            const int reach = static_cast<int>(std::ceil(radius));
            ASSERT_EQ(kernel.taps.size(), static_cast<std::size_t>(2 * reach + 1));
            double sum = 0;
            const double fraction = static_cast<double>(centre) - std::floor(static_cast<double>(centre));
            const auto value = [&](int i) { return tent.evaluate(static_cast<float>(i - fraction), radius); };
            for (int i = -reach; i <= reach; ++i) sum += static_cast<double>(value(i));
            for (int i = -reach; i <= reach; ++i)
                EXPECT_NEAR(kernel.taps[static_cast<std::size_t>(i + reach)], value(i) / sum, 1e-6);
        }
    }
}

TEST(FlowKernels, SetsAreMadeOnceForTheirRadii) {
    const Tent tent;
    of::FnKernelManager each(tent, 2, 1.5f, 2.0f, 0), eighths(tent, 2, 1.5f, 2.0f, 8);
    const int made = tent.calls;
    of::FnKernelManager again(tent, 1, 1.5f, 2.0f, 8);
    EXPECT_EQ(tent.calls, made);
    for (int k = -16; k < 16; ++k) {
        const float x = static_cast<float>(k) / 8, y = static_cast<float>(3 * k) / 8;
        const of::KernelPair own = each.kernelsFor(k & 1, x, y), kept = eighths.kernelsFor(0, x, y + 0.1f);
        EXPECT_EQ(own.horizontal->taps, kept.horizontal->taps);
        EXPECT_EQ(own.vertical->taps, kept.vertical->taps);
    }
    auto& cache = of::FnCachedPrecalculatedKernels::shared();
    const auto set = cache.get(tent, 8, 1.5f, 2.0f);
    EXPECT_EQ(cache.get(tent, 8, 1.5f, 2.0f), set);
    EXPECT_NE(cache.get(tent, 4, 1.5f, 2.0f), set);
    EXPECT_NE(cache.get(tent, 8, 1.5f, 1.0f), set);  // drops the others
    EXPECT_NE(cache.get(tent, 8, 1.5f, 2.0f), set);
}

TEST(FlowKernels, PhasesAreWhatPositionsStepThrough) {
    const Cases<double, double> fractions = {{7, 1},        {0, 1},           {0.5, 2},          {0.75, 4},
                                             {22.0 / 7, 7}, {1e-9, 99999999}, {0.3333333333, 3}, {2.6, 5}};
    for (const auto& [value, denominator] : fractions) EXPECT_EQ(of::denominator_of(value), denominator) << value;
    EXPECT_EQ(of::kernel_phases(1, 2, {0, 0, 0, 0}), 1);
    EXPECT_EQ(of::kernel_phases(0.5f, 1, {0, 0, 0, 0}), 2);
    EXPECT_EQ(of::kernel_phases(0.5f, 0.25f, {0, 0.125f, 0, -3}), 8);
    EXPECT_EQ(of::kernel_phases(1, 0.2f, {0, 0, 0.5f, 0}), 10);
}

TEST(FlowKernels, SamplersWeighBothAxes) {
    const of::Taps across{0.25f, 0.5f, 0.25f}, down{0.125f, 0.125f, 0.5f, 0.125f, 0.125f};
    of::FloatTexture in, out;
    random_texture(in, 13, 9, 1), random_texture(out, 13, 9, 2);
    of::InterruptState state;
    of::KernelSamplerMasked sampler(state);
    sampler.process(in, &out);
    for (const auto& [x, y] : places(13, 9)) EXPECT_EQ(out.at(x, y), in.at(x, y));
    sampler.add({1.0f}, {2.0f, 2.0f, 2.0f});  // the last pair alone counts
    sampler.add(across, down);
    EXPECT_EQ(sampler.count(), 2u);
    sampler.process(in, &out);
    of::FloatTexture own;
    random_texture(own, 13, 9, 1);
    sampler.process(own, &own);
    for (const auto& [x, y] : places(13, 9)) {
        double sum = 0;
        for (int j = -2; j <= 2; ++j)
            for (int i = -1; i <= 1; ++i)
                sum += static_cast<double>(across[static_cast<std::size_t>(i + 1)] *
                                           down[static_cast<std::size_t>(j + 2)] * in.read(x + i, y + j));
        EXPECT_NEAR(out.at(x, y), sum, 1e-6);
        EXPECT_EQ(own.at(x, y), out.at(x, y)) << "in place";
    }
}

/// exp(-d^2 / 4.5) for distances 1, 0 and -1.
TEST(FlowKernels, PyramidsMayBeSmoothedByThem) {
    const double side = std::exp(-1 / 4.5), all = 1 + 2 * side;
    const of::Taps taps = of::gaussian_taps(3, 2.25f);
    ASSERT_EQ(taps.size(), 3u);
    EXPECT_NEAR(taps[0], side / all, 1e-6);
    EXPECT_NEAR(taps[1], 1 / all, 1e-6);
    EXPECT_EQ(taps[0], taps[2]);
    of::FloatTexture base;
    random_texture(base, 20, 16, 3);
    of::InterruptState state;
    of::FnFilteredPyramid pyramid(state, 2);
    pyramid.smooths_by_kernel = true;
    pyramid.process(&base);
    for (const auto& [x, y] : places(10, 8)) {
        double sum = 0;
        for (int j = -1; j <= 1; ++j)
            for (int i = -1; i <= 1; ++i)
                sum += static_cast<double>(taps[static_cast<std::size_t>(i + 1)] *
                                           taps[static_cast<std::size_t>(j + 1)] * base.read(2 * x + i, 2 * y + j));
        EXPECT_NEAR(pyramid.level(1).at(x, y), sum, 1e-6) << x << " " << y;
    }
}

TEST(FlowKernels, SumsSlideOverBlocks) {
    for (const int size : {1, 3, 6, 9, 14}) {
        of::FloatTexture in, rows, blocks;
        random_texture(in, 15, 9, 4), random_texture(rows, 15, 9, 5), random_texture(blocks, 15, 9, 6);
        const float untouched = rows.at(14, 0);
        of::InterruptState state;
        of::FnMotionEstimateGradientRow(state, size).process(&rows, &in);
        of::FnMotionEstimateGradientColumn(state, size).process(&blocks, &rows);
        EXPECT_TRUE(size == 1 || rows.at(14, 0) == untouched);
        for (const auto& [x, y] : places(15 - size + 1, 9 - size + 1)) {
            double sum = 0;
            for (const auto& [i, j] : places(size, size)) sum += static_cast<double>(in.at(x + i, y + j));
            EXPECT_NEAR(blocks.at(x, y), sum, 1e-4) << size << " at " << x << " " << y;
        }
    }
}

template <class In, class Out> void expect_copied(float in_range, float out_range) {
    of::FnTexture<In> in;
    of::FnTexture<Out> out;
    ASSERT_TRUE(in.allocate(3, 2) && out.allocate(7, 4));
    for (const auto& [x, y] : places(3, 2)) in.at(x, y) = static_cast<In>(in_range * static_cast<float>(x + 3 * y) / 5);
    for (const auto mode :
         {of::Addressing::background, of::Addressing::clamp, of::Addressing::mirror, of::Addressing::wrap}) {
        in.setAddressing(mode, mode);
        of::InterruptState state;
        of::CopySampler<In, Out>(state, in_range, out_range).process(in, &out);
        for (const auto& [x, y] : places(7, 4))
            EXPECT_EQ(out.at(x, y), static_cast<Out>(static_cast<float>(in.read(x, y)) * (out_range / in_range)));
    }
}

TEST(FlowKernels, CopiesScaleByTheRanges) {
    expect_copied<float, float>(1, 255);
    expect_copied<std::uint8_t, float>(255, 1);
    expect_copied<std::uint16_t, std::uint8_t>(32768, 255);
    expect_copied<std::uint8_t, std::uint16_t>(255, 32768);
    of::FnTexture<of::Argb<std::uint8_t>> in;
    of::FnTexture<of::Argb<std::uint16_t>> out;
    ASSERT_TRUE(in.allocate(1, 1) && out.allocate(1, 1));
    in.at(0, 0) = {{255, 0, 51, 102}};
    of::InterruptState state;
    of::CopySampler<of::Argb<std::uint8_t>, of::Argb<std::uint16_t>>(state, 255, 32768).process(in, &out);
    EXPECT_EQ(out.at(0, 0).alpha, 32768);
    EXPECT_EQ(out.at(0, 0).red, 0);
    EXPECT_EQ(out.at(0, 0).green, static_cast<int>(51 * (32768.0f / 255)));
}

TEST(FlowKernels, MattesAreCopiesInvertedOrAlpha) {
    using Pixel = of::Argb<std::uint16_t>;
    using Matter = of::AlphaMatter<Pixel>;
    of::FnTexture<Pixel> in, out;
    ASSERT_TRUE(in.allocate(1, 1) && out.allocate(1, 1));
    in.at(0, 0) = {{1000, 0, 32768, 5}};
    const Cases<Matter::Mode, Pixel> cases = {{Matter::Mode::copy, {{1000, 0, 32768, 5}}},
                                              {Matter::Mode::inverted, {{1000, 32768, 0, 32763}}},
                                              {Matter::Mode::alpha, {{1000, 1000, 1000, 1000}}}};
    for (const auto& [mode, wanted] : cases) {
        of::InterruptState state;
        Matter(state, mode).process(in, &out);
        EXPECT_EQ(std::memcmp(&out.at(0, 0), &wanted, sizeof wanted), 0) << static_cast<int>(mode);
    }
}

TEST(FlowKernels, ZoomsReadNearestOrBetween) {
    of::FloatTexture in, out;
    random_texture(in, 12, 8, 7), random_texture(out, 5, 3, 8);
    for (const bool flips : {false, true}) {
        for (const bool bilinear : {false, true}) {
            of::InterruptState state;
            of::FnImageZoomSampler zoom(state);
            zoom.flips_y = flips, zoom.is_bilinear = bilinear;
            zoom.process(in, &out);
            for (const auto& [x, y] : places(5, 3)) {
                const float px = static_cast<float>(x) / (5.0f / 12),
                            py = static_cast<float>(flips ? 2 - y : y) / (3.0f / 8);
                const float wanted = bilinear ? in.bilinear(px + 0.5f, py + 0.5f)
                                              : in.read(static_cast<int>(px + 0.5f), static_cast<int>(py + 0.5f));
                EXPECT_EQ(out.at(x, y), wanted) << flips << bilinear;
            }
        }
    }
    of::FieldTexture field, large;
    ASSERT_TRUE(field.allocate(2, 2) && large.allocate(6, 4));
    field.fill({3, -1});
    field.at(1, 1) = {INVALID_VECTOR, 2};
    of::InterruptState state;
    of::ImageZoomerGP zoom(state);
    zoom.is_nearest = zoom.scales_values = true;
    zoom.process(field, &large);
    EXPECT_NEAR(large.at(0, 0).x, 9, 1e-5);
    EXPECT_EQ(large.at(0, 0).y, -2);
    EXPECT_EQ(large.at(5, 3).x, INVALID_VECTOR);
    EXPECT_EQ(large.at(5, 3).y, 2);
}

}  // namespace
}  // namespace qx::test
