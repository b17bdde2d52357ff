// SPDX-License-Identifier: Apache-2.0
// Whole frames between frames: of a pair whose vectors are not there yet, and further ones of a pair whose are.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "QX/QX.h"
#include "bench/support/Library.h"
#include "platform/standalone/Host.h"

namespace {

struct Size {
    int width, height;
};
constexpr Size kSizes[] = {{1280, 720}, {3840, 2160}};

using World = std::unique_ptr<QX_World>;

/// Waves of several lengths, displaced, under a patch that moves otherwise.
double wave(double x, double y) {
    return 0.5 + 0.2 * std::sin(x * 0.21 + 2 * std::sin(y * 0.05)) + 0.15 * std::sin(y * 0.17 + x * 0.033) +
           0.1 * std::sin((x + y) * 0.41) + 0.04 * std::sin(x * 1.7 - y * 1.3);
}
double painted(double x, double y, double time, const Size& size) {
    const double left = size.width * 0.3 + 9 * time, top = size.height * 0.3 - 4 * time;
    const bool patch = x > left && x < left + size.width * 0.25 && y > top && y < top + size.height * 0.4;
    return patch ? wave(x * 1.3 - left * 1.3, y * 1.3 - top * 1.3 + 77) : wave(x + 3.5 * time, y + 1.25 * time);
}

template <class Pixel, class Channel> void paint(QX_World& world, double time, double full, const Size& size) {
    for (int y = 0; y < world.height; ++y) {
        auto* const row =
            reinterpret_cast<Pixel*>(static_cast<std::byte*>(world.data) + std::ptrdiff_t{world.rowbytes} * y);
        for (int x = 0; x < world.width; ++x) {
            const double v = painted(x, y, time, size);
            const auto channel = [&](double share) { return static_cast<Channel>(v * share * full); };
            row[x] = {static_cast<Channel>(full), channel(1), channel(0.9), channel(0.7)};
        }
    }
}
World frame(const Size& size, int depth, double time) {
    World world(QX_World::New(size.width, size.height, static_cast<std::int16_t>(depth), 1));
    if (depth == 8) paint<QX_Pixel8, std::uint8_t>(*world, time, 255, size);
    if (depth == 16) paint<QX_Pixel16, std::uint16_t>(*world, time, 32768, size);
    if (depth == 32) paint<QX_PixelFloat, float>(*world, time, 1, size);
    return world;
}

struct Pair {
    World first, second, out;
    Pair(const Size& size, int depth)
        : first(frame(size, depth, 0)), second(frame(size, depth, 1)), out(frame(size, depth, 0)) {}
};

enum Quality { kDefault, kDraft, kGood, kBest, kFull };
QX_Solvan_AlgoParams record_of(int quality) {
    QX_Solvan_AlgoParams a;
    a.vectorDetail = quality == kDraft                      ? 25.1f
                     : quality == kGood || quality == kBest ? 50.1f
                     : quality == kFull                     ? 100
                                                            : 20.1f;
    if (quality == kDraft || quality == kGood || quality == kBest) a.estimatorSmoothness = 30;
    a.convergenceError = quality == kBest ? 0.1f : 1.0f;
    a.highQualityFilter = quality == kBest ? 1 : 0;
    a.lumaRed *= 100, a.lumaGreen *= 100, a.lumaBlue *= 100;
    return a;
}

void Frame(benchmark::State& state) {
    const Size size = kSizes[state.range(0)];
    const auto depth = static_cast<int>(state.range(1));
    const bool is_further = state.range(3) != 0;
    qx::bench::be_born(standalone::DetectedProcessorLevel());
    standalone::SetPoolLimit(static_cast<int>(state.range(4)));
    Pair pair(size, depth);
    static std::uint32_t number = 0;  // of a pair that no run has had
    ++number;
    QX_Solvan_OtherParams other{};
    other.position = 0.5;
    for (auto _ : state) {
        if (!is_further) ++number;
        other.firstFrameId = {number, 1, 0, {}};
        other.secondFrameId = {number, 2, 0, {}};
        QX_AdvancedFrameBlending blending(record_of(static_cast<int>(state.range(2))), other, {});
        if (blending.Render(pair.first.get(), pair.second.get(), pair.out.get()) != 0) state.SkipWithError("failed");
    }
    standalone::SetPoolLimit(0);
    state.SetItemsProcessed(state.iterations() * size.width * size.height);
}

void Copy(benchmark::State& state) {
    const Size size = kSizes[state.range(0)];
    Pair pair(size, 8);
    for (auto _ : state) {
        std::memcpy(pair.out->data, pair.first->data,
                    static_cast<std::size_t>(pair.out->rowbytes) * std::size_t(size.height));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * size.width * size.height);
}

void cases(benchmark::internal::Benchmark* b) {
    b->ArgNames({"4K", "depth", "quality", "further", "threads"})->Unit(benchmark::kMillisecond)->UseRealTime();
    for (const int quality : {kDefault, kDraft, kGood, kBest, kFull})
        for (const int further : {0, 1})
            for (const int threads : {1, 2}) b->Args({0, 8, quality, further, threads});
    for (const int depth : {16, 32})
        for (const int quality : {kDefault, kGood}) b->Args({0, depth, quality, 0, 1});
    for (const int threads : {1, 2}) b->Args({1, 8, kDefault, 0, threads});
}

BENCHMARK(Copy)->Name("opticalflow/copy")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(Frame)->Name("opticalflow/frame")->Apply(cases);

}  // namespace
