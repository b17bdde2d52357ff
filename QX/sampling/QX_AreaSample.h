// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_SampPB.h"

/// Area samplers: the mean of the source over the footprint 2 * x_radius by 2 * y_radius around (x, y), alpha-weighted
/// for straight colour; what lies outside the world counts as transparent. Radii of 0.5 and below are thin: there a
/// point sampler of the quality reads. Forms, threads and results as in QX_Samp.h.

/// 8 and 16 bits, quality 1, through the form that the library chose at its start.
QX_EXPORT int QX_AreaSample_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                     QX_Pixel8* out);
QX_EXPORT int QX_AreaSample_Straight16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                       QX_Pixel16* out);

/// @tparam Quality  1 takes the bilinear, 2 the bicubic clipped sampler for thin footprints. Refuses a GPU world.
template <class Pixel, int Quality>
QX_EXPORT int QX_AreaSample_CPlusPlus(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                      Pixel* out);

extern template int QX_AreaSample_CPlusPlus<QX_Pixel8, 1>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                          QX_Pixel8*);
extern template int QX_AreaSample_CPlusPlus<QX_Pixel8, 2>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                          QX_Pixel8*);
extern template int QX_AreaSample_CPlusPlus<QX_Pixel16, 1>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                           QX_Pixel16*);
extern template int QX_AreaSample_CPlusPlus<QX_Pixel16, 2>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                           QX_Pixel16*);
extern template int QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                              QX_PixelFloat*);
extern template int QX_AreaSample_CPlusPlus<QX_PixelFloat, 2>(void*, std::int32_t, std::int32_t, const QX_SampPB*,
                                                              QX_PixelFloat*);

/// Premultiplied 8-bit pixels in integers. `params->area` must be filled in and at least 128; an `area` that rounds to
/// 0 gives the zero pixel. Refuses a GPU world.
QX_EXPORT int QX_AreaSample_Premul(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                   QX_Pixel8* out);
