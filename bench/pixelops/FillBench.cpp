// SPDX-License-Identifier: Apache-2.0
// Fill and clear against memset of the same frame.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <string>

#include "QX/pixelops/QX_Fill.h"
#include "bench/support/Frame.h"

namespace {

using qx::bench::band;

/// Runs body(world, area) for this thread's band of one frame of the process.
using Body = std::function<void(QX_World&, const M_LRect&)>;

void run(benchmark::State& state, int depth, bool inset, const Body& body) {
    static std::unique_ptr<QX_World> frames[33];
    if (state.thread_index() == 0) frames[depth] = qx::bench::new_frame(depth);
    M_LRect area = band(state.thread_index(), state.threads());
    if (inset) area.left += 1, area.right -= 1;
    for (auto _ : state) {
        body(*frames[depth], area);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

/// Zeroes are a case of their own: some processors clear memory at twice the speed of any other value.
template <int Byte> void set_bytes(QX_World& world, const M_LRect& area) {
    const auto rows = static_cast<std::size_t>(area.bottom - area.top);
    std::memset(qx::bench::row_of(world, area.top), Byte, rows * static_cast<std::size_t>(world.rowbytes));
}

template <int R, int G, int B> void fill(QX_World& world, const M_LRect& area) {
    const QX_Pixel16 colour{32768, R, G, B};
    QX_Fill16(nullptr, &colour, &area, &world);
}

struct Case {
    const char* name;
    Body body;
    bool inset;
};

const Case cases[] = {
    {"memset/zero", set_bytes<0>, false},
    {"memset/value", set_bytes<77>, false},
    {"exported/colour", fill<20000, 3000, 77>, false},
    {"exported/grey", fill<32768, 32768, 32768>, false},
    {"exported/zero", [](QX_World& w, const M_LRect& r) { QX_Fill(nullptr, nullptr, &r, &w); }, false},
    {"exported/inset", fill<20000, 3000, 77>, true},
    {"class/colour",
     [](QX_World& w, const M_LRect& r) {
         w.Fill(QX_PixelFloat{1, 0.3f, 0.7f, 2.0f}, &r);
     },
     false},
    {"clear/inset", [](QX_World& w, const M_LRect& r) { w.Clear(&r); }, true},
    {"clear_except/centre",
     [](QX_World& w, const M_LRect& r) {
         if (r.top == 0) w.ClearExceptRect({1919, 1079, 1921, 1081});
     },
     false},
};

/// The whole frame by one thread: a tightly packed world clears from the rectangle's top to the frame's size.
void clear_whole(benchmark::State& state, int depth) {
    const auto world = qx::bench::new_frame(depth);
    for (auto _ : state) {
        world->Clear(nullptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(band(0, 1)));
}

/// A small area again and again stays in the caches.
void fill_small(benchmark::State& state, int depth) {
    const auto side = static_cast<int>(state.range(0));
    const std::unique_ptr<QX_World> world(QX_World::New(side, side, static_cast<short>(depth), 1));
    for (auto _ : state) {
        world->Fill(QX_Pixel16{32768, 1, 2, 3}, nullptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}

const bool registered = [] {
    for (const int depth : {8, 16, 32}) {
        const std::string d = std::to_string(depth);
        for (const Case& c : cases) {
            for (const int threads : {1, 2}) {
                if (threads == 2 && std::strncmp(c.name, "clear_except", 12) == 0) continue;
                const std::string name = "fill/" + std::string(c.name) + "/" + d;
                benchmark::RegisterBenchmark(name.c_str(),
                                             [&c, depth](auto& state) { run(state, depth, c.inset, c.body); })
                    ->Threads(threads)
                    ->UseRealTime();
            }
        }
        benchmark::RegisterBenchmark(("fill/clear/" + d).c_str(), clear_whole, depth)->UseRealTime();
        auto* small = benchmark::RegisterBenchmark(("fill/small/" + d).c_str(), fill_small, depth);
        for (const int side : {16, 64, 256, 512, 1024, 1400, 2048}) small->Arg(side);
    }
    return true;
}();

}  // namespace
