// SPDX-License-Identifier: Apache-2.0
// Planes of a whole 8-bit frame, and single channels out of interleaved frames and back; each thread takes a band.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "QX/pixelops/QX_ImagePlanes.h"
#include "bench/support/Frame.h"

namespace {

using namespace qx::bench;

void finish(benchmark::State& state, std::int64_t pixels) {
    benchmark::ClobberMemory();
    state.SetItemsProcessed(state.iterations() * pixels);
}

template <class T> struct Samples {
    std::vector<T> interleaved = std::vector<T>(std::size_t{4} * kWidth * kHeight, T{3});
    std::vector<T> plane = std::vector<T>(std::size_t{kWidth} * kHeight, T{2});
};
template <class T> Samples<T>& samples() {
    static Samples<T> all;
    return all;
}

template <class T> void deinterleave(benchmark::State& state) {
    auto& s = samples<T>();
    const M_LRect r = band(state.thread_index(), state.threads());
    for (auto _ : state) {
        QX_Deinterleave1<T>(s.interleaved.data(), 4, 4 * kWidth, kWidth, {kWidth, r.bottom - r.top}, {0, r.top},
                            {0, r.top}, s.plane.data());
        benchmark::ClobberMemory();
    }
    finish(state, pixels_of(r));
}

template <class T> void interleave(benchmark::State& state) {
    auto& s = samples<T>();
    const M_LRect r = band(state.thread_index(), state.threads());
    for (auto _ : state) {
        QX_Interleave1to4<T>(s.plane.data(), kWidth, 4 * kWidth, {kWidth, r.bottom - r.top}, {0, r.top}, {0, r.top},
                             s.interleaved.data());
        benchmark::ClobberMemory();
    }
    finish(state, pixels_of(r));
}

void extract_and_insert(benchmark::State& state, std::uint32_t mask) {
    static const auto world = new_frame(8);
    for (auto _ : state) {
        TK_Handle handle = nullptr;
        std::int32_t rowbytes = 0;
        QX_ExtractPlanes(nullptr, world.get(), mask, &handle, &rowbytes);
        QX_InsertPlanes(nullptr, handle, rowbytes, mask, world.get());
        TK_FreeHandle(handle);
    }
    finish(state, std::int64_t{kWidth} * kHeight);
}

[[maybe_unused]] const bool added = [] {
    for (const int threads : {1, 2}) {
        const auto add = [&](const std::string& name, void (*run)(benchmark::State&)) {
            benchmark::RegisterBenchmark(("planes/" + name).c_str(), run)->Threads(threads)->UseRealTime();
        };
        add("deinterleave/8", &deinterleave<std::uint8_t>);
        add("deinterleave/16", &deinterleave<std::uint16_t>);
        add("deinterleave/32", &deinterleave<float>);
        add("interleave/8", &interleave<std::uint8_t>);
        add("interleave/16", &interleave<std::uint16_t>);
        add("interleave/32", &interleave<float>);
    }
    for (const std::uint32_t mask : {1u, 15u}) {
        benchmark::RegisterBenchmark(("planes/extract_and_insert/mask:" + std::to_string(mask)).c_str(),
                                     [mask](benchmark::State& s) { extract_and_insert(s, mask); });
    }
    return true;
}();

}  // namespace
