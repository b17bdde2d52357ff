// SPDX-License-Identifier: Apache-2.0
// Colour models of single pixels, a frame of them, against a copy of one. They are called pixel by pixel and have one
// form, which is the plain loop.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "QX/pixelops/QX_ColourModels.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"

namespace {

using namespace qx::bench;

using Model = int(void*, const QX_Pixel8*, std::int32_t[3]);
using Back = int(void*, const std::int32_t[3], QX_Pixel8*);

/// To a model and back.
template <Model* to_model, Back* from_model> void there_and_back(const QX_Pixel8* from, QX_Pixel8* to) {
    for (int x = 0; x < kWidth; ++x) {
        std::int32_t model[3];
        to_model(nullptr, &from[x], model);
        from_model(nullptr, model, &to[x]);
    }
}
template <int (*query)(void*, const QX_Pixel8*, std::int32_t*)> void ask(const QX_Pixel8* from, QX_Pixel8* to) {
    for (int x = 0; x < kWidth; ++x) {
        std::int32_t answer = 0;
        query(nullptr, &from[x], &answer);
        to[x].alpha = static_cast<std::uint8_t>(answer);
    }
}

const std::pair<const char*, void (*)(const QX_Pixel8*, QX_Pixel8*)> kWorks[] = {
    {"copy", [](const QX_Pixel8* from, QX_Pixel8* to) { std::memcpy(to, from, kWidth * sizeof(QX_Pixel8)); }},
    {"hls", &there_and_back<QX_RGBtoHLS_Straight, QX_HLStoRGB_Straight>},
    {"hls-premul", &there_and_back<QX_RGBtoHLS_Premul, QX_HLStoRGB_Premul>},
    {"yiq", &there_and_back<QX_RGBtoYIQ_Straight, QX_YIQtoRGB_Straight>},
    {"hue", &ask<QX_Hue_Straight>},
    {"saturation", &ask<QX_Saturation_Straight>},
    {"luminance", &ask<QX_Luminance_Straight>},
};

bool add_all() {
    constexpr auto level = standalone::ProcessorLevel::widest;
    for (const auto& [name, work] : kWorks) {
        add_bench("models", name, 8, level, [w = work](benchmark::State& state) {
            be_born(level);
            static const std::unique_ptr<QX_World> src = new_frame(8), dst = new_frame(8);
            std::minstd_rand random(1);
            fill_frame<QX_Pixel8>(*src, random);
            for (auto _ : state) {
                for (int y = 0; y < kHeight; ++y) {
                    w(reinterpret_cast<const QX_Pixel8*>(row_of(*src, y)),
                      reinterpret_cast<QX_Pixel8*>(row_of(*dst, y)));
                }
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
        });
    }
    return true;
}
[[maybe_unused]] const bool added = add_all();

}  // namespace
