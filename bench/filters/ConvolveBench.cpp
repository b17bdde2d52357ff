// SPDX-License-Identifier: Apache-2.0
// Convolutions of whole frames on one thread by four unlike kernels of 5 by 5, against a copy of a frame and the plain
// loop of the same formula.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>

#include "QX/filters/QX_Convolve.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

enum class Work { copy, loop, normalised, heavy };
constexpr const char* kNames[] = {"copy", "loop", "5x5", "5x5 of weights above 16 bits"};
constexpr int kSize = 5, kHalf = kSize / 2, kTaps = kSize * kSize;
using Kernels = std::int32_t[4][kTaps];

/// Two frames, the first of random channels.
template <class Pixel> struct Frames {
    using D = qx::DepthOf<Pixel>;
    std::unique_ptr<QX_World> worlds[2];
    QX_LayerDef records[2]{};

    Frames() {
        std::minstd_rand random(1);
        for (int i = 0; i < 2; ++i) {
            worlds[i] = new_frame(D::number);
            worlds[i]->FillOutEffectWorld(&records[i]);
        }
        for (int y = 0; y < kHeight; ++y) {
            auto* row = reinterpret_cast<typename D::Channel*>(row_of(*worlds[0], y));
            for (int i = 0; i < 4 * kWidth; ++i) {
                row[i] = static_cast<typename D::Channel>(static_cast<double>(random() % 32769) / 32768 * D::full);
            }
        }
    }
};

/// The plain loop: pixels whose windows lie in the source.
template <class Pixel> void plain_loop(const Frames<Pixel>& frames, const Kernels& kernels) {
    using D = qx::DepthOf<Pixel>;
    using Channel = typename D::Channel;
    using Sum = std::conditional_t<D::number == 32, float, std::int32_t>;
    Sum divisor[4]{};
    for (int c = 0; c < 4; ++c) {
        for (const std::int32_t w : kernels[c]) divisor[c] += static_cast<Sum>(w);
    }
    for (int y = kHalf; y < kHeight - kHalf; ++y) {
        auto* const to = reinterpret_cast<Channel*>(row_of(*frames.worlds[1], y));
        for (int x = kHalf; x < kWidth - kHalf; ++x) {
            for (int c = 0; c < 4; ++c) {
                Sum sum = 0;
                for (int i = 0; i < kTaps; ++i) {
                    const auto* from =
                        reinterpret_cast<const Channel*>(row_of(*frames.worlds[0], y - kHalf + i / kSize));
                    sum += static_cast<Sum>(from[4 * (x - kHalf + i % kSize) + c]) * static_cast<Sum>(kernels[c][i]);
                }
                const Sum v = sum / divisor[c];
                to[4 * x + c] = static_cast<Channel>(v < 0 ? 0 : v > D::full ? D::full : v);
            }
        }
    }
}

template <class Pixel> void run(benchmark::State& state, Work work, ProcessorLevel level) {
    be_born(level);
    static Frames<Pixel> frames;
    Kernels k;
    for (int c = 0; c < 4; ++c) {
        for (int i = 0; i < kTaps; ++i) k[c][i] = (i * 37 + c * 11) % 23 + c - 3 + (work == Work::heavy ? 70000 : 0);
    }
    for (auto _ : state) {
        QX_LayerDef* const r = frames.records;
        if (work == Work::copy) {
            std::memcpy(r[1].data, r[0].data, frame_bytes(*frames.worlds[0]));
        } else if (work == Work::loop) {
            plain_loop(frames, k);
        } else {
            QX_Convolve(nullptr, &r[0], nullptr, kQX_Convolve_Normalise, kSize, k[0], k[1], k[2], k[3], &r[1]);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    const auto add_one = [](Work work, ProcessorLevel level) {
        add_bench("convolve", kNames[static_cast<int>(work)], qx::DepthOf<Pixel>::number, level,
                  [=](benchmark::State& s) { run<Pixel>(s, work, level); });
    };
    for (const Work work : {Work::copy, Work::loop}) add_one(work, ProcessorLevel::plain);
    for (const auto level : kLevels) {
        add_one(Work::normalised, level);
    }
    add_one(Work::heavy, ProcessorLevel::widest);
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(), true);

}  // namespace
