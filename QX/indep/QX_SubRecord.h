// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Area.h"

namespace qx {

/// The record of a rectangle of a world's pixels, which is not checked: size, rowbytes, data, flags, and what of the
/// extent hint lies in the rectangle, in its coordinates. All else is zero.
inline QX_LayerDef sub_record(const QX_LayerDef& source, const M_LRect& rect, std::size_t pixel_bytes) {
    QX_LayerDef part{};
    part.width = rect.right - rect.left;
    part.height = rect.bottom - rect.top;
    part.rowbytes = source.rowbytes;
    part.data = pixel_address(source, rect.left, rect.top, pixel_bytes);
    part.world_flags = source.world_flags;
    M_SectLRect(source.extent_hint, rect, &part.extent_hint);
    part.extent_hint = M_OffsetLRect(part.extent_hint, -rect.left, -rect.top);
    return part;
}

}  // namespace qx
