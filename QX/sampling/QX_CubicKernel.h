// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Lanes.h"

/// Keys' cubic convolution with a = -0.75, in double: for distances up to 1, and from 1 to 2. Distances are exact in
/// float.
namespace qx::sampling {

template <class D> QX_INLINE D near_part(D t) { return 1.25 * (t * t * t) - 2.25 * (t * t) + 1.0; }
template <class D> QX_INLINE D far_part(D t) { return -6.0 * t - (0.75 * (t * t * t) - 3.75 * (t * t)) + 3.0; }

}  // namespace qx::sampling
