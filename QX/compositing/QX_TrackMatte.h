// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Pixel.h"

/// One row of coverage from a row of a mask, by the formulas of a transfer's mask.
/// @param mask_row    the mask's column 0
/// @param offset      the column of `out_row` where the mask begins; negative where it begins to the left
/// @param mask_width  pixels of the mask
/// @param kind        a QX_MaskKind, of which the low two bits count. Outside of the mask inverse kinds are full,
/// others
///                    are nothing. Callers need no row for kQX_MaskAlpha, whose pixels are coverage as they stand.
/// @param deep        not 0 for pixels of 16 bits, else of 8
/// @param out_row     `count` pixels, whose alphas are written
QX_EXPORT void QX_PrepTrackMatteUniv(std::int32_t count, const void* mask_row, std::int32_t offset,
                                     std::int32_t mask_width, std::uint32_t kind, int deep, void* out_row);

/// Moves the alphas of a row towards a value, as far as mask and opacity say. Colours stay.
/// @param mask  one channel for each pixel
template <class Pixel, class Channel>
QX_EXPORT void QX_BlendSingleChannel(std::int32_t count, Channel opacity, Channel value, const Channel* mask,
                                     Pixel* dst);

extern template void QX_BlendSingleChannel(std::int32_t, std::uint8_t, std::uint8_t, const std::uint8_t*, QX_Pixel8*);
extern template void QX_BlendSingleChannel(std::int32_t, std::uint16_t, std::uint16_t, const std::uint16_t*,
                                           QX_Pixel16*);
extern template void QX_BlendSingleChannel(std::int32_t, float, float, const float*, QX_PixelFloat*);
