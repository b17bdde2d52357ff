// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_PerDepth.h"
#include "QX/sampling/QX_AreaRuns.h"
#include "QX/sampling/QX_Runs.h"
#include "lanes/Levels.h"

/// The runs of a level; null where it has none.
namespace qx {

template <class Pixel> struct RunSet {
    RunSampler<Pixel> nearest;  ///< positions have half a pixel added; every level has it
    RunSampler<Pixel> bilinear, bicubic;
    AreaRun<Pixel> area;  ///< of the template's last step
};
using RunKernels = PerDepth<RunSet>;
QX_DECLARE_LEVELS(RunKernels, run_kernels)

namespace avx2 {
void area_run8(std::int32_t count, FixedPoint at, std::int32_t step, const QX_SampPB& block, std::uint32_t* sum,
               QX_Pixel8* out);
}

}  // namespace qx
