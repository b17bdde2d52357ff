// SPDX-License-Identifier: Apache-2.0
// Whole frames through transforms of the engine as the library applies them: with and without alpha, on one thread and
// on two, by curves and by tables of a profile that has no curves, and the linear tables of a profile.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "QX/color/QX_ColourTransform.h"
#include "QX/color/QX_LinearizationTables.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"
#include "platform/standalone/Colour.h"
#include "platform/tesselcore_Threads.h"

namespace {

using namespace qx::bench;

template <class Pixel> struct Frames {
    std::unique_ptr<QX_World> src = new_frame(qx::DepthOf<Pixel>::number), dst = new_frame(qx::DepthOf<Pixel>::number);
    Frames() {
        std::minstd_rand random(1);
        fill_frame<Pixel>(*src, random);
        fill_frame<Pixel>(*dst, random);
    }
};

HCL_CMX_Transform transform(const char* from, const char* to) {
    return standalone::MakeTransform(*standalone::NamedProfile(from, nullptr), *standalone::NamedProfile(to, nullptr),
                                     standalone::Intent::relative, false, nullptr);
}

template <class Pixel>
void run(benchmark::State& state, const char* from, const char* to, bool copies_alpha, int threads) {
    be_born(standalone::ProcessorLevel::widest);
    standalone::SetPoolLimit(threads);
    static Frames<Pixel> frames;
    const HCL_CMX_Transform made = transform(from, to);
    const int rows = kHeight / threads;
    const auto band = [&](int i) {
        const M_LRect rect{0, i * rows, kWidth, (i + 1) * rows};
        const std::unique_ptr<QX_World> src(QX_World::NewReference(frames.src.get(), rect));
        const std::unique_ptr<QX_World> dst(QX_World::NewReference(frames.dst.get(), rect));
        QX_CMXApplyTransform(made, src.get(), dst.get(), copies_alpha, nullptr, nullptr);
    };
    for (auto _ : state) {
        tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(band, threads);
        benchmark::ClobberMemory();
    }
    standalone::SetPoolLimit(1);
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    constexpr int depth = qx::DepthOf<Pixel>::number;
    struct Pair {
        const char *name, *from, *to;
    };
    for (const Pair& pair :
         {Pair{"p3", "srgb", "display-p3"}, {"camera", "rec709", "srgb"}, {"light", "srgb", "linear"}}) {
        for (const bool copies : {false, true}) {
            for (const int threads : {1, 2}) {
                const std::string name =
                    std::string(pair.name) + (copies ? "-alpha" : "") + (threads > 1 ? "-threads" : "");
                add_bench("apply", name, depth, standalone::ProcessorLevel::widest,
                          [=](benchmark::State& state) { run<Pixel>(state, pair.from, pair.to, copies, threads); });
            }
        }
    }
}

void tables(benchmark::State& state) {
    be_born(standalone::ProcessorLevel::widest);
    const auto profile = standalone::NamedProfile("srgb", nullptr);
    for (auto _ : state) benchmark::DoNotOptimize(QX_MakeLinearizationTables(profile, kHCL_Gamma22));
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(),
                                     benchmark::RegisterBenchmark("apply/linear-tables", tables), true);

}  // namespace
