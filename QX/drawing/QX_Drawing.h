// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/world/QX_World.h"

/// Small drawing for overlays and tools. Nothing blends but the brush, and nothing is written outside the world.

/// Stores a pixel whole. The world's depth is the routine's.
/// @return false for a null pixel or world and a place outside it
QX_EXPORT bool QX_SetPixel8(std::int32_t x, std::int32_t y, const QX_Pixel8* pixel, QX_LayerDef* world);
QX_EXPORT bool QX_SetPixel16(std::int32_t x, std::int32_t y, const QX_Pixel16* pixel, QX_LayerDef* world);
QX_EXPORT bool QX_SetPixelFloat(std::int32_t x, std::int32_t y, const QX_PixelFloat* pixel, QX_LayerDef* world);

/// Stores a pixel for each column, or row where the line is steep, from end to end. Kept: positions wrap at 16 bits,
/// and channels outside 0 to 1 keep their low bits.
/// @param from  x before y; integers lie on pixels
/// @param to    the same
/// @return 0, or 3 after a report for null arguments and pixels
QX_EXPORT int QX_DrawLine(const double from[2], const double to[2], const QX_PixelFloat* colour, QX_World* world);

enum QX_BrushFlags : std::uint32_t {
    kQX_BrushLine = 1 << 0,    ///< one row, not a square
    kQX_BrushColumn = 1 << 5,  ///< with kQX_BrushLine: one column
};

/// Mixes a colour into an 8-bit world around (x, y), which go through signed 16 bits.
/// @param size     side of the brush: odd, not negative
/// @param weights  0 to 255 for each pixel of the brush's shape, rows packed
/// @return 0, or 3 after a report
QX_EXPORT int QX_PaintSpot(void* effect_ref, std::int32_t x, std::int32_t y, std::uint32_t flags, std::int32_t size,
                           const std::uint32_t* weights, QX_Pixel8 colour, QX_LayerDef* world);
