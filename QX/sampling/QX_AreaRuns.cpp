// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_AreaRuns.h"

#include <algorithm>

#include "QX/indep/QX_Report.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_AreaSums8.h"
#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {

/// All forms that finish a box alike; they differ for thin footprints only.
bool has_run_form(QX_PointSampler<QX_Pixel8> area) {
    return area == samp_forms->area8 || area == &QX_AreaSample_CPlusPlus<QX_Pixel8, 2>;
}

}  // namespace

template <> AreaRun<QX_Pixel8> area_run_form(QX_PointSampler<QX_Pixel8> area, const QX_SampPB& block, FixedPoint step) {
    const bool fits = step.y == 0 && sampling::branch_of(block) == sampling::Branch::box &&
                      block.x_radius <= kWidestBox / 2 * kFixedOne && !is_gpu_world(block.src);
    return fits && has_run_form(area) ? samp_forms->area_run8 : nullptr;
}
template <> AreaRun<QX_Pixel16> area_run_form(QX_PointSampler<QX_Pixel16>, const QX_SampPB&, FixedPoint) {
    return nullptr;
}
template <> AreaRun<QX_PixelFloat> area_run_form(QX_PointSampler<QX_PixelFloat>, const QX_SampPB&, FixedPoint) {
    return nullptr;
}

bool area_run_holds(const QX_SampPB& block, FixedPoint at, std::int32_t step) {
    const sampling::Extent across(at.x, block.x_radius);
    const sampling::Extent down = sampling::Extent(at.y, block.y_radius).clipped(block.src->height);
    if ((step & (kFixedOne - 1)) != 0) {  // some boxes of the row have partial columns
        return sampling::exact_in_integers(across, down, sampling::is_whole(down) ? 16 : 0);
    }
    return sampling::is_small_and_whole(across, down) || sampling::exact_in_integers(across, down);
}

bool box_is_inside(const QX_SampPB& block, std::int32_t x) {
    const std::int64_t middle = std::int64_t{x} + kFixedHalf;
    const std::int64_t end = std::min<std::int64_t>(std::int64_t{block.src->width} * kFixedOne, INT32_MAX);
    return middle - block.x_radius >= 0 && middle + block.x_radius <= end;
}

}  // namespace qx
