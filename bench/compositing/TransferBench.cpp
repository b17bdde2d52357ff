// SPDX-License-Identifier: Apache-2.0
// Transfers of a whole frame, by mode, depth, processor level and kind of source, against a copy of its rows.
// Each thread takes a band of the frame, with a scratch block of its own.
#include <benchmark/benchmark.h>

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
using standalone::ProcessorLevel;

enum class Fill { random, layer };
enum class Variant { bare, masked, linear };

struct Case {
    int xfer;
    const char* name;
    ProcessorLevel level;
    Fill fill;
    Variant variant;
};

/// Pixels of a layer: long runs that are clear or opaque, and soft edges between.
template <class Pixel> void fill_frame(QX_World& world, Fill fill, unsigned seed) {
    using D = qx::DepthOf<Pixel>;
    using Channel = typename D::Channel;
    std::minstd_rand random(seed);
    const auto channel = [&] { return static_cast<Channel>(static_cast<double>(random() % 32769) / 32768 * D::full); };
    for (int y = 0; y < kHeight; ++y) {
        auto* row = reinterpret_cast<Pixel*>(row_of(world, y));
        for (int x = 0; x < kWidth;) {
            const bool edge = random() % 4 == 0;
            const int length = edge ? 8 : 40 + static_cast<int>(random() % 600);
            const Channel run = random() % 2 != 0 ? static_cast<Channel>(D::full) : Channel{0};
            for (int i = 0; i < length && x < kWidth; ++i, ++x) {
                const Channel alpha = fill == Fill::random || edge ? channel() : run;
                row[x] = {alpha, channel(), channel(), channel()};
            }
        }
    }
}

struct Frames {
    std::unique_ptr<QX_World> src, dst, mask;
    QX_MaskWorld mask_record;
    std::unique_ptr<QX_World> fresh_dst;

    /// What a run leaves in the destination would be the next one's input.
    void restore() const { std::memcpy(dst->data, fresh_dst->data, frame_bytes(*dst)); }
};

/// One set of frames lives at a time, for the depth and fill of the bench that runs.
template <class Pixel> Frames& frames(Fill fill) {
    static Frames set;
    static int made = -1;
    if (made != static_cast<int>(fill)) {
        constexpr int depth = qx::DepthOf<Pixel>::number;
        set = {new_frame(depth), new_frame(depth), new_frame(depth), {}, new_frame(depth)};
        fill_frame<Pixel>(*set.src, fill, 1);
        fill_frame<Pixel>(*set.fresh_dst, Fill::layer, 2);
        set.fresh_dst->FillAlpha();
        fill_frame<Pixel>(*set.mask, Fill::layer, 3);
        set.mask->FillOutEffectWorld(&set.mask_record.world);
        made = static_cast<int>(fill);
    }
    return set;
}

const QX_LinearBlendingTables& tables() {
    static const QX_LinearBlendingTables built = [] {
        QX_LinearBlendingTables t;
        QX_BuildGammaBlendingTables(2.2f, &t);
        return t;
    }();
    return built;
}

template <class Pixel> void transfer(benchmark::State& state, const Case& c) {
    static Frames* set;
    if (state.thread_index() == 0) {
        be_born(c.level);
        set = &frames<Pixel>(c.fill);
        set->restore();
        tables();
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    qx::OwnScratch scratch;
    scratch.allocate(kWidth, sizeof(QX_ChannelOf<Pixel>), false);
    const QX_CompositeModePlus mode(c.xfer, 1.0f, nullptr, false, 0);
    for (auto _ : state) {
        QX_LayerDef src{}, dst{};
        set->src->FillOutEffectWorld(&src);
        set->dst->FillOutEffectWorld(&dst);
        QX_TransferRectPlus(nullptr, 1, 0, 0, &area, &src, &mode, c.variant == Variant::linear ? &tables() : nullptr,
                            c.variant == Variant::masked ? &set->mask_record : nullptr, scratch.get(), 0, area.top,
                            &dst);
    }
    state.SetItemsProcessed(state.iterations() * pixels_of(area));
}

template <class Pixel> void copy_rows(benchmark::State& state) {
    static Frames* set;
    if (state.thread_index() == 0) {
        be_born(standalone::DetectedProcessorLevel());
        set = &frames<Pixel>(Fill::layer);
        set->restore();
    }
    const M_LRect area = band(state.thread_index(), state.threads());
    for (auto _ : state) {
        for (int y = area.top; y < area.bottom; ++y) {
            std::memcpy(row_of(*set->dst, y), row_of(*set->src, y), kWidth * sizeof(Pixel));
        }
        benchmark::ClobberMemory();
    }
    set = nullptr;
    state.SetItemsProcessed(state.iterations() * pixels_of(area));
}

template <class Pixel> void add_depth(const char* depth) {
    const auto add = [&](const std::string& name, auto body) {
        for (const int threads : {1, 2}) {
            benchmark::RegisterBenchmark(name.c_str(), body)
                ->Threads(threads)
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond);
        }
    };
    add(std::string("transfer/memcpy/") + depth, &copy_rows<Pixel>);
    struct Mode {
        int xfer;
        const char* name;
    };
    constexpr Mode modes[] = {
#define X(number, name) {number, #name},
        QX_TRANSFER_MODES(X)
#undef X
    };
    for (const Mode& mode : modes) {
        if (mode.xfer == xfer_mask_crossfade) continue;
        const bool chosen = mode.xfer == xfer_over || mode.xfer == xfer_add || mode.xfer == xfer_multiply ||
                            mode.xfer == xfer_soft_light || mode.xfer == xfer_darken || mode.xfer == xfer_hue;
        for (int level = 0; level <= static_cast<int>(standalone::DetectedProcessorLevel()); ++level) {
            for (const Fill fill : {Fill::random, Fill::layer}) {
                for (const Variant variant : {Variant::bare, Variant::masked, Variant::linear}) {
                    if (!chosen && (variant != Variant::bare || level == 1 || fill == Fill::layer)) continue;
                    const Case c{mode.xfer, mode.name, static_cast<ProcessorLevel>(level), fill, variant};
                    constexpr const char* variants[] = {"", "/masked", "/linear"};
                    const std::string name = std::string("transfer/") + mode.name +
                                             variants[static_cast<int>(variant)] + "/" + depth + "/" +
                                             name_of(c.level) + (fill == Fill::random ? "/random" : "/layer");
                    add(name, [c](benchmark::State& state) { transfer<Pixel>(state, c); });
                }
            }
        }
    }
}

[[maybe_unused]] const bool registered = [] {
    add_depth<QX_Pixel8>("8");
    add_depth<QX_Pixel16>("16");
    add_depth<QX_PixelFloat>("32");
    return true;
}();

}  // namespace
