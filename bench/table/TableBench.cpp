// SPDX-License-Identifier: Apache-2.0
// The lines of the table of `make bench-table`: whole frames of a layer onto a like one, at the best level.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>

#include "QX/QX.h"
#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Library.h"

namespace {

using namespace qx::bench;

/// Alpha of a layer: three quarters opaque, a few pixels in a hundred clear, the rest graded, in areas.
double alpha_at(int x, int y) {
    const int place = (x / 80 + 3 * (y / 60)) % 36;
    if (place < 27) return 1;
    return place == 35 ? 0 : 0.1 + 0.8 * std::fabs(std::sin(x * 0.05 + y * 0.03));
}

template <class Pixel> std::unique_ptr<QX_World> layer(int seed) {
    using Channel = QX_ChannelOf<Pixel>;
    constexpr auto full = static_cast<double>(qx::DepthOf<Pixel>::full);
    auto world = new_frame(qx::DepthOf<Pixel>::number);
    for (int y = 0; y < kHeight; ++y) {
        auto* row = reinterpret_cast<Pixel*>(row_of(*world, y));
        for (int x = 0; x < kWidth; ++x) {
            const auto colour = [&](int k) {
                return static_cast<Channel>((0.5 + 0.5 * std::sin(0.013 * k * x + 0.007 * y + seed)) * full);
            };
            row[x] = {static_cast<Channel>(alpha_at(x + 500 * seed, y + 300 * seed) * full), colour(1), colour(2),
                      colour(3)};
        }
    }
    return world;
}

/// The frames of one depth; one set lives at a time.
template <class Pixel> struct Frames {
    std::unique_ptr<QX_World> src = layer<Pixel>(1), fresh = layer<Pixel>(2), mask = layer<Pixel>(3);
    std::unique_ptr<QX_World> dst = new_frame(qx::DepthOf<Pixel>::number);
    std::unique_ptr<QX_World> other[3] = {new_frame(8), new_frame(16), new_frame(32)};
    std::unique_ptr<QX_World> quarter{
        QX_World::New(kWidth / 4, kHeight / 4, static_cast<short>(qx::DepthOf<Pixel>::number), 1)};
    QX_LinearBlendingTables tables;
};

/// One line: work(frames, rows) on the rows of one thread.
template <class Pixel> using Work = std::function<void(Frames<Pixel>&, const M_LRect&)>;

QX_LayerDef record(QX_World& world) {
    QX_LayerDef made{};
    world.FillOutEffectWorld(&made);
    return made;
}

template <class Pixel> Work<Pixel> transfer(int xfer, float opacity, bool masked = false, bool linear = false) {
    return [=](Frames<Pixel>& f, const M_LRect& area) {
        thread_local qx::OwnScratch scratch;
        [[maybe_unused]] thread_local const int code = scratch.allocate(kWidth, sizeof(QX_ChannelOf<Pixel>), false);
        QX_LayerDef src = record(*f.src), dst = record(*f.dst);
        const QX_MaskWorld mask{record(*f.mask), 0, 0, 0};
        const QX_CompositeModePlus mode(xfer, opacity, nullptr, false, 0);
        QX_TransferRectPlus(nullptr, 1, 0, 0, &area, &src, &mode, linear ? &f.tables : nullptr,
                            masked ? &mask : nullptr, scratch.get(), 0, area.top, &dst);
    };
}

template <class Pixel> Work<Pixel> convert(int place) {
    return [=](Frames<Pixel>& f, const M_LRect& area) {
        f.other[place]->CopyRectPossiblyDifferentBitdepth(f.src.get(), area, false, 0, area.top, nullptr);
    };
}

template <class Pixel> Work<Pixel> premultiply(bool forward) {
    return [=](Frames<Pixel>& f, const M_LRect& area) {
        QX_LayerDef world = record(*f.dst);
        QX_PremulRect_S(nullptr, forward, &area, &world);
    };
}

/// Bands are the routine's own: one thread alone works here.
template <class Pixel> Work<Pixel> transform(int quality, const M_Matrix3& matrix) {
    return [=](Frames<Pixel>& f, const M_LRect&) {
        QX_LayerDef src = record(*f.src), dst = record(*f.dst);
        const QX_CompositeModePlus mode(xfer_copy, 1.0f, nullptr, false, 0);
        QX_TransformWorld(nullptr, quality, 0, 0, &src, &mode, nullptr, nullptr, &matrix, 1, true, nullptr, &dst);
    };
}

template <class Pixel> void run(benchmark::State& state, const Work<Pixel>& work) {
    static std::unique_ptr<Frames<Pixel>> frames;
    if (state.thread_index() == 0) {
        be_born(standalone::DetectedProcessorLevel());
        standalone::SetPoolLimit(state.threads());
        if (!frames) {
            frames = std::make_unique<Frames<Pixel>>();
            QX_BuildGammaBlendingTables(2.2f, &frames->tables);
        }
        std::memcpy(frames->dst->data, frames->fresh->data, frame_bytes(*frames->dst));
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    for (auto _ : state) work(*frames, area);
    state.SetItemsProcessed(state.iterations() * pixels_of(area));
    if (state.thread_index() == 0) standalone::SetPoolLimit(0);
}

/// Turned by 10 degrees and scaled by 1.1 about the frame's middle.
M_Matrix3 turned() {
    const double angle = 10 * std::acos(-1) / 180, c = 1.1 * std::cos(angle), s = 1.1 * std::sin(angle);
    const double x = kWidth / 2.0, y = kHeight / 2.0;
    return {{{c, s, 0}, {-s, c, 0}, {x - c * x + s * y, y - s * x - c * y, 1}}};
}

template <class Pixel> void add_depth() {
    constexpr int depth = qx::DepthOf<Pixel>::number;
    const auto add = [](const std::string& name, const Work<Pixel>& work, int threads = 2) {
        const std::string full = "table/" + name + "/" + std::to_string(depth);
        for (int n = 1; n <= threads; ++n) {
            benchmark::RegisterBenchmark(full.c_str(), [work](benchmark::State& state) { run<Pixel>(state, work); })
                ->Threads(n)
                ->UseRealTime();
        }
    };
    add("over", transfer<Pixel>(xfer_over, 1));
    add("over, half opacity", transfer<Pixel>(xfer_over, 0.5f));
    add("over, masked", transfer<Pixel>(xfer_over, 1, true));
    add("over, linear light", transfer<Pixel>(xfer_over, 1, false, true));
    add("multiply", transfer<Pixel>(xfer_multiply, 1));
    add("overlay", transfer<Pixel>(xfer_overlay, 1));
    add("linear light (mode)", transfer<Pixel>(xfer_linear_light, 1));
    add("soft light", transfer<Pixel>(xfer_soft_light, 1));
    add("vivid light", transfer<Pixel>(xfer_vivid_light, 1));
    add("hue", transfer<Pixel>(xfer_hue, 1));
    for (const int place : {0, 1, 2}) {
        if (8 << place != depth) add("to " + std::to_string(8 << place) + " bits", convert<Pixel>(place));
    }
    add("premultiply", premultiply<Pixel>(true));
    add("unpremultiply", premultiply<Pixel>(false));
    add("nearest", transform<Pixel>(0, turned()), 1);
    add("bilinear", transform<Pixel>(1, turned()), 1);
    add("bicubic", transform<Pixel>(2, turned()), 1);
    add("to a quarter, transform", transform<Pixel>(1, {{{0.25, 0, 0}, {0, 0.25, 0}, {0, 0, 1}}}), 1);
    add("to a quarter, copy", [](Frames<Pixel>& f, const M_LRect& area) {
        QX_LayerDef src = record(*f.src), dst = record(*f.quarter);
        const M_LRect to{0, area.top / 4, kWidth / 4, area.bottom / 4};
        QX_CopyBits_HQ_Straight(nullptr, &src, &dst, &area, &to);
    });
    add("fill", [](Frames<Pixel>& f, const M_LRect& area) { f.dst->Fill(QX_PixelFloat{1, 0.3f, 0.7f, 0.2f}, &area); });
    add("copy", [](Frames<Pixel>& f, const M_LRect& area) { f.dst->CopyRect(f.src.get(), area, 0, area.top); });
}

[[maybe_unused]] const bool registered = [] {
    add_depth<QX_Pixel8>();
    add_depth<QX_Pixel16>();
    add_depth<QX_PixelFloat>();
    return true;
}();

}  // namespace
