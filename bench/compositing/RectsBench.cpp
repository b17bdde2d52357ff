// SPDX-License-Identifier: Apache-2.0
// Rectangles behind other worlds, rows of track mattes and masks into alpha, whole frames of them, against a copy of
// one. They have one form, which is the plain loop.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "QX/compositing/QX_CompositeRect.h"
#include "QX/compositing/QX_TrackMatte.h"
#include "QX/world/QX_MergeMask.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"

namespace {

using namespace qx::bench;

struct Frames {
    std::unique_ptr<QX_World> src = new_frame(8), dst = new_frame(8);
    QX_LayerDef from{}, to{};
    QX_UnoBuffer mask{kWidth, kHeight, 8};
    std::vector<QX_Pixel8> row{kWidth};

    Frames() {
        std::minstd_rand random(1);
        for (const auto* world : {src.get(), dst.get()}) fill_frame<QX_Pixel8>(*world, random);
        src->FillOutEffectWorld(&from);
        dst->FillOutEffectWorld(&to);
        for (int i = 0; i < kWidth * kHeight; ++i) samples()[i] = static_cast<std::uint8_t>(random() >> 8);
    }
    std::uint8_t* samples() const { return static_cast<std::uint8_t*>(*mask.handle); }
    QX_Pixel8* dst_row(int y) const { return reinterpret_cast<QX_Pixel8*>(row_of(*dst, y)); }
};

template <decltype(&QX_CompositeRectBest_Straight) composite> void rect(Frames& f) {
    const M_LRect whole{0, 0, kWidth, kHeight};
    composite(nullptr, &whole, 128, &f.from, 0, 0, 0, 0, &f.to);
}
void matte(Frames& f) {
    for (int y = 0; y < kHeight; ++y) {
        QX_PrepTrackMatteUniv(kWidth, row_of(*f.src, y), 0, kWidth, kQX_MaskInverseLuma, 0, f.row.data());
        benchmark::ClobberMemory();
    }
}
void single_channel(Frames& f) {
    for (int y = 0; y < kHeight; ++y) {
        QX_BlendSingleChannel<QX_Pixel8, std::uint8_t>(kWidth, 200, 255, f.samples() + std::ptrdiff_t{y} * kWidth,
                                                       f.dst_row(y));
    }
}

const std::pair<const char*, void (*)(Frames&)> kWorks[] = {
    {"copy", [](Frames& f) { std::memcpy(f.dst->data, f.src->data, frame_bytes(*f.src)); }},
    {"best-straight", &rect<QX_CompositeRectBest_Straight>},
    {"draft-straight", &rect<QX_CompositeRectDraft_Straight>},
    {"best-premul", &rect<QX_CompositeRectBest_Premul>},
    {"draft-premul", &rect<QX_CompositeRectDraft_Premul>},
    {"track-matte", &matte},
    {"single-channel", &single_channel},
    {"merge-mask", [](Frames& f) { QX_MergeMaskAlpha(nullptr, 0, 0, nullptr, &f.mask, nullptr, f.dst.get()); }},
};

bool add_all() {
    constexpr auto level = standalone::ProcessorLevel::widest;
    for (const auto& [name, work] : kWorks) {
        add_bench("rects", name, 8, level, [w = work](benchmark::State& state) {
            be_born(level);
            standalone::SetPoolLimit(1);
            static Frames frames;
            for (auto _ : state) {
                w(frames);
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
            standalone::SetPoolLimit(0);
        });
    }
    return true;
}
[[maybe_unused]] const bool added = add_all();

}  // namespace
