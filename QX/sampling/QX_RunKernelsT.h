// SPDX-License-Identifier: Apache-2.0
// All run kernels of one level. Narrower registers than those of AVX2 gain nothing where pixels are mixed.
#include "QX/sampling/QX_AreaRuns.h"
#include "QX/sampling/QX_NearestRunT.h"
#include "QX/sampling/QX_RunKernels.h"
#include "lanes/Level.h"
#ifdef __AVX2__
#include "QX/sampling/QX_AreaBoxes8T.h"
#include "QX/sampling/QX_AreaRunT.h"
#include "QX/sampling/QX_BicubicRunT.h"
#include "QX/sampling/QX_BilinearRunT.h"
#endif

namespace qx::QX_ISA {

#ifdef __AVX2__
template <class Pixel> struct BilinearOf { using Kernel = BilinearFloat; };
template <> struct BilinearOf<QX_Pixel8> { using Kernel = Bilinear8; };
template <> struct BilinearOf<QX_Pixel16> { using Kernel = Bilinear16; };

template <class Pixel>
constexpr RunSet<Pixel> run_set{&nearest_turned<Pixel>, &run_of<typename BilinearOf<Pixel>::Kernel, Pixel>,
                                &run_of<Bicubic<Pixel>, Pixel>, &area_run<Pixel>};
/// Boxes of 8 bits share the sums of their columns.
template <>
constexpr RunSet<QX_Pixel8> run_set<QX_Pixel8>{&nearest_turned<QX_Pixel8>, &run_of<Bilinear8, QX_Pixel8>,
                                               &run_of<Bicubic<QX_Pixel8>, QX_Pixel8>, &area_boxes8};
#else
template <class Pixel> constexpr RunSet<Pixel> run_set{&nearest_turned<Pixel>, nullptr, nullptr, nullptr};
#endif

const RunKernels run_kernels{run_set<QX_Pixel8>, run_set<QX_Pixel16>, run_set<QX_PixelFloat>};

}  // namespace qx::QX_ISA
