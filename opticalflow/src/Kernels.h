// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowBox.h"
#include "opticalflow/src/FlowChoice.h"
#include "opticalflow/src/FlowLuminance.h"
#include "opticalflow/src/FlowPicture.h"
#include "opticalflow/src/FlowRing.h"
#include "opticalflow/src/FlowSinc.h"
#include "opticalflow/src/FlowSolve.h"
#include "opticalflow/src/FlowTween.h"

namespace solvan_of {

/// The engine's texts for levels, of the level that the library's start chose.
struct Kernels {
    const qx::FlowBox* box;
    const qx::FlowChoice* choice;
    const qx::FlowLuminance* luminance;
    const qx::FlowPicture* picture;
    const qx::FlowRing* ring;
    const qx::FlowSinc* sinc;
    const qx::FlowSolve* solve;
    const qx::FlowTween* tween;
};
const Kernels& kernels();

/// The library starts: texts of this level from now on, and as many parts as the host then tells.
void begin(qx::Level level);

}  // namespace solvan_of
