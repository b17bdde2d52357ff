// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_PerDepth.h"
#include "lanes/Levels.h"

namespace qx {

/// Puts a colour under the pixels of a row, as far as their alpha is missing, or takes it off.
template <class Pixel> using MatteRow = void(std::int32_t count, const Pixel* src, const Pixel& colour, Pixel* dst);
template <class Pixel> struct MatteRows { MatteRow<Pixel>*forward, *back; };
using MatteKernels = PerDepth<MatteRows>;
QX_DECLARE_LEVELS(MatteKernels, matte_kernels)

/// Chooses the kernels that the mattes use, at the library's start. Until then they are the plain ones.
void choose_matte_kernels(Level level);

}  // namespace qx
