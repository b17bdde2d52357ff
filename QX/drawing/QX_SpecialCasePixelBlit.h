// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/world/QX_WorldX.h"

enum QX_SpecialCaseBlitStyle : std::int32_t {
    kQX_BlitPlain = 0,         ///< flattened over `colour_a`; the same for every number that is not below
    kQX_BlitCheckerboard = 1,  ///< flattened over squares of both colours
    kQX_BlitMatte = 2          ///< pulled towards `colour_a` where alpha is low
};

/// Puts a world onto an 8-bit world for display, flattening alpha against a backdrop.
/// @param src_point       source pixel that lands on the corner of `dst_rect`; a negative one makes nothing happen
/// @param swap_rb         exchanges red and blue in what is written
/// @param checker_origin  where columns and rows of the checkerboard are counted from
/// @param checker_mask    (column ^ row) & mask non-zero picks `colour_a`, else `colour_b`
/// Rows are shared between processors. Throws 3 after a report for a source of unknown depth.
QX_EXPORT void QX_SpecialCasePixelBlit(const QX_World* src_world, M_LPoint src_point, QX_SpecialCaseBlitStyle style,
                                       bool swap_rb, M_LPoint checker_origin, const QX_PixelFloat& colour_a,
                                       const QX_PixelFloat& colour_b, std::int32_t checker_mask,
                                       const M_LRect& dst_rect, QX_WorldX<QX_Pixel8>* dst_world8);
