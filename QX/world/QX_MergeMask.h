// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/world/QX_UnoBuffer.h"

/// Multiplies the alpha of `world` by a mask of 8 or 16 bits, whose sample (0, 0) lies on pixel (x, y), whatever the
/// world's origin. Pixels outside of `rect` stay; in it alpha is 0 where the mask has no sample, or none in
/// `buffer_rect`. Colours stay. A null rectangle is the whole world, the whole buffer. Runs on all processors; the
/// calling thread asks `progress` every 64 rows.
///
/// Throws a code as an int: 3 after a report for a world that is missing, has no pixels or is of a GPU, for a damaged
/// mask, and for a mask of floats; the answer of `progress`.
QX_EXPORT void QX_MergeMaskAlpha(const QX_ProgressInfo* progress, std::int32_t x, std::int32_t y,
                                 const M_LRect* buffer_rect, const QX_UnoBuffer* buffer, const M_LRect* rect,
                                 QX_World* world);
