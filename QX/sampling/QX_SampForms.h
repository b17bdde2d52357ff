// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Processor.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_RunKernels.h"
#include "QX/sampling/QX_SampleTapsT.h"

/// The routines of the family that have more than one form, and what a processor takes of them.
namespace qx {

namespace sampling {

PointSamplerFn<QX_Pixel8> noclip_plain;
/// With the vector unit. Where the alphas alone are equal it mixes in two stages, down then across, and so may differ
/// from the plain form by a step.
PointSamplerFn<QX_Pixel8> noclip_two_stage;

/// Channels limited to full scale, then rounded to the nearest. No area form here asks for a GPU world.
PointSamplerFn<QX_Pixel8> area_plain8;
PointSamplerFn<QX_Pixel16> area_plain16;
/// With the vector unit: the last step of QX_AreaSample_CPlusPlus.
PointSamplerFn<QX_Pixel8> area_template8;
PointSamplerFn<QX_Pixel16> area_template16;

struct CubicWeights;
/// The kernel of all bicubic samples at 8 bits: the pixel of sixteen taps, as its bits.
using Cubic8 = std::uint32_t(const TapRows<4>& rows, const CubicWeights& weights);
Cubic8 cubic8_plain;

}  // namespace sampling

namespace avx2 {

/// The pixels of sampling::noclip_two_stage, with both columns of the taps in one register.
PointSamplerFn<QX_Pixel8> noclip_two_stage;
/// The pixels of area_template8; boxes of whole pixels are summed two rows at a time.
PointSamplerFn<QX_Pixel8> area_template8;
/// The pixels of cubic8_plain.
sampling::Cubic8 cubic8;
/// Of qx::nearest_run.
NearestRun nearest_run;

}  // namespace avx2

/// What one kind of processor uses. Runs are null where it has none.
struct SampForms {
    QX_PointSampler<QX_Pixel8> unclipped8;
    QX_PointSampler<QX_Pixel8> area8;
    QX_PointSampler<QX_Pixel16> area16;
    sampling::Cubic8* cubic8;
    const RunKernels* runs;  ///< at 8 bits of `unclipped8` and `area8`
    NearestRun* nearest_run8;
};

/// Chosen once, at the library's start.
extern const SampForms* samp_forms;
void choose_samp_forms(const Processor& processor);

}  // namespace qx
