// SPDX-License-Identifier: Apache-2.0
// Transforms of a whole opaque frame by quality, depth and motion, in 32 bands on one and two threads, against a copy
// of the frame's rows.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "QX/QX.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;

/// About the frame's middle.
M_Matrix3 placed(double degrees, double scale, double x) {
    const double a = degrees * 0.017453292519943295, c = scale * std::cos(a), s = scale * std::sin(a);
    const double mx = kWidth / 2.0, my = kHeight / 2.0;
    return {{{c, s, 0}, {-s, c, 0}, {mx + x - mx * c + my * s, my - mx * s - my * c, 1}}};
}

struct Case {
    const char* name;
    int quality;
    std::vector<M_Matrix3> matrices;
};

std::vector<M_Matrix3> turning(int count) {
    std::vector<M_Matrix3> list;
    for (int k = 0; k < count; ++k) list.push_back(placed(k * 0.5, 1, k * 4.0));
    return list;
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {{"draft/scale", 0, {placed(0, 1.5, 0)}},
                                          {"draft/turn", 0, {placed(10, 1.5, 0)}},
                                          {"bilinear/turn", 1, {placed(10, 1, 0)}},
                                          {"bilinear/slide", 1, {placed(0, 1, 0.5)}},
                                          {"bicubic/turn", 2, {placed(10, 1, 0)}},
                                          {"area/quarter", 1, {placed(0, 0.25, 0)}},
                                          {"moving/draft", 0, {placed(0, 1, 0), placed(0, 1, 40.5)}},
                                          {"moving/slide", 1, {placed(0, 1, 0), placed(0, 1, 40.5)}},
                                          {"moving/turn2", 1, turning(2)},
                                          {"moving/turn9", 1, turning(9)}};
    return all;
}

/// One pair of opaque frames lives at a time; transforms of it are opaque where they draw, so runs do not differ.
template <class Pixel> struct Frames {
    std::unique_ptr<QX_World> src, dst;
    Frames() : src(new_frame(qx::DepthOf<Pixel>::number)), dst(new_frame(qx::DepthOf<Pixel>::number)) {
        std::minstd_rand random(1);
        for (int y = 0; y < kHeight; ++y) {
            auto* row = reinterpret_cast<Pixel*>(row_of(*src, y));
            using Channel = QX_ChannelOf<Pixel>;
            const auto any = [&] {
                return static_cast<Channel>(static_cast<double>(random() % 32769) / 32768 * qx::DepthOf<Pixel>::full);
            };
            for (int x = 0; x < kWidth; ++x)
                row[x] = {static_cast<Channel>(qx::DepthOf<Pixel>::full), any(), any(), any()};
        }
        dst->FillAlpha();
    }
};
template <class Pixel> Frames<Pixel>& frames() {
    static Frames<Pixel> set;
    return set;
}

template <class Pixel> void transform(benchmark::State& state, const Case& c, int threads) {
    be_born(standalone::DetectedProcessorLevel());
    standalone::SetPoolLimit(threads);
    Frames<Pixel>& set = frames<Pixel>();
    QX_LayerDef src{}, dst{};
    set.src->FillOutEffectWorld(&src);
    set.dst->FillOutEffectWorld(&dst);
    const QX_CompositeModePlus mode(xfer_over, 1.0f, nullptr, false, 0);
    for (auto _ : state) {
        QX_TransformWorld(nullptr, c.quality, 0, 0, &src, &mode, nullptr, nullptr, c.matrices.data(),
                          static_cast<int>(c.matrices.size()), true, nullptr, &dst);
    }
    standalone::SetPoolLimit(0);
    // The reduction is judged by what it reads; all others by the frame they draw.
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void copy_rows(benchmark::State& state) {
    Frames<Pixel>& set = frames<Pixel>();
    for (auto _ : state) {
        for (int y = 0; y < kHeight; ++y) {
            std::memcpy(row_of(*set.dst, y), row_of(*set.src, y), kWidth * sizeof(Pixel));
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add_depth(const std::string& depth) {
    benchmark::RegisterBenchmark(("transform/memcpy/" + depth).c_str(), &copy_rows<Pixel>)->UseRealTime();
    for (const Case& c : cases()) {
        for (const int threads : {1, 2}) {
            const std::string name =
                std::string("transform/") + c.name + "/" + depth + "/threads:" + std::to_string(threads);
            benchmark::RegisterBenchmark(name.c_str(),
                                         [&c, threads](benchmark::State& s) { transform<Pixel>(s, c, threads); })
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
}

[[maybe_unused]] const bool added = [] {
    add_depth<QX_Pixel8>("8");
    add_depth<QX_Pixel16>("16");
    add_depth<QX_PixelFloat>("32");
    return true;
}();

}  // namespace
