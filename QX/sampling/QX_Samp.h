// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_SampPB.h"

/// Point samplers: one pixel of a world, or a run, at a position in 16.16 whose integers lie on pixels. The forms of
/// their arguments are in QX_RoutineTypes.h. All are re-entrant and read the source alone; a clipped sampler reads
/// transparent black outside the world, an unclipped one (NoClip, Translate, Span) relies on its caller for every tap.
/// `out` may not lie in the source. The results are 0; 3 after a report where a routine refuses a GPU world.

/// Nearest pixel. Kept: column and row wrap at 16 bits before they are tested. Refuse a GPU world.
QX_EXPORT qx::PointSamplerFn<QX_Pixel8> QX_NNSample;
QX_EXPORT qx::PointSamplerFn<QX_Pixel16> QX_NNSample16;
QX_EXPORT qx::PointSamplerFn<QX_PixelFloat> QX_NNSampleFloat;

/// The weights of the four corners for two fractions on 0..65535, in double; they sum to one.
QX_EXPORT int QX_SubpixelSampleComputeWeight(std::int32_t fx, std::int32_t fy, double weights[4]);

/// Bilinear, 8 bits.
QX_EXPORT qx::PointSamplerFn<QX_Pixel8> QX_SubpixelSample_Straight;
QX_EXPORT qx::PointSamplerFn<QX_Pixel8> QX_SubpixelSampleNoClip_Straight;
QX_EXPORT qx::PlusSamplerFn<QX_Pixel8> QX_SubpixelSamplePlus_Straight;
QX_EXPORT qx::TranslateSamplerFn<QX_Pixel8> QX_SubpixelSampleTranslateNoClip_Straight;
QX_EXPORT qx::SpanSamplerFn<QX_Pixel8> QX_SubpixelSpanSampleTranslateNoClip_Straight;
QX_EXPORT qx::FourSamplesFn QX_SubpixelSampleNoClip_Straight_4;
QX_EXPORT qx::FourTranslateSamplesFn QX_SubpixelSampleTranslateNoClip_Straight_4;
/// Premultiplied pixels in fixed point. Refuses a GPU world.
QX_EXPORT qx::PointSamplerFn<QX_Pixel8> QX_SubpixelSample_Premul;

/// Bilinear, 16 bits.
QX_EXPORT qx::PointSamplerFn<QX_Pixel16> QX_SubpixelSample_Straight16;
QX_EXPORT qx::PointSamplerFn<QX_Pixel16> QX_SubpixelSampleNoClip_Straight16;
QX_EXPORT qx::PlusSamplerFn<QX_Pixel16> QX_SubpixelSamplePlus_Straight16;
QX_EXPORT qx::TranslateSamplerFn<QX_Pixel16> QX_SubpixelSampleTranslateNoClip_Straight16;
QX_EXPORT qx::SpanSamplerFn<QX_Pixel16> QX_SubpixelSpanSampleTranslateNoClip_Straight16;

/// Bilinear, float. All but the translate form refuse a GPU world.
QX_EXPORT qx::PointSamplerFn<QX_PixelFloat> QX_SubpixelBilinearFloat;
QX_EXPORT qx::PointSamplerFn<QX_PixelFloat> QX_SubpixelNoClipBilinearFloat;
QX_EXPORT qx::PlusSamplerFn<QX_PixelFloat> QX_SubpixelSpanSampleAllInBilinearFloat;
QX_EXPORT qx::TranslateSamplerFn<QX_PixelFloat> QX_SubpixelSampleTranslateNoClipBilinearFloat;
QX_EXPORT qx::SpanSamplerFn<QX_PixelFloat> QX_SubpixelSpanSampleBilinearFloat;

/// Bicubic: Keys' cubic convolution with a = -0.75. Kept: the translate forms are bilinear.
QX_EXPORT qx::PointSamplerFn<QX_Pixel8> QX_SubpixelBicubic8, QX_SubpixelNoClipBicubic8;
QX_EXPORT qx::PointSamplerFn<QX_Pixel16> QX_SubpixelBicubic16, QX_SubpixelNoClipBicubic16;
QX_EXPORT qx::PointSamplerFn<QX_PixelFloat> QX_SubpixelBicubicFloat, QX_SubpixelNoClipBicubicFloat;
QX_EXPORT qx::PlusSamplerFn<QX_Pixel8> QX_SubpixelSpanSampleAllInBicubic8;
QX_EXPORT qx::PlusSamplerFn<QX_Pixel16> QX_SubpixelSpanSampleAllInBicubic16;
QX_EXPORT qx::PlusSamplerFn<QX_PixelFloat> QX_SubpixelSpanSampleAllInBicubicFloat;
QX_EXPORT qx::TranslateSamplerFn<QX_Pixel8> QX_SubpixelSampleTranslateNoClipBicubic8;
QX_EXPORT qx::TranslateSamplerFn<QX_Pixel16> QX_SubpixelSampleTranslateNoClipBicubic16;
QX_EXPORT qx::TranslateSamplerFn<QX_PixelFloat> QX_SubpixelSampleTranslateNoClipBicubicFloat;
QX_EXPORT qx::SpanSamplerFn<QX_Pixel8> QX_SubpixelSpanSampleBicubic8;
QX_EXPORT qx::SpanSamplerFn<QX_Pixel16> QX_SubpixelSpanSampleBicubic16;
QX_EXPORT qx::SpanSamplerFn<QX_PixelFloat> QX_SubpixelSpanSampleBicubicFloat;
