// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"

namespace qx {

/// A row of pixels at any address to another depth, without noise.
using ConvertRow = void(const std::byte* src, std::byte* dst, std::size_t columns);

/// The same with noise, four values a pixel. The table's values are read where they lie.
using DitheredRow = void(const std::byte* src, std::byte* dst, std::size_t columns, const std::uint32_t* noise);

/// The row conversions of a level.
struct CopyKernels {
    ConvertRow *from8_to16, *from8_to_float, *from16_to8, *from16_to_float;
    ConvertRow *float_to8, *float_to8_nearest, *float_to16;
    DitheredRow *from16_to8_dithered, *float_to8_dithered;
};
QX_DECLARE_LEVELS(CopyKernels, copy_kernels)

/// Chooses the kernels that copy_row() uses, at the library's start. Until then they are the plain ones.
void choose_copy_kernels(Level level);

}  // namespace qx
