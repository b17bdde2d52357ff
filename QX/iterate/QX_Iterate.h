// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_RoutineTypes.h"

/// The iterate family. Worlds have one depth; `src` may be null. `area` in destination coordinates is clipped, and
/// null is the whole destination. After each row, if `progress_final` is not 0, the progress of `in_data` is
/// called with (row + 1 + progress_base, progress_final) on the caller's thread: 517 ends the work at once.
/// Kept: any other answer is replaced by the next row's, and the last row's becomes the result.
/// @return 0, the pixel function's or progress's code, or 3 after a report for bad arguments

/// `in` is the source pixel at the same place, or the destination pixel itself without a source.
QX_EXPORT int QX_Iterate(QX_InData* in_data, std::int32_t progress_base, std::int32_t progress_final, QX_LayerDef* src,
                         const M_LRect* area, void* refcon, QX_IteratePixelFunc pix_fn, QX_LayerDef* dst);

/// The source lies at `origin` in the destination; only where it lies is visited. `in` is null without a source.
QX_EXPORT int QX_IterateOrigin(QX_InData* in_data, std::int32_t progress_base, std::int32_t progress_final,
                               QX_LayerDef* src, const M_LRect* area, const M_LPoint* origin, void* refcon,
                               QX_IteratePixelFunc pix_fn, QX_LayerDef* dst);

/// 8-bit only: every channel through a table of 256 bytes; a null table changes nothing.
QX_EXPORT int QX_IterateLUT(QX_InData* in_data, std::int32_t progress_base, std::int32_t progress_final,
                            QX_LayerDef* src, const M_LRect* area, const std::uint8_t* a_lut, const std::uint8_t* r_lut,
                            const std::uint8_t* g_lut, const std::uint8_t* b_lut, QX_LayerDef* dst);

/// Runs `fn` once for each index below `iterations`; -1 means once on every processor. Part 0 runs on the
/// calling thread. The first non-zero result ends the work and is returned.
QX_EXPORT int QX_IterateGeneric(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn);

/// The single-thread routine behind QX_IterateGeneric.
QX_EXPORT int QX_IterateGeneric_Static(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn);

namespace qx {

/// The single-thread routines behind the table.
int iterate_plain(QX_InData*, std::int32_t, std::int32_t, QX_LayerDef*, const M_LRect*, void*, QX_IteratePixelFunc,
                  QX_LayerDef*);
int iterate_origin_plain(QX_InData*, std::int32_t, std::int32_t, QX_LayerDef*, const M_LRect*, const M_LPoint*, void*,
                         QX_IteratePixelFunc, QX_LayerDef*);
/// Visits the whole rectangle; where the source has no pixel, `in` is a transparent one that may not be written.
int iterate_origin_no_clip_plain(QX_InData*, std::int32_t, std::int32_t, QX_LayerDef*, const M_LRect*, const M_LPoint*,
                                 void*, QX_IteratePixelFunc, QX_LayerDef*);
int iterate_lut_plain(QX_InData*, std::int32_t, std::int32_t, QX_LayerDef*, const M_LRect*, const std::uint8_t*,
                      const std::uint8_t*, const std::uint8_t*, const std::uint8_t*, QX_LayerDef*);

}  // namespace qx
