// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// A sampling footprint and its source. Owned by the caller, only read; a block starts out all zero. Lengths are
/// signed 16.16 numbers of source pixels.
struct QX_SampPB {
    std::int32_t x_radius;      ///< half the footprint's width; above 0.5 asks for area sampling
    std::int32_t y_radius;      ///< half its height
    std::int32_t area;          ///< 4 * x_radius * y_radius in square pixels; read by QX_AreaSample_Premul alone
    const QX_EffectWorld* src;  ///< the source world
    std::int32_t motion_steps;  ///< sub-frame steps of the rows of a moving layer
    std::int32_t reserved[19];
};
static_assert(sizeof(QX_SampPB) == 104 && offsetof(QX_SampPB, area) == 8 && offsetof(QX_SampPB, src) == 16);
static_assert(offsetof(QX_SampPB, motion_steps) == 24);

/// Quality of sampling: 0 nearest pixel, 1 bilinear, 2 and 3 bicubic.
/// @return how many pixels a sample reaches beyond its integer position on each side: 1 for quality 1, 2 for 2 and 3,
/// 0 for anything else
QX_EXPORT int QX_GetSampleQualityPixelSupport(int quality);
