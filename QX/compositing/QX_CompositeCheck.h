// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Records.h"

namespace qx {

/// The records of a call that composites a world onto another.
struct CompositeRecords {
    const QX_LayerDef *src, *dst;
    const QX_MaskWorld* mask;  ///< may be null
    const QX_CompositeModePlus* mode;
    bool has_geometry;  ///< what else the call may not lack
};

/// What can be wrong with the records, in a fixed order. @param depths_differ, mask_differs  the routine's own words
/// @return 0, or 3 after a report
int check_composite(int place, const CompositeRecords& records, const char* depths_differ, const char* mask_differs);

}  // namespace qx
