// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_LinearBlendingTables.h"

/// The transfer modes once more, one pixel at a time and without regard to speed: integers are exact 64-bit numbers
/// with floor divisions, floats are single operations in their written order. Nothing here calls the library.
namespace qx::test::model {

enum class Pivot { none, black, white, grey };

/// The passes that a mode's row is made of.
struct Passes {
    Pivot pivot = Pivot::none;  ///< filters before and after
    bool behind_first = false;  ///< the row of xfer_behind comes before the mode's own
    bool keeps_alpha = false;   ///< with rgb_only the alpha from before all passes comes back
    bool merges_alpha = false;  ///< the alpha merge comes after the mode's row
};

constexpr Passes passes_of(int xfer) {
    switch (xfer) {
        case xfer_add:
        case xfer_screen:
        case xfer_difference_premul:
        case xfer_dodge_premul:
        case xfer_exclusion:
            return {Pivot::black, false, true, true};
        case xfer_multiply:
        case xfer_burn_premul:
            return {Pivot::white, false, true, true};
        case xfer_overlay:
        case xfer_hard_light:
            return {Pivot::grey, false, true, true};
        case xfer_hue:
        case xfer_saturation:
        case xfer_colour:
        case xfer_luminosity:
        case xfer_lighter_colour:
        case xfer_darker_colour:
            return {Pivot::none, true, true, false};
        case xfer_replace:
        case xfer_mask_crossfade:
        case xfer_copy:
        case xfer_behind:
        case xfer_dissolve:
        case xfer_alpha_multiply:
        case xfer_alpha_multiply_luma:
        case xfer_alpha_multiply_inverse:
        case xfer_alpha_multiply_inverse_luma:
        case xfer_threshold_blue:
        case xfer_marker_guard:
            return {};
        default:
            return {Pivot::none, false, true, false};
    }
}

/// Modes whose rows and functions leave a pixel alone when no source alpha is left. The others write always or have a
/// test of their own.
constexpr bool skips_uncovered(int xfer) {
    switch (xfer) {
        case xfer_replace:
        case xfer_mask_crossfade:
        case xfer_copy:
        case xfer_dissolve:
        case xfer_alpha_multiply:
        case xfer_alpha_multiply_luma:
        case xfer_premul_over:
        case xfer_threshold_blue:
        case xfer_marker_guard:
            return false;
        default:
            return true;
    }
}

/// A pixel of a transfer: everything that happens to it in the passes of its row.
template <class Pixel> struct RowCall {
    int xfer;
    QX_ChannelOf<Pixel> opacity;
    std::optional<QX_ChannelOf<Pixel>> mask;  ///< coverage
    bool rgb_only = false;
    const QX_LinearBlendingTables* tables = nullptr;
    std::uint32_t* seed = nullptr;  ///< of this pixel in, of the next one out; dissolve alone reads it
};
QX_Pixel8 row_pixel(const RowCall<QX_Pixel8>& call, const QX_Pixel8& src, const QX_Pixel8& dst);
QX_Pixel16 row_pixel(const RowCall<QX_Pixel16>& call, const QX_Pixel16& src, const QX_Pixel16& dst);
QX_PixelFloat row_pixel(const RowCall<QX_PixelFloat>& call, const QX_PixelFloat& src, const QX_PixelFloat& dst);

/// A function of one pixel, with none, one or two opacities.
template <class Pixel> struct PixelCall {
    int xfer;
    std::optional<QX_ChannelOf<Pixel>> opacity, opacity2;
    const QX_LinearBlendingTables* tables = nullptr;
};
QX_Pixel8 one_pixel(const PixelCall<QX_Pixel8>& call, const QX_Pixel8& src, const QX_Pixel8& dst);
QX_Pixel16 one_pixel(const PixelCall<QX_Pixel16>& call, const QX_Pixel16& src, const QX_Pixel16& dst);
QX_PixelFloat one_pixel(const PixelCall<QX_PixelFloat>& call, const QX_PixelFloat& src, const QX_PixelFloat& dst);

/// One filter of the rows: `forward` multiplies, the reverse divides.
QX_Pixel8 filtered(Pivot pivot, bool forward, const QX_Pixel8& pixel);
QX_Pixel16 filtered(Pivot pivot, bool forward, const QX_Pixel16& pixel);
QX_PixelFloat filtered(Pivot pivot, bool forward, const QX_PixelFloat& pixel);

/// The alpha merge. Without a mask its factor is skipped.
QX_Pixel8 merged(const QX_Pixel8& src, std::uint8_t opacity, std::optional<std::uint8_t> mask, QX_Pixel8 dst);
QX_Pixel16 merged(const QX_Pixel16& src, std::uint16_t opacity, std::optional<std::uint16_t> mask, QX_Pixel16 dst);
QX_PixelFloat merged(const QX_PixelFloat& src, float opacity, std::optional<float> mask, QX_PixelFloat dst);

/// The soft-light curves at x, from 0 to 1: what is added above the middle, and taken away below it.
double soft_up(double x);
double soft_down(double x);

/// The generator of dissolve: 15 random bits, of which it takes the low 8.
std::int32_t random_bits(std::uint32_t& seed);

}  // namespace qx::test::model
