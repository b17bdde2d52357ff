// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"

/// The bell at a distance in units of a kernel's reach: 1 - (1 - exp(-2.378 d^2)) * 1.102, and 0 beyond 1. It falls
/// from 1 to about 0.0003.
QX_EXPORT double QXp_GaussianValue(double distance);

/// Flags of QX_GaussianKernel.
inline constexpr std::uint32_t kQX_GaussianKernel_OneRow = 1;     ///< a row in place of a square
inline constexpr std::uint32_t kQX_GaussianKernel_Normalise = 2;  ///< scale entries until their mean is about 255

/// Fills a kernel with a bell: R = ceil(radius), `*width` = 2 R + 1, and `weights` has `*width` entries a row. An entry
/// is 255 times the bell at its distance over (radius + 1), times `multiplier`, rounded and limited to 0..255. A row's
/// square is held in 16 signed bits, so that rows from 182 on lie elsewhere; where the distance is no number the entry
/// is 0, and with Normalise all are.
/// @param reserved  not read
/// @return 0; 3 after a report, with nothing written, for a missing pointer and a radius that is not within 0..32767
QX_EXPORT int QX_GaussianKernel(void* reserved, double radius, std::uint32_t flags, double multiplier,
                                std::int32_t* width, std::uint32_t* weights);
