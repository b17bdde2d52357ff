// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Pixel.h"
#include "lanes/Levels.h"

namespace qx {

/// What a scan for alpha still watches for, in a stretch of pixels, and what it counts there. Words are pixels in
/// memory.
struct AlphaStretch {
    bool watch_clear, watch_visible;                ///< for pixels that differ from these:
    std::uint32_t clear_word, visible_word;         ///< one of alpha 0, and one of alpha above 0
    std::uint32_t min_alpha;                        ///< watched for is any smaller one above 0
    std::uint32_t clear = 0, white = 0, black = 0;  ///< pixels of alpha 0: all, and of these colours
    bool above_alpha = false;                       ///< a pixel of alpha above 0 has a colour above it
};

/// Goes over pixels up to where something is that is watched for, in whole registers. @return pixels counted
using StretchScan = std::size_t(const QX_Pixel8* row, std::size_t count, AlphaStretch& stretch);
struct GuessKernels {
    StretchScan* scan;
};
QX_DECLARE_LEVELS(GuessKernels, guess_kernels)

/// Chooses the kernels, at the library's start. Until then they are the plain ones, which count nothing.
void choose_guess_kernels(Level level);

}  // namespace qx
