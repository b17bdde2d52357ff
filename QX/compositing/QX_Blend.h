// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// A cross-fade of two worlds of one depth and one size. Premultiplied, all four channels are mixed alike; straight,
/// colours count by their alphas, and where both weigh nothing they are those of `src2`. Kept: float channels are mixed
/// in steps of 1 / 65536.
/// @param effect_ref  not read
/// @param ratio       16.16, limited to 0 (`src1` is copied) and 0x10000 (`src2` is)
/// @param dst         may be one of the sources
/// @return 0; 3 after a report for a source on a GPU, null worlds or pixels, different or unknown depths, different
///         sizes: nothing is written then. Runs on the calling thread and allocates nothing.
QX_EXPORT int QX_Blend_Straight(void* effect_ref, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio,
                                QX_LayerDef* dst);
QX_EXPORT int QX_Blend_Premul(void* effect_ref, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio,
                              QX_LayerDef* dst);
/// The straight one.
QX_EXPORT int QX_Blend(void* effect_ref, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio,
                       QX_LayerDef* dst);
