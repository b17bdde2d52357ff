// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Area.h"

namespace qx {

/// The record of a rectangle of a world's pixels, which is not checked and may have any edges: size, rowbytes, data,
/// flags, and what of the extent hint lies in the rectangle, in its coordinates. All else is zero.
inline QX_LayerDef sub_record(const QX_LayerDef& source, const M_LRect& rect, std::size_t pixel_bytes) {
    QX_LayerDef part{};
    const std::int32_t to_left = M_WrappingNegate(rect.left), to_top = M_WrappingNegate(rect.top);
    const M_LRect at_corner = M_OffsetLRect(rect, to_left, to_top);
    part.width = at_corner.right;
    part.height = at_corner.bottom;
    part.rowbytes = source.rowbytes;
    part.data = pixel_address(source, rect.left, rect.top, pixel_bytes);
    part.world_flags = source.world_flags;
    M_SectLRect(source.extent_hint, rect, &part.extent_hint);
    part.extent_hint = M_OffsetLRect(part.extent_hint, to_left, to_top);
    return part;
}

}  // namespace qx
