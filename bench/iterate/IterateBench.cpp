// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_Iterate.h"

#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "QX/indep/QX_WorldDepth.h"
#include "QX/library/QX_Library.h"
#include "platform/standalone/Standalone.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

/// Random pixels, or runs of clear and opaque ones as layers have them.
template <class Pixel> struct Frame {
    std::vector<Pixel> pixels = std::vector<Pixel>(static_cast<std::size_t>(kWidth) * kHeight);
    QX_LayerDef record{};

    explicit Frame(bool layer) {
        using Channel = QX_ChannelOf<Pixel>;
        std::mt19937 random(7);
        Pixel p{};
        for (std::size_t i = 0, end = 0; i < pixels.size(); ++i) {
            if (!layer || i == end) {
                const auto channel = [&] { return static_cast<Channel>(random() % 256); };
                p = {layer && (random() & 1) != 0 ? Channel{0} : channel(), channel(), channel(), channel()};
                end = i + 1 + random() % 200;
            }
            pixels[i] = p;
        }
        record.data = pixels.data();
        record.width = kWidth;
        record.height = kHeight;
        record.rowbytes = static_cast<std::int32_t>(kWidth * sizeof(Pixel));
        QXp_SetWorldDepth(&record, static_cast<int>(sizeof(Pixel)) * 2);
    }
};

/// The library with its plain routines (1 band), or in 32 bands on a pool of so many threads.
class Form {
public:
    Form(int bands, int threads) {
        standalone::SetBandCount(bands);
        standalone::SetPoolLimit(threads);
        QX_Birth();
    }
    ~Form() {
        QX_Death();
        standalone::SetBandCount(32);
        standalone::SetPoolLimit(0);
    }
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;
};

template <class Pixel> int swap_colours(void*, std::int32_t, std::int32_t, void* in, void* out) {
    const Pixel p = *static_cast<Pixel*>(in);
    *static_cast<Pixel*>(out) = {p.alpha, p.blue, p.green, p.red};
    return 0;
}

void count_pixels(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kWidth * kHeight); }

template <class Pixel> void iterate(benchmark::State& state, int bands, int threads, bool layer) {
    const Form form(bands, threads);
    Frame<Pixel> src(layer), dst(false);
    for (auto _ : state) {
        QX_Iterate(nullptr, 0, 0, &src.record, nullptr, nullptr, &swap_colours<Pixel>, &dst.record);
    }
    count_pixels(state);
}

void lut(benchmark::State& state, bool layer) {
    const Form form(1, 1);
    Frame<QX_Pixel8> src(layer), dst(false);
    std::array<std::uint8_t, 256> table;
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(255 - i);
    for (auto _ : state) {
        QX_IterateLUT(nullptr, 0, 0, &src.record, nullptr, nullptr, table.data(), table.data(), table.data(),
                      &dst.record);
    }
    count_pixels(state);
}

int nothing(void*, std::int32_t, std::int32_t, std::int32_t) { return 0; }

/// The cost of the machinery itself.
void generic(benchmark::State& state) {
    const Form form(32, 2);
    for (auto _ : state) QX_IterateGeneric(32, nullptr, &nothing);
}

template <class Pixel> void register_depth(const char* depth) {
    struct {
        const char* name;
        int bands, threads;
    } const forms[] = {{"plain", 1, 1}, {"bands_1_thread", 32, 1}, {"bands_2_threads", 32, 2}};
    for (const auto& form : forms) {
        for (const bool layer : {false, true}) {
            const std::string name =
                std::string("iterate/QX_Iterate/") + depth + "/" + form.name + (layer ? "/layer" : "/random");
            benchmark::RegisterBenchmark(name.c_str(), &iterate<Pixel>, form.bands, form.threads, layer)->UseRealTime();
        }
    }
}

const bool registered = [] {
    register_depth<QX_Pixel8>("8");
    register_depth<QX_Pixel16>("16");
    register_depth<QX_PixelFloat>("float");
    benchmark::RegisterBenchmark("iterate/QX_IterateLUT/8/plain/random", &lut, false)->UseRealTime();
    benchmark::RegisterBenchmark("iterate/QX_IterateLUT/8/plain/layer", &lut, true)->UseRealTime();
    benchmark::RegisterBenchmark("iterate/QX_IterateGeneric/any/bands_2_threads/empty", &generic)->UseRealTime();
    return true;
}();

}  // namespace
