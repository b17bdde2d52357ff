// SPDX-License-Identifier: Apache-2.0
// An effect from outside that copies a frame, beside copies of a frame; a loop of its own beside the iterate suite.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "QX/suites/QX_Suites.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"
#include "host/PlugInEffect.h"
#include "platform/standalone/Host.h"

namespace {

using namespace qx;

void finish(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * bench::kWidth * bench::kHeight); }

void copy_frames(benchmark::State& state, int copies) {
    bench::be_born(standalone::ProcessorLevel::widest);
    const auto& frames = bench::FramePair<QX_Pixel8>::get();
    for (auto _ : state) {
        for (int i = 0; i < copies; ++i) {
            for (int y = 0; y < bench::kHeight; ++y) {
                std::memcpy(bench::row_of(*frames.dst, y), bench::row_of(*frames.src, y), bench::kWidth * 4);
            }
            benchmark::ClobberMemory();
        }
    }
    finish(state);
}

/// The effect on a canvas, whose result is the next turn's source.
void apply_effect(benchmark::State& state, int way, int threads) {
    bench::be_born(standalone::ProcessorLevel::widest);
    if (QX_InstallSuites() != 0) return state.SkipWithError("no suites");
    standalone::SetPoolLimit(threads);
    host::PlugInEffect effect(host::EffectModule::load(QX_BENCH_EFFECTS "/Copy.so"));
    *std::get<scene::ChoiceKey>(effect.keys().front().kind).to = way;
    scene::Canvas canvas{bench::new_frame(8)};
    const scene::Moment moment{
        .frame = 0, .subject = "bench", .picture = {}, .note = {}, .watch = pictures::unwatched()};
    for (auto _ : state) effect.apply(canvas, moment);
    effect.rest();
    standalone::SetPoolLimit(0);
    finish(state);
}

const bool registered = [] {
    for (const int copies : {1, 3}) {
        benchmark::RegisterBenchmark(("host/frame_copies/8/" + std::to_string(copies)).c_str(), &copy_frames, copies)
            ->UseRealTime();
    }
    const char* const ways[] = {"copy_by_rows", "loop_in_the_module", "iterate_suite"};
    for (int way = 0; way < 3; ++way) {
        for (const int threads : {1, 2}) {
            if (way != 2 && threads != 1) continue;
            const std::string name = std::string("host/effect/8/") + ways[way] + "/" + std::to_string(threads);
            benchmark::RegisterBenchmark(name.c_str(), &apply_effect, way, threads)->UseRealTime();
        }
    }
    return true;
}();

}  // namespace
