// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/M_Matrix.h"
#include "platform/Platform_Export.h"

namespace GK {

/// True unless a layer moves in a straight line at one speed through these matrices, in time order. This host
/// compares the corners of the unit square at equal time steps with the straight mix of the first and the last.
PLATFORM_EXPORT bool IsNonLinearSubframeMotion(const M_Matrix3* matrices, int count);

}  // namespace GK
