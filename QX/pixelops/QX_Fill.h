// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Stores one colour over a rectangle of a world of any depth.
/// @param ref    not read, may be null
/// @param color  null is transparent black
/// @param rect   null is the whole world; its edges may come in either order, and it is clipped
/// @return 0; 3 for a GPU world, null pixels or an unknown depth
/// Runs on the calling thread, allocates nothing. Different rectangles of one world may be filled at once.
QX_EXPORT int QX_Fill(void* ref, const QX_Pixel8* color, const M_LRect* rect, QX_LayerDef* world);
QX_EXPORT int QX_Fill16(void* ref, const QX_Pixel16* color, const M_LRect* rect, QX_LayerDef* world);
QX_EXPORT int QX_FillFloat(void* ref, const QX_PixelFloat* color, const M_LRect* rect, QX_LayerDef* world);

/// Sets alpha to 0 outside a rectangle, leaving colour. An empty rectangle leaves nothing covered.
/// @param ref   not read
/// @param rect  required
/// @return 0; 3 for null pixels (unless the rectangle covers the world) or an unknown depth
QX_EXPORT int QX_ClearAlphaExceptRect(void* ref, const M_LRect* rect, QX_LayerDef* world);
