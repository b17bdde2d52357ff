// SPDX-License-Identifier: Apache-2.0
// Copies between all depths against memcpy of the frame of the destination's depth.
#include <benchmark/benchmark.h>

#include <cstring>
#include <span>
#include <string>

#include "QX/pixelops/QX_Noise.h"
#include "bench/support/Frame.h"
#include "tests/support/Pixels.h"

namespace {

using qx::bench::band;
using qx::test::FillKind;

template <class Pixel> void fill(QX_World& world, FillKind kind) {
    const auto count = static_cast<std::size_t>(world.width) * static_cast<std::size_t>(world.height);
    qx::test::fill_pixels(std::span(static_cast<Pixel*>(world.data), count), kind, 1);
}

QX_World& source(int depth, FillKind kind) {
    static std::unique_ptr<QX_World> worlds[33][2];
    auto& world = worlds[depth][kind == FillKind::layer];
    if (world != nullptr) return *world;
    world = qx::bench::new_frame(depth);
    if (depth == 8) fill<QX_Pixel8>(*world, kind);
    if (depth == 16) fill<QX_Pixel16>(*world, kind);
    if (depth == 32) fill<QX_PixelFloat>(*world, kind);
    return *world;
}

QX_World& target(int depth) {
    static std::unique_ptr<QX_World> worlds[33];
    if (worlds[depth] == nullptr) worlds[depth] = qx::bench::new_frame(depth);
    return *worlds[depth];
}

struct Shape {
    int from, to;
    bool dither;
    FillKind kind;
};

void copy(benchmark::State& state, Shape s) {
    static QX_World *src, *dst;
    if (state.thread_index() == 0) {
        qx::start_noise();
        src = &source(s.from, s.kind);
        dst = &target(s.to);
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    for (auto _ : state) {
        dst->CopyRectPossiblyDifferentBitdepth(src, area, s.dither, area.left, area.top, nullptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

void plain_memcpy(benchmark::State& state, int depth) {
    static QX_World *src, *dst;
    if (state.thread_index() == 0) {
        src = &source(depth, FillKind::random);
        dst = &target(depth);
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    const std::size_t rows = static_cast<std::size_t>(area.bottom - area.top);
    for (auto _ : state) {
        std::memcpy(qx::bench::row_of(*dst, area.top), qx::bench::row_of(*src, area.top),
                    rows * static_cast<std::size_t>(dst->rowbytes));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

void add(const Shape& s, int threads) {
    const std::string name = "copy/rect/" + std::to_string(s.from) + "to" + std::to_string(s.to) +
                             (s.dither ? "/dither" : "/plain") + (s.kind == FillKind::layer ? "/layer" : "/random");
    benchmark::RegisterBenchmark(name.c_str(), copy, s)->Threads(threads)->UseRealTime();
}

const bool registered = [] {
    for (const int threads : {1, 2}) {
        for (const int to : {8, 16, 32}) {
            const std::string name = "copy/memcpy/" + std::to_string(to);
            benchmark::RegisterBenchmark(name.c_str(), plain_memcpy, to)->Threads(threads)->UseRealTime();
            for (const int from : {8, 16, 32}) {
                for (const FillKind kind : {FillKind::random, FillKind::layer}) {
                    add({from, to, false, kind}, threads);
                    if (to == 8 && from != 8) add({from, to, true, kind}, threads);
                }
            }
        }
    }
    return true;
}();

}  // namespace
