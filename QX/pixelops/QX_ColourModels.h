// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Pixel.h"

/// Single pixels between RGB and other models, for effects. A value of a model is three numbers in signed 16.16: hue in
/// degrees from 0 to 360, lightness and saturation from 0 to 1; or Y, I, Q on the scale where RGB goes from 0 to 1.
/// Alpha is neither read nor written, but for the premultiplied forms, which take colours out of their pixel's alpha
/// before and fold them into it after. `ref` is not read. All return 0, hold no state and allocate nothing.

QX_EXPORT int QX_RGBtoHLS_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t hls[3]);
QX_EXPORT int QX_RGBtoHLS_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t hls[3]);
QX_EXPORT int QX_RGBtoHLS_StraightFloat(void* ref, const QX_PixelFloat* rgb, std::int32_t hls[3]);
QX_EXPORT int QX_RGBtoHLS_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t hls[3]);

/// Integer channels keep the low bits of what a lightness or saturation outside 0 to 1 gives. Hue wraps once.
QX_EXPORT int QX_HLStoRGB_Straight(void* ref, const std::int32_t hls[3], QX_Pixel8* rgb);
QX_EXPORT int QX_HLStoRGB_Straight16(void* ref, const std::int32_t hls[3], QX_Pixel16* rgb);
QX_EXPORT int QX_HLStoRGB_StraightFloat(void* ref, const std::int32_t hls[3], QX_PixelFloat* rgb);
QX_EXPORT int QX_HLStoRGB_Premul(void* ref, const std::int32_t hls[3], QX_Pixel8* rgb);

QX_EXPORT int QX_RGBtoYIQ_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t yiq[3]);
QX_EXPORT int QX_RGBtoYIQ_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t yiq[3]);
QX_EXPORT int QX_RGBtoYIQ_StraightFloat(void* ref, const QX_PixelFloat* rgb, std::int32_t yiq[3]);
QX_EXPORT int QX_RGBtoYIQ_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t yiq[3]);

/// Integer channels are limited to their scale.
QX_EXPORT int QX_YIQtoRGB_Straight(void* ref, const std::int32_t yiq[3], QX_Pixel8* rgb);
QX_EXPORT int QX_YIQtoRGB_Straight16(void* ref, const std::int32_t yiq[3], QX_Pixel16* rgb);
QX_EXPORT int QX_YIQtoRGB_StraightFloat(void* ref, const std::int32_t yiq[3], QX_PixelFloat* rgb);
QX_EXPORT int QX_YIQtoRGB_Premul(void* ref, const std::int32_t yiq[3], QX_Pixel8* rgb);

/// Single numbers on the scale of the depth; a whole turn of hue is full. Kept: luminance of integer pixels is a sum of
/// hundredths that is not divided, 25,500 for white at 8 bits, and the saturation here is not that of HLS.
QX_EXPORT int QX_Hue_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t* hue);
QX_EXPORT int QX_Hue_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t* hue);
QX_EXPORT int QX_Hue_StraightFloat(void* ref, const QX_PixelFloat* rgb, float* hue);
QX_EXPORT int QX_Hue_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t* hue);

QX_EXPORT int QX_Lightness_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t* lightness);
QX_EXPORT int QX_Lightness_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t* lightness);
QX_EXPORT int QX_Lightness_StraightFloat(void* ref, const QX_PixelFloat* rgb, float* lightness);
QX_EXPORT int QX_Lightness_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t* lightness);

QX_EXPORT int QX_Luminance_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t* luminance);
QX_EXPORT int QX_Luminance_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t* luminance);
QX_EXPORT int QX_Luminance_StraightFloat(void* ref, const QX_PixelFloat* rgb, float* luminance);
QX_EXPORT int QX_Luminance_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t* luminance);

QX_EXPORT int QX_Saturation_Straight(void* ref, const QX_Pixel8* rgb, std::int32_t* saturation);
QX_EXPORT int QX_Saturation_Straight16(void* ref, const QX_Pixel16* rgb, std::int32_t* saturation);
QX_EXPORT int QX_Saturation_StraightFloat(void* ref, const QX_PixelFloat* rgb, float* saturation);
QX_EXPORT int QX_Saturation_Premul(void* ref, const QX_Pixel8* rgb, std::int32_t* saturation);
