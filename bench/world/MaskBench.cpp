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
#include "QX/indep/QX_Depth.h"
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

/// Loops of one sample at a time.
using D8 = qx::Depth8;
std::int32_t screen_of(std::int32_t, std::int32_t s, std::int32_t d) { return D8::combine(s, d); }
std::int32_t sum_of(std::int32_t, std::int32_t s, std::int32_t d) { return std::min(s + d, D8::full); }
std::int32_t blend_of(std::int32_t a, std::int32_t s, std::int32_t d) {
    const std::int32_t e = s - d, p = a * e + 128 + (e >> 31);
    return d + (((p >> 8) + p) >> 8);
}
std::int32_t inverse_of(std::int32_t, std::int32_t, std::int32_t d) { return D8::comp(d); }

template <std::int32_t (*formula)(std::int32_t a, std::int32_t s, std::int32_t d)> void loop(benchmark::State& state) {
    static Masks<std::uint8_t> masks;
    const auto *a = masks.first(masks.a), *s = masks.first(masks.b);
    auto* const d = masks.first(masks.c);
    for (auto _ : state) {
        for (int i = 0; i < kWidth * kHeight; ++i) d[i] = static_cast<std::uint8_t>(formula(a[i], s[i], d[i]));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}
const std::pair<const char*, void (*)(benchmark::State&)> kLoops[] = {{"screen", &loop<&screen_of>},
                                                                      {"add", &loop<&sum_of>},
                                                                      {"transfer", &loop<&blend_of>},
                                                                      {"invert", &loop<&inverse_of>}};

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

template <class Sample, class Blur> void scan(benchmark::State& state, const Blur& blur) {
    std::vector<Sample> line(kWidth), scratch(kWidth), before(kWidth);
    fill_as_mask(before.data(), before.size());
    for (auto _ : state) {
        std::copy(before.begin(), before.end(), line.begin());
        blur(scratch, line);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth});
}
void library_scan(std::vector<std::uint8_t>& scratch, std::vector<std::uint8_t>& line) {
    QX_BoxBlurUnoScan(2, kWidth, 0, kWidth, kRadius, scratch.data(), line.data());
}
void library_scan(std::vector<std::uint16_t>& scratch, std::vector<std::uint16_t>& line) {
    QX_BoxBlurDeepUnoScan(2, kWidth, 0, kWidth, kRadius, scratch.data(), line.data());
}

template <class Sample> void add() {
    const auto depth = std::to_string(8 * sizeof(Sample));
    const auto add_one = [](const std::string& name, const auto& run) {
        benchmark::RegisterBenchmark(("mask/" + name).c_str(), run);
    };
    add_one("scan/" + depth + "/loop", [](benchmark::State& s) {
        scan<Sample>(s, [](auto& scratch, auto& line) { plain_scan<Sample>(scratch, line); });
    });
    for (const auto level :
         {ProcessorLevel::plain, ProcessorLevel::vector, ProcessorLevel::faster, ProcessorLevel::widest}) {
        const std::string behind = "/" + depth + "/" + name_of(level);
        for (const auto& [name, work] : kWorks) {
            add_one(name + behind, [w = work, level](benchmark::State& s) { run<Sample>(s, w, level); });
        }
        add_one("scan" + behind, [level](benchmark::State& s) {
            be_born(level);
            scan<Sample>(s, [](auto& scratch, auto& line) { library_scan(scratch, line); });
        });
    }
}

bool add_all() {
    for (const auto& [name, loop] : kLoops) {
        benchmark::RegisterBenchmark((std::string("mask/") + name + "/8/loop").c_str(), loop);
    }
    add<std::uint8_t>();
    add<std::uint16_t>();
    return true;
}
[[maybe_unused]] const bool added = add_all();

}  // namespace
