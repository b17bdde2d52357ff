// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_RoutineTypes.h"

/// Alpha into colour and back. Alpha itself stays. Rectangles are clipped, null is the whole world. `effect_ref` is
/// null or begins with a QX_ProgressInfo, whose abort function is asked before each row, on the calling thread; its
/// answer ends the work and is the result. Rows run on all processors when the acceleration layer is installed.
/// Other results: 0; 3 after a report for null pixels, GPU worlds and unknown depths.

/// @param forward  true multiplies by alpha, false divides. Kept: at alpha 0 the division turns colour full.
QX_EXPORT int QX_Premul(void* effect_ref, bool forward, QX_LayerDef* world);
QX_EXPORT int QX_PremulRect(void* effect_ref, bool forward, const M_LRect* rect,
                            QX_LayerDef* world);  ///< through the table of slots
QX_EXPORT int QX_PremulRect_S(void* effect_ref, bool forward, const M_LRect* rect,
                              QX_LayerDef* world);  ///< the routine of one thread that stands there

/// Between straight colour and colour mixed with that of a matte. Both worlds have one depth, and may be the same one;
/// they lie corner on corner. Forward, a transparent pixel takes the matte's colour; back, transparent and opaque
/// pixels are only copied.
/// @param colour  of any depth, null is black
QX_EXPORT int QX_PremulColor(void* effect_ref, QX_LayerDef* src, const QX_Pixel8* colour, bool forward,
                             QX_LayerDef* dst);
QX_EXPORT int QX_PremulColor16(void* effect_ref, QX_LayerDef* src, const QX_Pixel16* colour, bool forward,
                               QX_LayerDef* dst);
QX_EXPORT int QX_PremulColorFloat(void* effect_ref, QX_LayerDef* src, const QX_PixelFloat* colour, bool forward,
                                  QX_LayerDef* dst);
QX_EXPORT int QX_PremulColorRect(void* effect_ref, QX_LayerDef* src, const QX_Pixel8* colour, bool forward,
                                 const M_LRect* rect, QX_LayerDef* dst);
QX_EXPORT int QX_PremulColorRect16(void* effect_ref, QX_LayerDef* src, const QX_Pixel16* colour, bool forward,
                                   const M_LRect* rect, QX_LayerDef* dst);
QX_EXPORT int QX_PremulColorRectFloat(void* effect_ref, QX_LayerDef* src, const QX_PixelFloat* colour, bool forward,
                                      const M_LRect* rect, QX_LayerDef* dst);

/// Rows of 8-bit pixels against black. A null `src` means in place, as the forms with ARGB are. `effect_ref` is not
/// read. @return 0
QX_EXPORT int QX_BlackMatte(void* effect_ref, std::int32_t count, const QX_Pixel8* src, QX_Pixel8* dst);
QX_EXPORT int QX_BlackMatteARGB(void* effect_ref, std::int32_t count, QX_Pixel8* pixels);
/// Kept: colour of transparent pixels turns full here, and in the ARGB form the whole pixel turns 0.
QX_EXPORT int QX_DeBlackMatte(void* effect_ref, std::int32_t count, const QX_Pixel8* src, QX_Pixel8* dst);
QX_EXPORT int QX_DeBlackMatteARGB(void* effect_ref, std::int32_t count, QX_Pixel8* pixels);

/// Takes the part of a colour that shines through each pixel off an 8-bit world, or with `reverse` puts it on. Kept:
/// bytes wrap.
/// @param colour  null or black changes nothing
QX_EXPORT int QX_MatteBlackToMatteColorARGB(QX_LayerDef* world, const QX_Pixel8* colour, bool reverse);
