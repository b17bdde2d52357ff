// SPDX-License-Identifier: Apache-2.0
// Mask buffers of a frame's size on one thread, against a copy of one; the plain level is the plain loop. Blurs of
// lines against a loop that divides.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "QX/filters/QX_UnoScan.h"
#include "QX/world/QX_UnoCombine.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

/// Runs of clear and of full samples with soft edges, as masks are.
template <class Sample> void fill_as_mask(Sample* samples, std::size_t count) {
    constexpr int full = sizeof(Sample) == 1 ? 255 : 32768;
    std::minstd_rand random(1);
    for (std::size_t i = 0; i < count;) {
        const auto kind = random() % 3;
        for (std::size_t run = 1 + random() % 90; run > 0 && i < count; --run, ++i) {
            samples[i] = static_cast<Sample>(kind == 0   ? 0
                                             : kind == 1 ? full
                                                         : static_cast<int>(random() % (full + 1)));
        }
    }
}

template <class Sample> struct Masks {
    QX_UnoBuffer a{kWidth, kHeight, 8 * sizeof(Sample)}, b{kWidth, kHeight, 8 * sizeof(Sample)},
        c{kWidth, kHeight, 8 * sizeof(Sample)};

    Masks() {
        for (QX_UnoBuffer* buffer : {&a, &b, &c}) fill_as_mask(first(*buffer), std::size_t{kWidth} * kHeight);
    }
    static Sample* first(const QX_UnoBuffer& buffer) { return static_cast<Sample*>(*buffer.handle); }
};

using Work = void (*)(QX_UnoBuffer& a, QX_UnoBuffer& b, QX_UnoBuffer& c);
template <int mode> void accumulate(QX_UnoBuffer& a, QX_UnoBuffer&, QX_UnoBuffer& c) {
    QX_AccumulateUnoBuffers(nullptr, &a, mode, nullptr, &c);
}
const std::pair<const char*, Work> kWorks[] = {
    {"copy",
     [](QX_UnoBuffer& a, QX_UnoBuffer&, QX_UnoBuffer& c) {
         std::memcpy(*c.handle, *a.handle, std::size_t{kWidth} * kHeight * static_cast<std::size_t>(a.depth / 8));
     }},
    {"noisy-screen", &accumulate<-1>},
    {"screen", &accumulate<1>},
    {"intersect", &accumulate<3>},
    {"maximum", &accumulate<4>},
    {"add", &accumulate<7>},
    {"faded-add", [](QX_UnoBuffer& a, QX_UnoBuffer&,
                     QX_UnoBuffer& c) { QX_AccumulateUnoBuffers(nullptr, &a, 7, 0.5f, 1, nullptr, nullptr, &c); }},
    {"transfer", [](QX_UnoBuffer& a, QX_UnoBuffer& b,
                    QX_UnoBuffer& c) { QX_TransferUnoBuffers(nullptr, &a, &b, 0, nullptr, nullptr, &c); }},
    {"invert", [](QX_UnoBuffer&, QX_UnoBuffer&, QX_UnoBuffer& c) { QX_InvertUnoBuffer(nullptr, &c); }},
    {"fade", [](QX_UnoBuffer&, QX_UnoBuffer&, QX_UnoBuffer& c) { QX_FadeUnoBuffer(nullptr, 1, &c); }},
};

template <class Sample> void run(benchmark::State& state, Work work, ProcessorLevel level) {
    be_born(level);
    static Masks<Sample> masks;
    for (auto _ : state) {
        work(masks.a, masks.b, masks.c);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

constexpr std::int32_t kRadius = 20 << 16;

/// Three passes by the formula as it is told, with a division a sample.
template <class Sample> void plain_scan(std::vector<Sample>& scratch, std::vector<Sample>& line) {
    using Number = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    constexpr Number full = sizeof(Sample) == 1 ? 255 : 32768;
    const auto len = static_cast<std::int32_t>(line.size());
    const double r = kRadius * 0x1p-16 / 2.71;
    const int w = static_cast<int>(r) + 1;
    const auto f = static_cast<Number>((r - (w - 1)) * static_cast<double>(full));
    for (int pass = 0; pass < 3; ++pass) {
        scratch = line;
        const auto at = [&](int i) -> Number { return scratch[static_cast<std::size_t>(std::clamp(i, 0, len - 1))]; };
        Number sum = 0;
        for (int i = 1 - w; i < w; ++i) sum += at(i);
        for (int x = 0; x < len; ++x) {
            const bool left = x >= w;
            const Number ends = at(x + w) + (left ? at(x - w) : 0);
            line[static_cast<std::size_t>(x)] =
                static_cast<Sample>((full * sum + f * ends + (full + 1) / 2) /
                                    (2 * full * static_cast<Number>(w) - full + f * (left ? 2 : 1)));
            sum += at(x + w) - at(x - w + 1);
        }
    }
}

template <class Sample> void scan(benchmark::State& state, bool plain) {
    be_born(ProcessorLevel::widest);
    std::vector<Sample> line(kWidth), scratch(kWidth), before(kWidth);
    fill_as_mask(before.data(), before.size());
    for (auto _ : state) {
        std::copy(before.begin(), before.end(), line.begin());
        if (plain) {
            plain_scan(scratch, line);
        } else if constexpr (sizeof(Sample) == 1) {
            QX_BoxBlurUnoScan(2, kWidth, 0, kWidth, kRadius, scratch.data(), line.data());
        } else {
            QX_BoxBlurDeepUnoScan(2, kWidth, 0, kWidth, kRadius, scratch.data(), line.data());
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth});
}

template <class Sample> void add() {
    const auto depth = std::to_string(8 * sizeof(Sample));
    for (const auto& [name, work] : kWorks) {
        for (const auto level :
             {ProcessorLevel::plain, ProcessorLevel::vector, ProcessorLevel::faster, ProcessorLevel::widest}) {
            const bool copies = work == kWorks[0].second;
            if (copies && level != ProcessorLevel::widest) continue;
            const std::string whole =
                std::string("mask/") + name + "/" + depth + (copies ? "" : "/") + (copies ? "" : name_of(level));
            benchmark::RegisterBenchmark(whole.c_str(),
                                         [w = work, level](benchmark::State& s) { run<Sample>(s, w, level); });
        }
    }
    for (const bool plain : {true, false}) {
        const std::string name = "mask/scan-three-passes/" + depth + (plain ? "/dividing" : "/library");
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { scan<Sample>(s, plain); });
    }
}

[[maybe_unused]] const bool added = (add<std::uint8_t>(), add<std::uint16_t>(), true);

}  // namespace
