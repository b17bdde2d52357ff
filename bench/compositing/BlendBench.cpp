// SPDX-License-Identifier: Apache-2.0
// Cross-fades of whole frames on one thread, against a copy of one. The plain level is the plain loop.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>

#include "QX/compositing/QX_Blend.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

enum class Work { copy, straight, premul };
constexpr const char* kNames[] = {"copy", "straight", "premul"};

/// Frames of random pixels, a third of them clear and a third opaque.
template <class Pixel> struct Frames {
    using D = qx::DepthOf<Pixel>;
    std::unique_ptr<QX_World> worlds[3];
    QX_LayerDef records[3]{};

    Frames() {
        std::minstd_rand random(1);
        for (int i = 0; i < 3; ++i) {
            worlds[i] = new_frame(D::number);
            worlds[i]->FillOutEffectWorld(&records[i]);
            fill_frame<Pixel>(*worlds[i], random);
        }
    }
};

template <class Pixel> void run(benchmark::State& state, Work work, ProcessorLevel level) {
    be_born(level);
    static Frames<Pixel> frames;
    for (auto _ : state) {
        QX_LayerDef* const r = frames.records;
        if (work == Work::copy) {
            std::memcpy(r[2].data, r[0].data, frame_bytes(*frames.worlds[0]));
        } else {
            const auto blend = work == Work::straight ? &QX_Blend_Straight : &QX_Blend_Premul;
            blend(nullptr, &r[0], &r[1], 0x6000, &r[2]);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    const auto add_one = [](Work work, ProcessorLevel level) {
        add_bench("blend", kNames[static_cast<int>(work)], qx::DepthOf<Pixel>::number, level,
                  [=](benchmark::State& s) { run<Pixel>(s, work, level); });
    };
    add_one(Work::copy, ProcessorLevel::plain);
    for (const Work work : {Work::straight, Work::premul}) {
        for (const auto level : kLevels) {
            add_one(work, level);
        }
    }
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(), true);

}  // namespace
