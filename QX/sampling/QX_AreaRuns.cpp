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
template <class Pixel> bool has_run_form(QX_PointSampler<Pixel> area) {
    if (area == &QX_AreaSample_CPlusPlus<Pixel, 1> || area == &QX_AreaSample_CPlusPlus<Pixel, 2>) return true;
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) return area == samp_forms->area8;
    if constexpr (std::is_same_v<Pixel, QX_Pixel16>) return area == &sampling::area_template16;
    return false;
}

}  // namespace

template <class Pixel>
AreaRun<Pixel> area_run_form(QX_PointSampler<Pixel> area, const QX_SampPB& block, FixedPoint step) {
    const bool fits = step.y == 0 && sampling::branch_of(block) == sampling::Branch::box &&
                      block.x_radius <= kWidestBox / 2 * kFixedOne && !is_gpu_world(block.src);
    return fits && has_run_form(area) ? samp_forms->runs->of<Pixel>().area : nullptr;
}

template <class Pixel> bool area_run_holds(const QX_SampPB& block, FixedPoint at, std::int32_t step) {
    const bool whole_step = (step & (kFixedOne - 1)) == 0;
    if constexpr (!std::is_same_v<Pixel, QX_Pixel8>) return whole_step;
    const sampling::Extent across(at.x, block.x_radius);
    const sampling::Extent down = sampling::Extent(at.y, block.y_radius).clipped(block.src->height);
    if (!whole_step) {  // some boxes of the row have partial columns
        return sampling::exact_in_integers(across, down, sampling::is_whole(down) ? 16 : 0);
    }
    return sampling::is_small_and_whole(across, down) || sampling::exact_in_integers(across, down);
}

#define QX_AREA_RUNS(Pixel)                                                                      \
    template AreaRun<Pixel> area_run_form(QX_PointSampler<Pixel>, const QX_SampPB&, FixedPoint); \
    template bool area_run_holds<Pixel>(const QX_SampPB&, FixedPoint, std::int32_t);
QX_AREA_RUNS(QX_Pixel8)
QX_AREA_RUNS(QX_Pixel16)
QX_AREA_RUNS(QX_PixelFloat)

bool box_is_inside(const QX_SampPB& block, std::int32_t x) {
    const std::int64_t middle = std::int64_t{x} + kFixedHalf;
    const std::int64_t end = std::min<std::int64_t>(std::int64_t{block.src->width} * kFixedOne, INT32_MAX);
    return middle - block.x_radius >= 0 && middle + block.x_radius <= end;
}

}  // namespace qx
