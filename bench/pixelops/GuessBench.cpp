// SPDX-License-Identifier: Apache-2.0
// Guesses of what alpha means, of whole frames. The plain level is the plain loop.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "QX/pixelops/QX_GuessAlpha.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

enum class Fill { random, layer };

/// Pixels of any alpha and colour, or runs of clear ones of one colour and of visible ones.
std::unique_ptr<QX_World> make_frame(Fill fill) {
    auto world = new_frame(8);
    std::minstd_rand random(1);
    for (int y = 0; y < kHeight; ++y) {
        auto* row = reinterpret_cast<QX_Pixel8*>(row_of(*world, y));
        for (int x = 0; x < kWidth; ++x) {
            const auto c = [&] { return static_cast<std::uint8_t>(random() >> 8); };
            const bool clear = fill == Fill::layer && (x / 50 + y / 30) % 3 != 0;
            row[x] = clear ? QX_Pixel8{0, 9, 9, 9} : QX_Pixel8{c(), c(), c(), c()};
            if (!clear && fill == Fill::layer) row[x].alpha |= 1;
        }
    }
    return world;
}

void run(benchmark::State& state, Fill fill, ProcessorLevel level) {
    be_born(level);
    static const std::unique_ptr<QX_World> frames[] = {make_frame(Fill::random), make_frame(Fill::layer)};
    QX_LayerDef record{};
    frames[static_cast<int>(fill)]->FillOutEffectWorld(&record);
    for (auto _ : state) {
        std::int32_t kind = 0;
        QX_Pixel8 matte{};
        QX_GuessAlpha(nullptr, &record, &kind, &matte);
        benchmark::DoNotOptimize(kind);
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

[[maybe_unused]] const bool added = [] {
    for (const Fill fill : {Fill::random, Fill::layer}) {
        for (const auto level :
             {ProcessorLevel::plain, ProcessorLevel::vector, ProcessorLevel::faster, ProcessorLevel::widest}) {
            const std::string name =
                std::string("guess/") + (fill == Fill::random ? "random" : "layer") + "/8/" + name_of(level);
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { run(s, fill, level); });
        }
    }
    return true;
}();

}  // namespace
