// SPDX-License-Identifier: Apache-2.0
// Premultiply and mattes of a whole frame in place, against a copy of its rows. The pool's threads work on it.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>

#include "QX/indep/QX_Depth.h"
#include "QX/pixelops/QX_Premul.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

enum class Work { copy, forward, reverse, colour_forward, colour_reverse };
constexpr const char* kNames[] = {"copy", "forward", "reverse", "colour_forward", "colour_reverse"};

template <class Pixel> QX_World& frame() {
    using D = qx::DepthOf<Pixel>;
    static const auto world = [] {
        auto made = new_frame(D::number);
        std::minstd_rand random(1);
        const auto channel = [&] {
            return static_cast<typename D::Channel>(static_cast<double>(random() % 32769) / 32768 * D::full);
        };
        for (int y = 0; y < kHeight; ++y) {
            auto* row = reinterpret_cast<Pixel*>(row_of(*made, y));
            for (int x = 0; x < kWidth; ++x) row[x] = {channel(), channel(), channel(), channel()};
        }
        return made;
    }();
    return *world;
}

template <class Pixel> void run(benchmark::State& state, Work work, ProcessorLevel level, int threads) {
    be_born(level);
    standalone::SetPoolLimit(threads);
    QX_World& world = frame<Pixel>();
    static const auto other = new_frame(qx::DepthOf<Pixel>::number);
    const QX_Pixel8 colour{0, 200, 100, 50};
    for (auto _ : state) {
        if (work == Work::copy) {
            std::memcpy(other->data, world.data, frame_bytes(world));
        } else if (work == Work::forward || work == Work::reverse) {
            QX_Premul(nullptr, work == Work::forward, &world);
        } else {
            QX_PremulColor(nullptr, &world, &colour, work == Work::colour_forward, &world);
        }
        benchmark::ClobberMemory();
    }
    standalone::SetPoolLimit(0);
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add(Work work, ProcessorLevel level, int threads) {
    const std::string name = std::string("premul/") + kNames[static_cast<int>(work)] + "/" +
                             std::to_string(qx::DepthOf<Pixel>::number) + "/" + name_of(level) +
                             "/threads:" + std::to_string(threads);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) {
        run<Pixel>(s, work, level, threads);
    })->UseRealTime();
}

template <class Pixel> void add_depth() {
    add<Pixel>(Work::copy, ProcessorLevel::plain, 1);
    for (const Work work : {Work::forward, Work::reverse, Work::colour_forward, Work::colour_reverse}) {
        for (const int threads : {1, 2}) add<Pixel>(work, ProcessorLevel::faster, threads);
        if (work == Work::forward || work == Work::reverse) add<Pixel>(work, ProcessorLevel::plain, 1);
    }
}

[[maybe_unused]] const bool added = [] {
    add_depth<QX_Pixel8>();
    add_depth<QX_Pixel16>();
    add_depth<QX_PixelFloat>();
    return true;
}();

}  // namespace
