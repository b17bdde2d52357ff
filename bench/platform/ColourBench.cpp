// SPDX-License-Identifier: Apache-2.0
// Own forms of colour transforms over whole frames on one thread, beside a copy of the frame and the colour library:
// its default form of 8 bits, and its exact one of floats.
#include <benchmark/benchmark.h>
#include <lcms2_plugin.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "QX/indep/QX_Depth.h"
#include "bench/support/Frame.h"
#include "bench/support/Register.h"
#include "platform/standalone/SH_ColourForms.h"

namespace {

using namespace qx::bench;
using standalone::ColourDepth;
using standalone::ProcessorLevel;

/// From sRGB to Display P3, both with the curve of sRGB by its formula or by a table.
enum class Curves { formula, table };

using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;
using Pipeline = std::unique_ptr<cmsPipeline, decltype(&cmsPipelineFree)>;

Transform transform(cmsContext context, Curves kind, cmsUInt32Number format, cmsUInt32Number flags) {
    const cmsCIExyY white{0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE srgb{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    const cmsCIExyYTRIPLE p3{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};
    const double parameters[]{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    cmsToneCurve* curve = cmsBuildParametricToneCurve(context, 4, parameters);
    if (kind == Curves::table) {
        std::vector<cmsUInt16Number> values(1024);
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = cmsEvalToneCurve16(curve, static_cast<cmsUInt16Number>(i * 65535 / 1023));
        }
        cmsFreeToneCurve(curve);
        curve = cmsBuildTabulatedToneCurve16(context, 1024, values.data());
    }
    cmsToneCurve* const curves[] = {curve, curve, curve};
    const cmsHPROFILE from = cmsCreateRGBProfileTHR(context, &white, &srgb, curves);
    const cmsHPROFILE to = cmsCreateRGBProfileTHR(context, &white, &p3, curves);
    Transform made(cmsCreateTransformTHR(context, from, format, to, format, 1, flags), &cmsDeleteTransform);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
    cmsFreeToneCurve(curve);
    return made;
}

Pipeline& shown() {
    static Pipeline latest(nullptr, &cmsPipelineFree);
    return latest;
}
cmsBool show(_cmsTransform2Fn*, void**, _cmsFreeUserDataFn*, cmsPipeline** lut, cmsUInt32Number*, cmsUInt32Number*,
             cmsUInt32Number*) {
    shown() = Pipeline(cmsPipelineDup(*lut), &cmsPipelineFree);
    return FALSE;
}
std::unique_ptr<const standalone::ColourForm> form(Curves kind, ColourDepth depth) {
    cmsPluginTransform plugin{{cmsPluginMagicNumber, 2100, cmsPluginTransformSig, nullptr}, {}};
    plugin.factories.xform = &show;
    const cmsContext context = cmsCreateContext(&plugin, nullptr);
    transform(context, kind, TYPE_RGB_FLT, cmsFLAGS_NOCACHE);
    auto made = standalone::MakeColourForm(shown().get(), depth, depth, false);
    shown().reset();
    cmsDeleteContext(context);
    return made;
}

/// Calls work(src, dst, pixels) for each row.
template <class Pixel, class Work> void over_rows(benchmark::State& state, const Work& work) {
    auto& frames = FramePair<Pixel>::get();
    for (auto _ : state) {
        for (int y = 0; y < kHeight; ++y) work(row_of(*frames.src, y), row_of(*frames.dst, y), kWidth);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{kWidth} * kHeight);
}

template <class Pixel> void add() {
    constexpr int number = qx::DepthOf<Pixel>::number;
    constexpr auto depth = number == 8 ? ColourDepth::eight : number == 16 ? ColourDepth::sixteen : ColourDepth::real;
    add_bench("colour", "copy", number, ProcessorLevel::plain, [](benchmark::State& state) {
        over_rows<Pixel>(state, [](const void* src, void* dst, int count) {
            std::memcpy(dst, src, static_cast<std::size_t>(count) * sizeof(Pixel));
        });
    });
    for (const Curves kind : {Curves::formula, Curves::table}) {
        const std::string name = kind == Curves::formula ? "formula" : "table";
        for (const auto level : kLevels) {
            add_bench("colour", name, number, level, [=](benchmark::State& state) {
                be_born(level);
                const auto made = form(kind, depth);
                over_rows<Pixel>(state, [&](const void* src, void* dst, int count) { made->run(src, dst, count); });
            });
        }
        if (number == 16) continue;
        const auto add_foreign = [&](const char* what, cmsUInt32Number flags) {
            add_bench("colour", name + "-" + what, number, ProcessorLevel::plain, [=](benchmark::State& state) {
                const cmsUInt32Number format = number == 8 ? TYPE_ARGB_8 : TYPE_ARGB_FLT;
                const Transform made = transform(nullptr, kind, format, flags);
                over_rows<Pixel>(state, [&](const void* src, void* dst, int count) {
                    cmsDoTransform(made.get(), src, dst, static_cast<cmsUInt32Number>(count));
                });
            });
        };
        if (number == 8) add_foreign("lcms-default", 0);
        if (number == 32) add_foreign("lcms-exact", cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    }
}

[[maybe_unused]] const bool added = (add<QX_Pixel8>(), add<QX_Pixel16>(), add<QX_PixelFloat>(), true);

}  // namespace
