// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Which pixel type a world has, by asking for each in turn: `*out` gets `pixels`, or where that is null the world's
/// own, when the depth is the routine's, else null.
/// @return 0; 3 after a report for a GPU world; 516 after one for a null world
QX_EXPORT int QX_GetPixelData8(QX_LayerDef* world, void* pixels, void** out);
QX_EXPORT int QX_GetPixelData16(QX_LayerDef* world, void* pixels, void** out);
QX_EXPORT int QX_GetPixelDataFloat(QX_LayerDef* world, void* pixels, void** out);
