// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeCall.h"
#include "QX/geometry/QX_Placement.h"

namespace qx {

/// The arguments of a transform, as all entries take them.
struct TransformCall : CompositeCall {
    int quality;
    MatrixList matrices;
    const M_LRect* dest_rect;
};

}  // namespace qx
