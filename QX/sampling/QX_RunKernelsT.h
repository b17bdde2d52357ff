// SPDX-License-Identifier: Apache-2.0
// All run kernels of one level. Narrower registers than those of AVX2 gain nothing.
#include "QX/sampling/QX_Runs.h"
#include "lanes/Level.h"
#ifdef __AVX2__
#include "QX/sampling/QX_BicubicRunT.h"
#include "QX/sampling/QX_BilinearRunT.h"
#endif

namespace qx::QX_ISA {

#ifdef __AVX2__
template <class Pixel> struct BilinearOf { using Kernel = BilinearFloat; };
template <> struct BilinearOf<QX_Pixel8> { using Kernel = Bilinear8; };
template <> struct BilinearOf<QX_Pixel16> { using Kernel = Bilinear16; };

template <class Pixel>
constexpr PointRuns<Pixel> point_runs{&run_of<typename BilinearOf<Pixel>::Kernel, Pixel>,
                                      &run_of<Bicubic<Pixel>, Pixel>};
#else
template <class Pixel> constexpr PointRuns<Pixel> point_runs{};
#endif

const RunKernels run_kernels{{point_runs<QX_Pixel8>, point_runs<QX_Pixel16>, point_runs<QX_PixelFloat>}};

}  // namespace qx::QX_ISA
