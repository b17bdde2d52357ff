// SPDX-License-Identifier: Apache-2.0
// Blurs of whole frames on one thread, along rows and then along columns, against a copy of one frame and a plain loop
// of the same formula. Pixels of the frame are counted once.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_GaussianKernel.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;
using standalone::ProcessorLevel;

/// Frames of random pixels, a third of them clear and a third opaque.
template <class Pixel> struct Frames {
    using D = qx::DepthOf<Pixel>;
    std::unique_ptr<QX_World> src = new_frame(D::number), between = new_frame(D::number), dst = new_frame(D::number);

    Frames() {
        std::minstd_rand random(1);
        fill_frame<Pixel>(*src, random);
    }
};

/// The plain loops: lines of pixels at a step in memory, each channel by itself, in one pass over the taps.
template <class Pixel> struct PlainLoop {
    using D = qx::DepthOf<Pixel>;
    using Channel = typename D::Channel;
    using Sum = std::conditional_t<D::number == 8, std::uint32_t, float>;
    using Whole = std::conditional_t<D::number == 32, float, std::int32_t>;
    int radius;
    std::vector<int> weights{};
    int total = 0;

    explicit PlainLoop(int r) : radius(r) {
        for (int i = -r; i <= r; ++i) {
            weights.push_back(i == 0 ? 255 : static_cast<int>(255 * QXp_GaussianValue(std::abs(i) / (r + 1.0))));
            total += weights.back();
        }
    }
    static const Channel* channels(const std::byte* line, std::ptrdiff_t step, int at) {
        return reinterpret_cast<const Channel*>(line + at * step);
    }

    void gaussian(const std::byte* in, std::byte* out, std::ptrdiff_t step, int length) const {
        for (int t = 0; t < length; ++t) {
            Sum sum[4]{};
            const auto add = [&](int k) {
                if (t + k < 0 || t + k >= length) return;
                const Channel* const tap = channels(in, step, t + k);
                const int w = weights[static_cast<std::size_t>(k + radius)];
                for (int c = 0; c < 4; ++c) sum[c] += static_cast<Sum>(w) * static_cast<Sum>(tap[c]);
            };
            add(0);
            for (int k = 1; k <= radius; ++k) add(-k), add(k);
            auto* const to = const_cast<Channel*>(channels(out, step, t));
            for (int c = 0; c < 4; ++c) {
                if constexpr (D::number == 32)
                    to[c] = sum[c] / static_cast<float>(total);
                else
                    to[c] = static_cast<Channel>((sum[c] + static_cast<Sum>(total / 2)) / static_cast<Sum>(total));
            }
        }
    }
    void box(const std::byte* in, std::byte* out, std::ptrdiff_t step, int length) const {
        Whole sum[4]{};
        const auto add = [&](int at, int sign) {
            if (at < 0 || at >= length) return;
            for (int c = 0; c < 4; ++c)
                sum[c] += static_cast<Whole>(sign) * static_cast<Whole>(channels(in, step, at)[c]);
        };
        for (int at = 0; at < radius; ++at) add(at, 1);
        const float divisor = 1024.0f * static_cast<float>(2 * radius + 1);
        for (int t = 0; t < length; ++t) {
            add(t - radius - 1, -1);
            add(t + radius, 1);
            auto* const to = const_cast<Channel*>(channels(out, step, t));
            for (int c = 0; c < 4; ++c) {
                const float v =
                    std::clamp(1024.0f * static_cast<float>(sum[c]) / divisor, 0.0f, static_cast<float>(D::full));
                to[c] = static_cast<Channel>(D::number == 32 ? v : std::nearbyint(v));
            }
        }
    }
};

enum class Work { copy, gaussian, box, boxes };
constexpr const char* kNames[] = {"copy", "gaussian", "box", "boxes"};

