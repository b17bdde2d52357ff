// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_SampPB.h"

/// Samplers of whole runs: positions a step apart, all of whose taps lie inside the world and none of which wraps.
/// They give what the sampler of one pixel gives, every pixel, in fewer instructions.
namespace qx {

/// @return the sum of the alphas written; integers, so that their order does not matter
template <class Pixel>
using RunSampler = std::uint32_t (*)(std::int32_t count, FixedPoint at, FixedPoint step, const QX_LayerDef& world,
                                     Pixel* out);

/// The run form of an unclipped sampler; null where there is none: for routines that a host has put into the table,
/// for other depths, and on processors without the vectors for it.
template <class Pixel> RunSampler<Pixel> run_form(QX_PointSampler<Pixel> unclipped);

inline constexpr int kRunLanes = 8;
namespace avx2 {
/// Of noclip_two_stage, for a multiple of kRunLanes.
std::uint32_t two_stage_run(std::int32_t count, FixedPoint at, FixedPoint step, const QX_LayerDef& world,
                            QX_Pixel8* out);
}  // namespace avx2

/// Says whether the processor has the vectors, at the library's start.
void choose_run_forms(bool vectors);

}  // namespace qx
