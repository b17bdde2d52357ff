// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_SampPB.h"

/// Area samples of whole rows without a step in y. They give what the sampler of one pixel gives, every pixel: boxes of
/// 8 bits share the sums of their columns, others are summed side by side.
namespace qx {

/// Samples of a row that `area_run_holds`, all of them with `box_is_inside`. Alphas written are added to `sum`, those
/// of float pixels one by one.
template <class Pixel>
using AreaRun = void (*)(std::int32_t count, FixedPoint at, std::int32_t step, const QX_SampPB& block,
                         QX_AlphaSumOf<Pixel>* sum, Pixel* out);

/// The run form of an area sampler; null where there is none: for routines that a host has put into the table, for thin
/// footprints, very wide ones and steps in y, and on processors without the vectors for it.
template <class Pixel>
AreaRun<Pixel> area_run_form(QX_PointSampler<Pixel> area, const QX_SampPB& block, FixedPoint step);

/// True at 8 bits where every sum over a row's boxes is exact, so that it does not matter what is added first; else
/// where the boxes lie whole pixels apart.
template <class Pixel> bool area_run_holds(const QX_SampPB& block, FixedPoint at, std::int32_t step);

/// True for a box that the world's left and right edges do not cut.
bool box_is_inside(const QX_SampPB& block, std::int32_t x);

inline constexpr std::int32_t kWidestBox = 256;  ///< in pixels

}  // namespace qx
