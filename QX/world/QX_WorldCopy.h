// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Records.h"

namespace qx {

struct CopyFrom {
    const QX_LayerDef* world;
    int depth;
    M_LRect rect;
};

/// The corner of the rectangle lands on (x, y).
struct CopyTo {
    QX_LayerDef* world;
    int depth;
    int x, y;
};

struct CopyOptions {
    bool dither;
    int field;  ///< 1 is even rows of the destination, 2 odd ones, all others every row
    const QX_ProgressInfo* progress;
};

/// Copies a rectangle between worlds of any two depths, clipped to both, rows from top to bottom. The answer of
/// `progress` is thrown. @return false, with nothing done, when a depth is none of 8, 16, 32
bool copy_pixels(const CopyFrom& from, const CopyTo& to, const CopyOptions& options);

}  // namespace qx
