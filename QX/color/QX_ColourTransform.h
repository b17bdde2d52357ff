// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"
#include "QX/world/QX_World.h"
#include "platform/HCL_CMX.h"

/// Brings the colours of a world through a transform of the host's colour engine into another world, of any depth and
/// at least its size, whose left top part is written. Alpha is copied where that is asked for, and else is the engine's
/// matter. Both may be one world.
///
/// The engine gets a world whose rows lie without gaps in one call, else row by row; only then is `progress` asked,
/// every 64 rows. Any thread, on separate worlds.
///
/// They throw a code: 3 after a report for a GPU world, a missing one or one without pixels, an unknown depth, alpha
/// that is to be copied between depths, and a destination that is too small, with nothing written; 4 after a report
/// when memory is short; the engine's error; the answer of `progress`.
/// @param out_flag  gets false; may be null
QX_EXPORT void QX_CMXApplyTransform(const HCL_CMX_Transform& transform, const QX_World* src, QX_World* dst,
                                    bool copy_alpha, const QX_ProgressInfo* progress, bool* out_flag);
/// The same from CMYK: the source's channels of 8 or 16 bits are cyan, magenta, yellow and black, of which 0 is no ink.
QX_EXPORT void QX_CMXApplyTransformSrcCMYK(const HCL_CMX_Transform& transform, const QX_World* src, QX_World* dst,
                                           bool copy_alpha, const QX_ProgressInfo* progress);
/// From profile to profile, relative to their whites. A code is "sRGB" or another that the engine knows.
QX_EXPORT void QX_ConvertProfileToProfile(CMX_ProfileCode from_code, CMX_ProfileCode to_code, const QX_World* src,
                                          QX_World* dst, bool copy_alpha, const QX_ProgressInfo* progress);
