// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Flags of QX_Convolve. Other bits do nothing.
inline constexpr std::uint32_t kQX_Convolve_OneDimension = 1;    ///< kernels of `size` weights, along a row
inline constexpr std::uint32_t kQX_Convolve_Normalise = 2;       ///< divide each channel by the sum of its kernel
inline constexpr std::uint32_t kQX_Convolve_Unclamped = 4;       ///< integers wrap, floats may leave 0..1
inline constexpr std::uint32_t kQX_Convolve_DownColumn = 32;     ///< with OneDimension: along a column
inline constexpr std::uint32_t kQX_Convolve_HonourOrigin = 256;  ///< the worlds lie by their origins

/// Sums a window around every source pixel, each channel by its own kernel of signed weights, of which 256 stands for
/// one. Kernels lie row by row and are not turned round; what lies outside the source adds nothing. All four channels
/// are treated alike: no colour is multiplied by alpha.
///
/// Without Normalise the divisor is 256 a weight. Integer sums wrap in 32 bits and are divided towards zero; float sums
/// add up in the kernel's order. Float alpha always ends in 0..1, and below 1e-16 as 0.
///
/// Runs on the calling thread and allocates nothing. `src` and `dst` must not share pixels.
/// @param progress  its progress function is asked after rows, once more than 2048 weights have been used; null asks
/// nobody
/// @param area      not read
/// @param size      odd; kernels have `size` * `size` weights, or `size` with OneDimension
/// @return 0; 3 for GPU worlds, unlike depths, a missing world or kernel, or such a size; the answer of the progress
///         function, with the rows so far done
QX_EXPORT int QX_Convolve(const QX_ProgressInfo* progress, const QX_LayerDef* src, const M_LRect* area,
                          std::uint32_t flags, std::int32_t size, const std::int32_t* a_kernel,
                          const std::int32_t* r_kernel, const std::int32_t* g_kernel, const std::int32_t* b_kernel,
                          QX_LayerDef* dst);
