// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"

/// The six samplers that the rows of a transform use, for one depth and one quality.
template <class Pixel> struct QX_EXPORT QX_SamplerSet {
    QX_PlusSampler<Pixel> plus;  ///< clipped; tells whether all taps are inside
    QX_PointSampler<Pixel> clipped;
    QX_PointSampler<Pixel> area;  ///< for radii above half a pixel
    QX_PointSampler<Pixel> unclipped;
    QX_TranslateSampler<Pixel> translate;  ///< unclipped, with weights given
    QX_SpanSampler<Pixel> span;            ///< an unclipped run along a row
};

/// Qualities 2 and 3 take the bicubic samplers, all others the bilinear ones. At 8 and 16 bits the bilinear ones are
/// those that stand in the table of slots now.
template <class Pixel> QX_EXPORT QX_SamplerSet<Pixel> QXp_GetSamplerSet(int quality);

extern template QX_SamplerSet<QX_Pixel8> QXp_GetSamplerSet<QX_Pixel8>(int quality);
extern template QX_SamplerSet<QX_Pixel16> QXp_GetSamplerSet<QX_Pixel16>(int quality);
extern template QX_SamplerSet<QX_PixelFloat> QXp_GetSamplerSet<QX_PixelFloat>(int quality);
