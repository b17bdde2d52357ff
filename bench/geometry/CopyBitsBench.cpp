// SPDX-License-Identifier: Apache-2.0
// Copies of a whole frame from rectangle to rectangle, in pixels of the destination; each thread takes a band.
#include <benchmark/benchmark.h>

#include <string>

#include "QX/geometry/QX_CopyBits.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;

struct Case {
    const char* name;
    qx::CopyBitsFn* copy;
    int from, to;
    double scale;  ///< sides of the destination over those of the source
};

constexpr Case kCases[] = {
    {"draft/8", &QX_CopyBits_Draft, 8, 8, 1},         {"draft/8to16", &QX_CopyBits_Draft, 8, 16, 1},
    {"draft/32to8", &QX_CopyBits_Draft, 32, 8, 1},    {"draft_up/8", &QX_CopyBits_Draft, 8, 8, 1.5},
    {"draft_up/16", &QX_CopyBits_Draft, 16, 16, 1.5}, {"draft_down/8", &QX_CopyBits_Draft, 8, 8, 0.5},
    {"hq_up/8", &QX_CopyBits_HQ_Straight, 8, 8, 1.5}, {"hq_down/8", &QX_CopyBits_HQ_Straight, 8, 8, 0.5},
};

/// The frames of the case that runs.
void run(benchmark::State& state, const Case& c) {
    static std::unique_ptr<QX_World> src, dst;
    static const Case* current = nullptr;
    if (state.thread_index() == 0) {
        be_born(standalone::ProcessorLevel::faster);
        if (current != &c) src = new_frame(c.from), dst = new_frame(c.to), current = &c;
    }
    const auto scaled = [&](int v) { return static_cast<int>(v * c.scale); };
    const M_LRect part = band(state.thread_index(), state.threads());
    M_LRect from = part, to = part;
    if (c.scale > 1) {
        from = {0, static_cast<int>(part.top / c.scale), static_cast<int>(kWidth / c.scale),
                static_cast<int>(part.bottom / c.scale)};
    } else if (c.scale < 1) {
        to = {0, scaled(part.top), scaled(kWidth), scaled(part.bottom)};
    }
    for (auto _ : state) {
        c.copy(nullptr, src.get(), dst.get(), &from, &to);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * pixels_of(to));
}

[[maybe_unused]] const bool added = [] {
    for (const Case& c : kCases) {
        for (const int threads : {1, 2}) {
            benchmark::RegisterBenchmark((std::string("copy_bits/") + c.name).c_str(),
                                         [&c](benchmark::State& s) { run(s, c); })
                ->Threads(threads)
                ->UseRealTime();
        }
    }
    return true;
}();

}  // namespace