template <class Pixel> void blur(const Frames<Pixel>& f, Work work, float radius) {
    const auto alpha = GK::kAlphaType_Premultiplied;
    const auto once = [&](const QX_World* src, int columns, QX_World* dst) {
        if (work == Work::gaussian) {
            QX_GaussianBlur1D(nullptr, src, radius, 15, columns, alpha, columns, alpha, false, dst);
        } else {
            QX_BoxBlur1D(nullptr, src, radius, 15, work == Work::box ? 1 : 3, columns, alpha, columns, alpha, false,
                         dst);
        }
    };
    once(f.src.get(), 0, f.between.get());
    once(f.between.get(), 1, f.dst.get());
}

template <class Pixel> void blur_plainly(const Frames<Pixel>& f, Work work, int radius) {
    const PlainLoop<Pixel> loop(radius);
    std::vector<Pixel> buffers[2] = {std::vector<Pixel>(kWidth), std::vector<Pixel>(kWidth)};
    const auto line = [&](const std::byte* in, std::byte* out, std::ptrdiff_t step, int length) {
        if (work == Work::gaussian) return loop.gaussian(in, out, step, length);
        if (work == Work::box) return loop.box(in, out, step, length);
        for (int i = 0; i < length; ++i)
            std::memcpy(&buffers[0][static_cast<std::size_t>(i)], in + i * step, sizeof(Pixel));
        for (int pass = 0; pass < 3; ++pass) {
            auto* const from = reinterpret_cast<std::byte*>(buffers[pass & 1].data());
            loop.box(from, reinterpret_cast<std::byte*>(buffers[~pass & 1].data()), sizeof(Pixel), length);
        }
        for (int i = 0; i < length; ++i)
            std::memcpy(out + i * step, &buffers[1][static_cast<std::size_t>(i)], sizeof(Pixel));
    };
    for (int y = 0; y < kHeight; ++y) line(row_of(*f.src, y), row_of(*f.between, y), sizeof(Pixel), kWidth);
    for (int x = 0; x < kWidth; ++x) {
        const std::size_t at = static_cast<std::size_t>(x) * sizeof(Pixel);
        line(row_of(*f.between, 0) + at, row_of(*f.dst, 0) + at, f.between->rowbytes, kHeight);
    }
}

template <class Pixel> void run(benchmark::State& state, Work work, int radius, bool plainly, ProcessorLevel level) {
    be_born(level);
    static const Frames<Pixel> frames;
    standalone::SetPoolLimit(1);
    for (auto _ : state) {
        if (work == Work::copy) {
            std::memcpy(frames.dst->data, frames.src->data, frame_bytes(*frames.src));
        } else {
            plainly ? blur_plainly(frames, work, radius) : blur(frames, work, static_cast<float>(radius));
        }
        benchmark::ClobberMemory();
    }
    standalone::SetPoolLimit(0);
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    const auto add_one = [](Work work, int radius, const std::string& form, bool plainly, ProcessorLevel level) {
        const std::string name = std::string("blur/") + kNames[static_cast<int>(work)] + std::to_string(radius) + "/" +
                                 std::to_string(qx::DepthOf<Pixel>::number) + "/" + form;
        benchmark::RegisterBenchmark(name.c_str(),
                                     [=](benchmark::State& s) { run<Pixel>(s, work, radius, plainly, level); });
    };
    add_one(Work::copy, 0, "memcpy", false, ProcessorLevel::plain);
    for (const Work work : {Work::gaussian, Work::box, Work::boxes}) {
        add_one(work, 20, "loop", true, ProcessorLevel::plain);
        for (const auto level :
             {ProcessorLevel::plain, ProcessorLevel::vector, ProcessorLevel::faster, ProcessorLevel::widest}) {
            add_one(work, 20, name_of(level), false, level);
        }
    }
    for (const int radius : {5, 100}) add_one(Work::box, radius, "avx512", false, ProcessorLevel::widest);
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(), true);

}  // namespace
