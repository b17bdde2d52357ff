// SPDX-License-Identifier: Apache-2.0
// Frames through transforms of the engine as the library applies them: with and without alpha, in one call, in the
// bands that commands cut, and these on two threads; and the linear tables of a profile.
#include <benchmark/benchmark.h>

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

HCL_CMX_Transform transform(const char* from, const char* to) {
    return standalone::MakeTransform(*standalone::NamedProfile(from, nullptr), *standalone::NamedProfile(to, nullptr),
                                     standalone::Intent::relative, false, nullptr);
}

struct Pair {
    const char *name, *from, *to;
};
struct Cut {
    const char* name;
    int bands, threads;
};

template <class Pixel> void run(benchmark::State& state, const Pair& pair, bool copies_alpha, const Cut& cut) {
    be_born(standalone::ProcessorLevel::widest);
    standalone::SetPoolLimit(cut.threads);
    const auto& frames = FramePair<Pixel>::get();
    const HCL_CMX_Transform made = transform(pair.from, pair.to);
    const auto work = [&](int i) {
        const M_LRect rect = band(i, cut.bands);
        const std::unique_ptr<QX_World> src(QX_World::NewReference(frames.src.get(), rect));
        const std::unique_ptr<QX_World> dst(QX_World::NewReference(frames.dst.get(), rect));
        QX_CMXApplyTransform(made, src.get(), dst.get(), copies_alpha, nullptr, nullptr);
    };
    for (auto _ : state) {
        tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(work, cut.bands);
        benchmark::ClobberMemory();
    }
    standalone::SetPoolLimit(1);
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    constexpr int depth = qx::DepthOf<Pixel>::number;
    for (const Pair& pair :
         {Pair{"p3", "srgb", "display-p3"}, {"camera", "rec709", "srgb"}, {"light", "srgb", "linear"}}) {
        for (const bool copies : {false, true}) {
            for (const Cut& cut : {Cut{"", 1, 1}, {"-bands", 32, 1}, {"-threads", 32, 2}}) {
                const std::string name = std::string(pair.name) + (copies ? "-alpha" : "") + cut.name;
                add_bench("apply", name, depth, standalone::ProcessorLevel::widest,
                          [=](benchmark::State& state) { run<Pixel>(state, pair, copies, cut); });
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
