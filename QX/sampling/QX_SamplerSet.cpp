// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_SamplerSet.h"

#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampPB.h"

namespace {

using qx::slot;
using qx::Slot;

template <class Pixel> QX_SamplerSet<Pixel> bilinear_set();
template <class Pixel> QX_SamplerSet<Pixel> bicubic_set();

template <> QX_SamplerSet<QX_Pixel8> bilinear_set() {
    return {slot<Slot::SubpixelPlus>(),   slot<Slot::SubpixelSample>(),    slot<Slot::AreaSample>(),
            slot<Slot::SubpixelNoClip>(), slot<Slot::SubpixelTranslate>(), slot<Slot::SubpixelSpan>()};
}
template <> QX_SamplerSet<QX_Pixel16> bilinear_set() {
    return {slot<Slot::SubpixelPlus16>(),   slot<Slot::SubpixelSample16>(),    slot<Slot::AreaSample16>(),
            slot<Slot::SubpixelNoClip16>(), slot<Slot::SubpixelTranslate16>(), slot<Slot::SubpixelSpan16>()};
}
template <> QX_SamplerSet<QX_PixelFloat> bilinear_set() {
    return {&QX_SubpixelSpanSampleAllInBilinearFloat,       &QX_SubpixelBilinearFloat,
            &QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>,     &QX_SubpixelNoClipBilinearFloat,
            &QX_SubpixelSampleTranslateNoClipBilinearFloat, &QX_SubpixelSpanSampleBilinearFloat};
}

template <> QX_SamplerSet<QX_Pixel8> bicubic_set() {
    return {&QX_SubpixelSpanSampleAllInBicubic8,       &QX_SubpixelBicubic8,
            &QX_AreaSample_CPlusPlus<QX_Pixel8, 2>,    &QX_SubpixelNoClipBicubic8,
            &QX_SubpixelSampleTranslateNoClipBicubic8, &QX_SubpixelSpanSampleBicubic8};
}
template <> QX_SamplerSet<QX_Pixel16> bicubic_set() {
    return {&QX_SubpixelSpanSampleAllInBicubic16,       &QX_SubpixelBicubic16,
            &QX_AreaSample_CPlusPlus<QX_Pixel16, 2>,    &QX_SubpixelNoClipBicubic16,
            &QX_SubpixelSampleTranslateNoClipBicubic16, &QX_SubpixelSpanSampleBicubic16};
}
template <> QX_SamplerSet<QX_PixelFloat> bicubic_set() {
    return {&QX_SubpixelSpanSampleAllInBicubicFloat,       &QX_SubpixelBicubicFloat,
            &QX_AreaSample_CPlusPlus<QX_PixelFloat, 2>,    &QX_SubpixelNoClipBicubicFloat,
            &QX_SubpixelSampleTranslateNoClipBicubicFloat, &QX_SubpixelSpanSampleBicubicFloat};
}

}  // namespace

template <class Pixel> QX_SamplerSet<Pixel> QXp_GetSamplerSet(int quality) {
    return quality == 2 || quality == 3 ? bicubic_set<Pixel>() : bilinear_set<Pixel>();
}
template QX_SamplerSet<QX_Pixel8> QXp_GetSamplerSet<QX_Pixel8>(int quality);
template QX_SamplerSet<QX_Pixel16> QXp_GetSamplerSet<QX_Pixel16>(int quality);
template QX_SamplerSet<QX_PixelFloat> QXp_GetSamplerSet<QX_PixelFloat>(int quality);

int QX_GetSampleQualityPixelSupport(int quality) {
    switch (quality) {
        case 1:
            return 1;
        case 2:
        case 3:
            return 2;
        default:
            return 0;
    }
}
