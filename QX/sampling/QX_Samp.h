// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_SampPB.h"

/// Point samplers: one pixel of a world, or a run, at a position in 16.16 whose integers lie on pixels. The forms of
/// their arguments are in QX_RoutineTypes.h. All are re-entrant and read the source alone; a clipped sampler reads
/// transparent black outside the world, an unclipped one (NoClip, Translate, Span) relies on its caller for every tap.
/// `out` may not lie in the source. The results are 0; 3 after a report where a routine refuses a GPU world.

/// Nearest pixel. Kept: column and row wrap at 16 bits before they are tested. Refuse a GPU world.
QX_EXPORT int QX_NNSample(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out);
QX_EXPORT int QX_NNSample16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out);
QX_EXPORT int QX_NNSampleFloat(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                               QX_PixelFloat* out);

/// The weights of the four corners for two fractions on 0..65535, in double; they sum to one.
QX_EXPORT int QX_SubpixelSampleComputeWeight(std::int32_t fx, std::int32_t fy, double weights[4]);

/// Bilinear, 8 bits.
QX_EXPORT int QX_SubpixelSample_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                         QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSampleNoClip_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                               QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSamplePlus_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                             bool* all_in, QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClip_Straight(void* in_data, std::int32_t x, std::int32_t y,
                                                        const double weights[4], const QX_SampPB* params,
                                                        QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSpanSampleTranslateNoClip_Straight(void* in_data, std::int32_t count, std::int32_t x,
                                                            std::int32_t y, const QX_SampPB* params,
                                                            std::uint32_t* alpha_sum, QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSampleNoClip_Straight_4(void* in_data, const std::int32_t coords[8], const QX_SampPB* params,
                                                 QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClip_Straight_4(void* in_data, const std::int32_t coords[8],
                                                          const double weights[4], const QX_SampPB* params,
                                                          QX_Pixel8* out);
/// Premultiplied pixels in fixed point. Refuses a GPU world.
QX_EXPORT int QX_SubpixelSample_Premul(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                       QX_Pixel8* out);

/// Bilinear, 16 bits.
QX_EXPORT int QX_SubpixelSample_Straight16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                           QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSampleNoClip_Straight16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                                 QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSamplePlus_Straight16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                               bool* all_in, QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClip_Straight16(void* in_data, std::int32_t x, std::int32_t y,
                                                          const double weights[4], const QX_SampPB* params,
                                                          QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSpanSampleTranslateNoClip_Straight16(void* in_data, std::int32_t count, std::int32_t x,
                                                              std::int32_t y, const QX_SampPB* params,
                                                              std::uint32_t* alpha_sum, QX_Pixel16* out);

/// Bilinear, float. All but the translate form refuse a GPU world.
QX_EXPORT int QX_SubpixelBilinearFloat(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                       QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelNoClipBilinearFloat(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                             QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSpanSampleAllInBilinearFloat(void* in_data, std::int32_t x, std::int32_t y,
                                                      const QX_SampPB* params, bool* all_in, QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClipBilinearFloat(void* in_data, std::int32_t x, std::int32_t y,
                                                            const double weights[4], const QX_SampPB* params,
                                                            QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSpanSampleBilinearFloat(void* in_data, std::int32_t count, std::int32_t x, std::int32_t y,
                                                 const QX_SampPB* params, float* alpha_sum, QX_PixelFloat* out);

/// Bicubic: Keys' cubic convolution with a = -0.75. Kept: the translate forms are bilinear.
QX_EXPORT int QX_SubpixelBicubic8(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                  QX_Pixel8* out);
QX_EXPORT int QX_SubpixelNoClipBicubic8(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                        QX_Pixel8* out);
QX_EXPORT int QX_SubpixelBicubic16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                   QX_Pixel16* out);
QX_EXPORT int QX_SubpixelNoClipBicubic16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                         QX_Pixel16* out);
QX_EXPORT int QX_SubpixelBicubicFloat(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                      QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelNoClipBicubicFloat(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                            QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSpanSampleAllInBicubic8(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                                 bool* all_in, QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSpanSampleAllInBicubic16(void* in_data, std::int32_t x, std::int32_t y,
                                                  const QX_SampPB* params, bool* all_in, QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSpanSampleAllInBicubicFloat(void* in_data, std::int32_t x, std::int32_t y,
                                                     const QX_SampPB* params, bool* all_in, QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClipBicubic8(void* in_data, std::int32_t x, std::int32_t y,
                                                       const double weights[4], const QX_SampPB* params,
                                                       QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClipBicubic16(void* in_data, std::int32_t x, std::int32_t y,
                                                        const double weights[4], const QX_SampPB* params,
                                                        QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSampleTranslateNoClipBicubicFloat(void* in_data, std::int32_t x, std::int32_t y,
                                                           const double weights[4], const QX_SampPB* params,
                                                           QX_PixelFloat* out);
QX_EXPORT int QX_SubpixelSpanSampleBicubic8(void* in_data, std::int32_t count, std::int32_t x, std::int32_t y,
                                            const QX_SampPB* params, std::uint32_t* alpha_sum, QX_Pixel8* out);
QX_EXPORT int QX_SubpixelSpanSampleBicubic16(void* in_data, std::int32_t count, std::int32_t x, std::int32_t y,
                                             const QX_SampPB* params, std::uint32_t* alpha_sum, QX_Pixel16* out);
QX_EXPORT int QX_SubpixelSpanSampleBicubicFloat(void* in_data, std::int32_t count, std::int32_t x, std::int32_t y,
                                                const QX_SampPB* params, float* alpha_sum, QX_PixelFloat* out);
