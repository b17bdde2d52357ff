// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Runs.h"

#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {

template <class Pixel> QX_PointSampler<Pixel> library_bilinear() {
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
        return samp_forms->unclipped8;
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return &QX_SubpixelSampleNoClip_Straight16;
    } else {
        return &QX_SubpixelNoClipBilinearFloat;
    }
}
template <class Pixel> QX_PointSampler<Pixel> library_bicubic() {
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
        return &QX_SubpixelNoClipBicubic8;
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return &QX_SubpixelNoClipBicubic16;
    } else {
        return &QX_SubpixelNoClipBicubicFloat;
    }
}

}  // namespace

std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out) {
    NearestRun* const run = samp_forms->nearest_run8;
    return run != nullptr && step >= 0 && step <= kFixedOne ? run(count, x, step, row, width, sum, out) : 0;
}

template <class Pixel> RunSampler<Pixel> run_form(QX_PointSampler<Pixel> unclipped) {
    const RunSet<Pixel>& runs = samp_forms->runs->of<Pixel>();
    if (unclipped == library_bilinear<Pixel>()) return runs.bilinear;
    return unclipped == library_bicubic<Pixel>() ? runs.bicubic : nullptr;
}
template <class Pixel> bool is_clear_outside(QX_PlusSampler<Pixel> plus) {
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
        return plus == &QX_SubpixelSamplePlus_Straight || plus == &QX_SubpixelSpanSampleAllInBicubic8;
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return plus == &QX_SubpixelSamplePlus_Straight16 || plus == &QX_SubpixelSpanSampleAllInBicubic16;
    }
    return false;  // the sign of a float zero is left to the sampler
}
template bool is_clear_outside(QX_PlusSampler<QX_Pixel8> plus);
template bool is_clear_outside(QX_PlusSampler<QX_Pixel16> plus);
template bool is_clear_outside(QX_PlusSampler<QX_PixelFloat> plus);

template <class Pixel> RunSampler<Pixel> nearest_run_form() { return samp_forms->runs->of<Pixel>().nearest; }
template RunSampler<QX_Pixel8> nearest_run_form();
template RunSampler<QX_Pixel16> nearest_run_form();
template RunSampler<QX_PixelFloat> nearest_run_form();

template RunSampler<QX_Pixel8> run_form(QX_PointSampler<QX_Pixel8> unclipped);
template RunSampler<QX_Pixel16> run_form(QX_PointSampler<QX_Pixel16> unclipped);
template RunSampler<QX_PixelFloat> run_form(QX_PointSampler<QX_PixelFloat> unclipped);

}  // namespace qx
