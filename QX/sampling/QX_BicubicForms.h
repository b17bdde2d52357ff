// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Pixel.h"
#include "QX/sampling/QX_SampleTapsT.h"

/// The kernel of all bicubic samples at 8 bits has a form for wide registers; both give the same pixels.
namespace qx {

namespace sampling {
struct CubicWeights;
/// The pixel of sixteen taps, as its bits.
using Cubic8 = std::uint32_t(const TapRows<4>& rows, const CubicWeights& weights);
Cubic8 cubic8_plain;
/// The form that the library chose at its start.
extern Cubic8* cubic8;
}  // namespace sampling

namespace avx2 {
sampling::Cubic8 cubic8;
}

}  // namespace qx
