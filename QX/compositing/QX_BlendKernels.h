// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_PerDepth.h"
#include "lanes/Levels.h"

namespace qx {

/// A row between two others, of which the second has a weight of `ratio`, from 1 to 0xFFFF, and the first the rest of
/// 0x10000. `dst` may be one of them.
template <class Pixel>
using BlendRow = void(std::int32_t count, const Pixel* src1, const Pixel* src2, std::int32_t ratio, Pixel* dst);
template <class Pixel> struct BlendRows { BlendRow<Pixel>*straight, *premul; };
using BlendKernels = PerDepth<BlendRows>;
QX_DECLARE_LEVELS(BlendKernels, blend_kernels)

/// Chooses the kernels, at the library's start. Until then they are the plain ones.
void choose_blend_kernels(Level level);

}  // namespace qx
