// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_PerDepth.h"
#include "lanes/Levels.h"

namespace qx {

/// The part of a kernel that meets the source.
struct KernelWindow {
    const std::int32_t* first[4];  ///< of each channel, the weight at the window's top left
    std::int32_t rows, columns;
    std::ptrdiff_t row_length;  ///< weights from one row to the next
    bool in_16_bits;            ///< no weight takes more
};

/// What becomes of sums.
struct KernelScale {
    std::int32_t divisor[4];
    bool clamps;
};

/// Pixels side by side through one window: that of the first begins at `src`, that of the next a pixel further.
template <class Pixel>
using ConvolveRow = void(std::int32_t count, const KernelWindow& window, const KernelScale& scale, const std::byte* src,
                         std::ptrdiff_t rowbytes, Pixel* dst);
template <class Pixel> struct ConvolveRows { ConvolveRow<Pixel>* row; };
using ConvolveKernels = PerDepth<ConvolveRows>;
QX_DECLARE_LEVELS(ConvolveKernels, convolve_kernels)

/// Chooses the kernels that QX_Convolve uses, at the library's start. Until then they are the plain ones.
void choose_convolve_kernels(Level level);

}  // namespace qx
