// SPDX-License-Identifier: Apache-2.0
// Samplers of a set, called a pixel at a time as the rows of a transform do, under a rotation by ten degrees; and the
// area of a reduction to a quarter, in pixels of the source. A plain scalar loop and memcpy stand beside.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SamplerSet.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"
#include "tests/support/Pixels.h"

namespace {

using qx::test::FillKind;

/// The frame of the destination, rotated by ten degrees, lies in this.
constexpr int kSourceWidth = 4200, kSourceHeight = 2840;

/// Pictures have none, and processors take their time over them.
template <class Pixel> void without_denormals(std::span<Pixel> pixels) {
    if constexpr (sizeof(Pixel) == 16) {
        for (Pixel& p : pixels) {
            for (float* c : {&p.alpha, &p.red, &p.green, &p.blue}) *c = std::fpclassify(*c) == FP_SUBNORMAL ? 0 : *c;
        }
    }
}

template <class Pixel> QX_World* source(FillKind kind) {
    static std::unique_ptr<QX_World> world;
    static FillKind current;
    if (!world || current != kind) {
        world.reset(QX_World::New(kSourceWidth, kSourceHeight, qx::DepthOf<Pixel>::number, 0));
        for (int y = 0; y < kSourceHeight; ++y) {
            auto* row = reinterpret_cast<Pixel*>(qx::bench::row_of(*world, y));
            qx::test::fill_pixels(std::span(row, kSourceWidth), kind, static_cast<std::uint64_t>(y));
            without_denormals(std::span(row, kSourceWidth));
        }
        current = kind;
    }
    return world.get();
}

std::int32_t fixed(double v) { return static_cast<std::int32_t>(std::lround(v * 65536)); }

/// The straight bilinear sample as a reader would write it first, one channel after the other.
int scalar_sample(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    const auto* row = static_cast<const std::byte*>(params->src->data) +
                      std::ptrdiff_t{y >> 16} * params->src->rowbytes + std::ptrdiff_t{x >> 16} * 4;
    const std::byte* at[4] = {row, row + 4, row + params->src->rowbytes, row + params->src->rowbytes + 4};
    QX_Pixel8 p[4];
    for (int i = 0; i < 4; ++i) std::memcpy(&p[i], at[i], 4);
    const float fx = static_cast<float>(x & 0xFFFF) * 0x1p-16f, fy = static_cast<float>(y & 0xFFFF) * 0x1p-16f;
    const float w3 = fx * fy, w1 = fx - w3, w2 = fy - w3, w0 = ((1 - w1) - w2) - w3;
    const float w[4] = {w0, w1, w2, w3};
    const auto limited = [](float v) {
        return static_cast<std::uint8_t>(v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(v));
    };
    if (p[0].alpha == p[1].alpha && p[0].alpha == p[2].alpha && p[0].alpha == p[3].alpha) {
        const auto mix = [&](auto c) {
            return limited((w[3] * p[3].*c + w[2] * p[2].*c) + (w[1] * p[1].*c + w[0] * p[0].*c) + 0.5f);
        };
        *out = {p[0].alpha, mix(&QX_Pixel8::red), mix(&QX_Pixel8::green), mix(&QX_Pixel8::blue)};
        return 0;
    }
    float a[4];
    for (int i = 0; i < 4; ++i) a[i] = w[i] * p[i].alpha;
    const float alpha = (a[3] + a[2]) + (a[1] + a[0]), inverse = 1 / alpha;
    const auto mix = [&](auto c) {
        return limited(((a[3] * p[3].*c + a[2] * p[2].*c) + (a[1] * p[1].*c + a[0] * p[0].*c)) * inverse + 0.5f);
    };
    *out = alpha < 0.5f
               ? QX_Pixel8{}
               : QX_Pixel8{limited(alpha + 0.5f), mix(&QX_Pixel8::red), mix(&QX_Pixel8::green), mix(&QX_Pixel8::blue)};
    return 0;
}

template <class Pixel> QX_PointSampler<Pixel> nearest() {
    if constexpr (sizeof(Pixel) == 4) return &QX_NNSample;
    if constexpr (sizeof(Pixel) == 8) return &QX_NNSample16;
    if constexpr (sizeof(Pixel) == 16) return &QX_NNSampleFloat;
}

/// The frame, row by row, from the source turned by ten degrees about the middle.
template <class Pixel> void rotate(benchmark::State& state, FillKind kind, QX_PointSampler<Pixel> (*pick)()) {
    static QX_World* world;
    static std::unique_ptr<QX_World> frame;
    if (state.thread_index() == 0) {
        qx::bench::be_born(standalone::ProcessorLevel::faster);
        world = source<Pixel>(kind);
        frame = qx::bench::new_frame(qx::DepthOf<Pixel>::number);
    }
    const M_LRect area = qx::bench::band(state.thread_index(), state.threads());
    const double angle = 10 * std::acos(-1.0) / 180, c = std::cos(angle), s = std::sin(angle);
    const std::int32_t step_x = fixed(c), step_y = fixed(s);
    for (auto _ : state) {
        const auto sample = pick();
        QX_SampPB params{};
        params.src = world;
        for (int y = area.top; y < area.bottom; ++y) {
            auto* out = reinterpret_cast<Pixel*>(qx::bench::row_of(*frame, y));
            const double dx = -qx::bench::kWidth / 2.0, dy = y - qx::bench::kHeight / 2.0;
            std::int32_t sx = fixed(kSourceWidth / 2.0 + dx * c - dy * s);
            std::int32_t sy = fixed(kSourceHeight / 2.0 + dx * s + dy * c);
            for (int x = 0; x < qx::bench::kWidth; ++x, sx += step_x, sy += step_y) {
                sample(nullptr, sx, sy, &params, out + x);
            }
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

template <class Pixel> void reduce(benchmark::State& state, double offset) {
    static QX_World* world;
    static std::unique_ptr<QX_World> frame;
    if (state.thread_index() == 0) {
        qx::bench::be_born(standalone::ProcessorLevel::faster);
        world = source<Pixel>(FillKind::layer);
        frame = qx::bench::new_frame(qx::DepthOf<Pixel>::number);
    }
    const M_LRect area = qx::bench::band(state.thread_index(), state.threads());
    for (auto _ : state) {
        const auto sample = QXp_GetSamplerSet<Pixel>(1).area;
        QX_SampPB params{fixed(2), fixed(2), fixed(16), world, 0, {}};
        for (int y = area.top / 4; y < area.bottom / 4; ++y) {
            auto* out = reinterpret_cast<Pixel*>(qx::bench::row_of(*frame, y));
            std::int32_t sx = fixed(1.5 + offset);
            const std::int32_t sy = fixed(4 * y + 1.5 + offset);
            for (int x = 0; x < qx::bench::kWidth / 4; ++x, sx += 4 << 16) {
                sample(nullptr, sx, sy, &params, out + x);
            }
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

void copy(benchmark::State& state) {
    static std::unique_ptr<QX_World> from, to;
    if (state.thread_index() == 0) {
        from = qx::bench::new_frame(8);
        to = qx::bench::new_frame(8);
        from->Fill(QX_Pixel16{32768, 1, 2, 3}, nullptr);  // no page of it is the one of zeroes
        to->Fill(QX_Pixel16{32768, 1, 2, 3}, nullptr);
    }
    const M_LRect area = qx::bench::band(state.thread_index(), state.threads());
    const auto bytes = static_cast<std::size_t>(area.bottom - area.top) * qx::bench::kWidth * 4;
    for (auto _ : state) {
        std::memcpy(qx::bench::row_of(*to, area.top), qx::bench::row_of(*from, area.top), bytes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * qx::bench::pixels_of(area));
}

template <class Body> void add(const std::string& name, const Body& body) {
    for (const int threads : {1, 2}) {
        benchmark::RegisterBenchmark(("sampling/" + name).c_str(), body)->Threads(threads)->UseRealTime();
    }
}

template <class Pixel> void add_depth(const std::string& depth) {
    struct Fill {
        FillKind kind;
        const char* name;
    };
    for (const auto& [kind, name] :
         {Fill{FillKind::opaque, "opaque"}, {FillKind::layer, "layer"}, {FillKind::random, "random"}}) {
        const auto one = [&, kind = kind, name = name](const std::string& what, QX_PointSampler<Pixel> (*pick)()) {
            add(what + "/" + depth + "/" + name, [kind, pick](auto& state) { rotate<Pixel>(state, kind, pick); });
        };
        one("nearest", &nearest<Pixel>);
        one("bilinear", [] { return QXp_GetSamplerSet<Pixel>(1).unclipped; });
        one("bilinear_clipped", [] { return QXp_GetSamplerSet<Pixel>(1).clipped; });
        one("bicubic", [] { return QXp_GetSamplerSet<Pixel>(2).unclipped; });
        if constexpr (sizeof(Pixel) == 4) one("scalar", [] { return QX_PointSampler<Pixel>{&scalar_sample}; });
    }
    add("area_quarter/" + depth + "/whole", [](auto& state) { reduce<Pixel>(state, 0); });
    add("area_quarter/" + depth + "/shifted", [](auto& state) { reduce<Pixel>(state, 0.3); });
}

const bool registered = [] {
    add("memcpy/8", copy);
    add_depth<QX_Pixel8>("8");
    add_depth<QX_Pixel16>("16");
    add_depth<QX_PixelFloat>("float");
    return true;
}();

}  // namespace
