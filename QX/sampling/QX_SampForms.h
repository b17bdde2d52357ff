// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"

/// The forms of the three routines of which one stands in the slot, by the processor's vector unit.
namespace qx::sampling {

PointSamplerFn<QX_Pixel8> noclip_plain;
/// With the unit. Where the alphas alone are equal it mixes in two stages, down then across, and so may differ from the
/// plain form by a step.
PointSamplerFn<QX_Pixel8> noclip_two_stage;

}  // namespace qx::sampling

namespace qx::avx2 {
/// The pixels of sampling::noclip_two_stage, with both columns of the taps in one register.
PointSamplerFn<QX_Pixel8> noclip_two_stage;
/// The pixels of area_template8; boxes of whole pixels are summed two rows at a time.
PointSamplerFn<QX_Pixel8> area_template8;
}  // namespace qx::avx2

namespace qx::sampling {

/// Channels limited to full scale, then rounded to the nearest. No area form here asks for a GPU world.
PointSamplerFn<QX_Pixel8> area_plain8;
PointSamplerFn<QX_Pixel16> area_plain16;
/// With the unit: the last step of QX_AreaSample_CPlusPlus.
PointSamplerFn<QX_Pixel8> area_template8;
PointSamplerFn<QX_Pixel16> area_template16;

}  // namespace qx::sampling
