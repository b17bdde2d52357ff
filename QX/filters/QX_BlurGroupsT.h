// SPDX-License-Identifier: Apache-2.0
// Kernels of blurs of groups of lines, for one level. One number at a time gains nothing by groups: the plain level has
// none.
#include "QX/filters/QX_BlurKernels.h"
#include "lanes/Level.h"
#ifdef __SSE4_1__
#include "QX/filters/QX_BoxRowsT.h"
#endif

namespace qx::QX_ISA {

#ifdef __SSE4_1__
template <class Pixel, class D = DepthOf<Pixel>>
constexpr BlurGroupKernels<Pixel> group_kernels{&gather_rows<Pixel>,   &scatter_rows<Pixel>, &matte_pixels<Pixel>,
                                                &widen_entries<Pixel>, &gaussian_stretch<D>, kBoxesRows<D>,
                                                &box_sums<D>,          &box_stretch<D>};
const BlurKernels blur_kernels{{group_kernels<QX_Pixel8>, group_kernels<QX_Pixel16>, group_kernels<QX_PixelFloat>},
                               true};
#else
const BlurKernels blur_kernels{};
#endif

}  // namespace qx::QX_ISA
