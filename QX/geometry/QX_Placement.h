// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/geometry/QX_Footprint.h"
#include "platform/M_Geometry.h"
#include "platform/M_Matrix.h"

/// Where a layer comes to lie: its matrices in both directions, and the part of the destination that they reach.
namespace qx {

/// The matrices of a call, in time order.
struct MatrixList {
    const M_Matrix3* at;
    int count;
    bool src2dst;  ///< their direction
};

/// A moment of a layer.
struct Pose {
    M_Matrix3 to_dst, to_src;
};

/// @return false, with the direction that is not given left as it was, for a matrix without an inverse
bool pose_of(const M_Matrix3& given, bool src2dst, Pose* pose);

/// The layer while the shutter is open. A last matrix without an inverse takes the first one's; the layer still moves.
struct Motion {
    Pose start{}, end{};
    bool starts;  ///< the first matrix has an inverse
    bool ends;    ///< so has the last one
    bool moving;  ///< there are several matrices, and the first differs from the last
    explicit Motion(const MatrixList& matrices);
};

/// The part of the destination's `bounds` that may change: `clipped` is what the caller's rectangle and mask leave of
/// it. Empty when the layer does not come there.
M_LRect affected_rect(const MatrixList& matrices, const Motion& motion, const M_LRect& clipped,
                      const M_LRect& src_bounds);

/// False when a moving layer keeps its shape and speed: then its sub-frames lie on straight lines.
bool moves_unevenly(const MatrixList& matrices, const Motion& motion);

}  // namespace qx
