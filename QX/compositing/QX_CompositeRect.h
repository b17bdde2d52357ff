// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Puts a rectangle of an 8-bit world behind another: the destination's pixels win as far as they are opaque. Nothing
/// is clipped. The forms for drafts give the same pixels.
/// @param progress  may be null; asked before each row behind which a multiple of 32 are left, those of the other field
///                  too
/// @param rect      in source coordinates, null is the whole source; no side above 32767
/// @param x, y      where its corner lands
/// @param field     0 all rows, 1 the even rows of the destination, all others the odd ones
/// @param reserved  not read
/// @return 0, at an opacity of 0 with nothing done; 3 after a report for a GPU world, null worlds or pixels, another
///         depth, or a rectangle that leaves a world: nothing is written then. A code of the progress function ends
///         after whole rows.
QX_EXPORT int QX_CompositeRectBest_Straight(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                            const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                            std::int32_t reserved, QX_LayerDef* dst);
QX_EXPORT int QX_CompositeRectDraft_Straight(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                             const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                             std::int32_t reserved, QX_LayerDef* dst);
/// Of premultiplied pixels. Kept: what is added to a destination whose channels do not fit its alpha wraps.
QX_EXPORT int QX_CompositeRectBest_Premul(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                          const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                          std::int32_t reserved, QX_LayerDef* dst);
QX_EXPORT int QX_CompositeRectDraft_Premul(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                           const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                           std::int32_t reserved, QX_LayerDef* dst);
