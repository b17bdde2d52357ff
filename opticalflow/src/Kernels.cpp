// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Kernels.h"

#include "opticalflow/src/multiprocess/MultiProcess.h"

namespace solvan_of {
namespace {

Kernels kernels_of(qx::Level level) {
    return {&qx::flow_box_of(level),     &qx::flow_choice_of(level), &qx::flow_luminance_of(level),
            &qx::flow_picture_of(level), &qx::flow_ring_of(level),   &qx::flow_sinc_of(level),
            &qx::flow_solve_of(level),   &qx::flow_tween_of(level)};
}

Kernels chosen = kernels_of(qx::Level::plain);

}  // namespace

const Kernels& kernels() { return chosen; }

void begin(qx::Level level) {
    chosen = kernels_of(level);
    forgetProcessorCount();
}

}  // namespace solvan_of
