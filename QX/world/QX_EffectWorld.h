// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// An owning world for a plug-in, described by `out`. `clear` asks for zeroed pixels.
/// @return 0; 516 for a null record or an invalid size, 515 for a non-zero `reserved`, 4, or 3 for a bad depth;
///         `out` is then as it was
QX_EXPORT int QX_NewEffectWorld(int width, int height, int depth, char reserved, char clear, QX_LayerDef* out);
/// Frees a world of QX_NewEffectWorld (or a GPU frame so marked) and zeroes the record.
/// @return 0, or 516 after a report for a null record or one that was not made so
QX_EXPORT int QX_DisposeEffectWorld(QX_LayerDef* world);
