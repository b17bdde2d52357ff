// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_SampPB.h"

/// Samplers of whole runs: positions a step apart, all of whose taps lie inside the world and none of which wraps.
/// They give what the sampler of one pixel gives, every pixel, in fewer instructions.
namespace qx {

/// Alphas written are added to `sum`, those of float pixels one by one.
template <class Pixel>
using RunSampler = void (*)(std::int32_t count, FixedPoint at, FixedPoint step, const QX_LayerDef& world,
                            QX_AlphaSumOf<Pixel>* sum, Pixel* out);

/// The run form of an unclipped sampler; null where there is none: for routines that a host has put into the table, and
/// on processors without the vectors for it.
template <class Pixel> RunSampler<Pixel> run_form(QX_PointSampler<Pixel> unclipped);

/// True for the library's own samplers of integer pixels, which give a clear pixel where all taps lie outside.
template <class Pixel> bool is_clear_outside(QX_PlusSampler<Pixel> plus);

/// Nearest pixels of a run whose positions have half a pixel added.
template <class Pixel> RunSampler<Pixel> nearest_run_form();

/// A routine with the arguments of nearest_run.
using NearestRun = std::int32_t(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                                std::int32_t width, std::uint32_t* sum, QX_Pixel8* out);

/// Nearest 8-bit pixels of one row that grows, as far as eight of them can be taken from eight neighbours.
/// @param x     in 16.16, half a pixel added
/// @param step  in 16.16, from 0 to 1.0
/// @param sum      alphas written are added
/// @return the pixels written, from the first on; the caller takes the rest
std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out);

inline constexpr int kRunLanes = 8;

}  // namespace qx
