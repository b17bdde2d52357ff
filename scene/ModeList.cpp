// SPDX-License-Identifier: Apache-2.0
// What people are told of each mode; the arithmetic itself stands in QX/compositing.
#include <algorithm>
#include <cmath>

#include "QX/compositing/QX_CompositeMode.h"
#include "scene/Modes.h"

namespace qx::scene {
namespace {

using std::abs, std::max, std::min, std::sqrt;

double clamp(double value) { return std::clamp(value, 0.0, 1.0); }

/// A mode's number and name.
#define QX_MODE(name) xfer_##name, #name
/// One expression as the text that people read and as what tests compute, so that neither is wrong alone.
#define QX_BLEND(expression) \
#expression, [](double s, double d) { return static_cast<void>(s + d), static_cast<double>(expression); }

std::vector<Mode> modes_in_number_order() {
    using enum ModeKind;
    return {
        {QX_MODE(replace),
         placing,
         {},
         "the layer in place of what is below, with its alpha times opacity",
         QX_BLEND(s)},
        {QX_MODE(mask_crossfade),
         placing,
         {},
         "from what is below to the layer by a mask, which it needs",
         QX_BLEND(s)},
        {QX_MODE(copy),
         placing,
         {"source", "src"},
         "the layer in place of what is below, with its alpha times opacity",
         QX_BLEND(s)},
        {QX_MODE(behind),
         placing,
         {"destination-over", "dst-over", "under"},
         "the layer below, where that is not opaque",
         QX_BLEND(d)},
        {QX_MODE(over), placing, {"normal", "source-over", "src-over"}, "the layer over what is below", QX_BLEND(s)},
        {QX_MODE(dissolve), placing, {}, "whole pixels of the layer, drawn by chance: its alpha tells how many"},
        {QX_MODE(add),
         channel,
         {"plus", "addition", "lighter"},
         "light is added, the layer's as far as it covers",
         QX_BLEND(min(s + d, 1.0))},
        {QX_MODE(multiply), channel, {}, "darker: as one transparency on the other", QX_BLEND(s * d)},
        {QX_MODE(screen), channel, {}, "brighter: as two projectors on one screen", QX_BLEND(1 - (1 - s) * (1 - d))},
        {QX_MODE(overlay),
         channel,
         {},
         "multiply where the background is dark, screen where it is bright",
         QX_BLEND(d < 0.5 ? 2 * s * d : 1 - 2 * (1 - s) * (1 - d))},
        {QX_MODE(soft_light),
         channel,
         {},
         "dodge or burn, softly, by the layer",
         QX_BLEND(s < 0.5 ? d - (1 - 2 * s) * d * (1 - d)
                          : d + (2 * s - 1) * ((d < 0.25 ? ((16 * d - 12) * d + 4) * d : sqrt(d)) - d))},
        {QX_MODE(hard_light),
         channel,
         {},
         "multiply where the layer is dark, screen where it is bright",
         QX_BLEND(s < 0.5 ? 2 * s * d : 1 - 2 * (1 - s) * (1 - d))},
        {QX_MODE(darken), channel, {"darken-only", "min"}, "the smaller value of each colour", QX_BLEND(min(s, d))},
        {QX_MODE(lighten), channel, {"lighten-only", "max"}, "the larger value of each colour", QX_BLEND(max(s, d))},
        {QX_MODE(difference_premul),
         channel,
         {},
         "the difference, of colours multiplied by their alpha",
         QX_BLEND(abs(s - d))},
        {QX_MODE(hue), colour, {}, "the layer's hue with the background's saturation and luma"},
        {QX_MODE(saturation), colour, {}, "the layer's saturation with the background's hue and luma"},
        {QX_MODE(colour), colour, {"color", "colorize"}, "the layer's hue and saturation with the background's luma"},
        {QX_MODE(luminosity), colour, {"luminance"}, "the layer's luma with the background's hue and saturation"},
        {QX_MODE(alpha_multiply),
         alpha,
         {"destination-in", "dst-in"},
         "what is below, as far as the layer covers it",
         QX_BLEND(d)},
        {QX_MODE(alpha_multiply_luma), alpha, {}, "what is below, as far as the layer is bright"},
        {QX_MODE(alpha_multiply_inverse),
         alpha,
         {"destination-out", "dst-out", "erase"},
         "what is below, as far as the layer does not cover it"},
        {QX_MODE(alpha_multiply_inverse_luma), alpha, {}, "what is below, as far as the layer is dark"},
        {QX_MODE(premul_over),
         placing,
         {"premultiplied-over"},
         "over, of a layer whose colours are multiplied by its alpha already",
         QX_BLEND(s)},
        {QX_MODE(alpha_add),
         placing,
         {},
         "alphas are added: edges that were cut apart close without a seam",
         QX_BLEND(s)},
        {QX_MODE(dodge_premul),
         channel,
         {},
         "dodge, of colours multiplied by their alpha",
         QX_BLEND(d >= 1 - s ? 1 : d / (1 - s))},
        {QX_MODE(burn_premul),
         channel,
         {},
         "burn, of colours multiplied by their alpha",
         QX_BLEND(1 - d >= s ? 0 : 1 - (1 - d) / s)},
        {QX_MODE(exclusion), channel, {}, "difference, softer: greys become grey", QX_BLEND(s + d - 2 * s * d)},
        {QX_MODE(difference), channel, {}, "how far the values lie apart", QX_BLEND(abs(s - d))},
        {QX_MODE(dodge),
         channel,
         {"color-dodge"},
         "the background brightened by the layer; black stays",
         QX_BLEND(d == 0       ? 0
                  : d >= 1 - s ? 1
                               : d / (1 - s))},
        {QX_MODE(burn),
         channel,
         {"color-burn"},
         "the background darkened by the layer; white stays",
         QX_BLEND(d == 1       ? 1
                  : 1 - d >= s ? 0
                               : 1 - (1 - d) / s)},
        {QX_MODE(linear_dodge), channel, {}, "the sum, weighed by alpha as over is", QX_BLEND(min(s + d, 1.0))},
        {QX_MODE(linear_burn), channel, {}, "the sum less full scale", QX_BLEND(max(s + d - 1, 0.0))},
        {QX_MODE(linear_light),
         channel,
         {},
         "linear burn where the layer is dark, linear dodge where it is bright",
         QX_BLEND(clamp(d + 2 * s - 1))},
        {QX_MODE(vivid_light),
         channel,
         {},
         "burn where the layer is dark, dodge where it is bright",
         QX_BLEND(s == 0   ? 0
                  : s == 1 ? 1
                           : clamp(s < 0.5 ? 1 - (1 - d) / (2 * s) : d / (2 - 2 * s)))},
        {QX_MODE(pin_light),
         channel,
         {},
         "darken where the layer is dark, lighten where it is bright",
         QX_BLEND(s < 0.5 ? min(2 * s, d) : max(2 * s - 1, d))},
        {QX_MODE(hard_mix),
         channel,
         {},
         "each colour full or none: whether the sum is above full scale",
         QX_BLEND(s + d > 1 ? 1 : 0)},
        {QX_MODE(lighter_colour), colour, {"lighter-color"}, "the pixel of the larger luma"},
        {QX_MODE(darker_colour), colour, {"darker-color"}, "the pixel of the smaller luma"},
        {QX_MODE(subtract), channel, {"minus"}, "the background less the layer", QX_BLEND(max(d - s, 0.0))},
        {QX_MODE(divide),
         channel,
         {},
         "the background divided by the layer; black stays",
         QX_BLEND(d == 0   ? 0
                  : d >= s ? 1
                           : d / s)},
        {QX_MODE(threshold_blue), colour, {}, "blue of the layer and a full alpha, where it covers half or more"},
        {QX_MODE(marker_guard), placing, {}, "the layer's whole pixels, but onto four marker colours", QX_BLEND(s)},
    };
}

#undef QX_BLEND
#undef QX_MODE

}  // namespace

const std::vector<Mode>& all_modes() {
    static const std::vector<Mode> modes = modes_in_number_order();
    return modes;
}

}  // namespace qx::scene
