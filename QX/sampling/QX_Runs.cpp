// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Runs.h"

#include "QX/sampling/QX_SampForms.h"

namespace qx {

std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out) {
    NearestRun* const run = samp_forms->nearest_run8;
    return run != nullptr && step >= 0 && step <= kFixedOne ? run(count, x, step, row, width, sum, out) : 0;
}

template <> RunSampler<QX_Pixel8> run_form(QX_PointSampler<QX_Pixel8> unclipped) {
    return unclipped == samp_forms->unclipped8 ? samp_forms->run8 : nullptr;
}
template <> RunSampler<QX_Pixel16> run_form(QX_PointSampler<QX_Pixel16>) { return nullptr; }
template <> RunSampler<QX_PixelFloat> run_form(QX_PointSampler<QX_PixelFloat>) { return nullptr; }

}  // namespace qx
