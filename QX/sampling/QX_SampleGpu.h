// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Report.h"
#include "QX/sampling/QX_SampPB.h"

namespace qx::sampling {

/// @return 0, or 3 after a report for a source that is a GPU world
inline int refuse_gpu_world(const QX_SampPB* params) {
    if (!is_gpu_world(params->src)) return kQX_NoError;
    return report_failed_verification(Place::sampler, "gpu effect world is not supported.");
}

}  // namespace qx::sampling
