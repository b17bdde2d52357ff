// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tuple>

#include "QX/compositing/QX_ModesFiltered.h"
#include "QX/compositing/QX_ModesLayer.h"
#include "QX/compositing/QX_ModesSeparable.h"
#include "QX/compositing/QX_ModesWhole.h"

/// The one list of modes, in number order. Rows, masked rows, rows in linear light, functions of one pixel, tables
/// and descriptors are all made from it.
namespace qx::modes {

/// The place of number -1.
struct None {
    static constexpr int number = -1;
};

template <class... Ms> struct List { template <int Place> using At = std::tuple_element_t<Place, std::tuple<Ms...>>; };

using All = List<Replace, MaskCrossfade, None, Copy, Behind, Over, Dissolve, Add, Multiply, Screen, Overlay, SoftLight,
                 HardLight, Darken, Lighten, DifferencePremul, Hue, Saturation, Colour, Luminosity, AlphaMultiply,
                 AlphaMultiplyLuma, AlphaMultiplyInverse, AlphaMultiplyInverseLuma, PremulOver, AlphaAdd, DodgePremul,
                 BurnPremul, Exclusion, Difference, Dodge, Burn, LinearDodge, LinearBurn, LinearLight, VividLight,
                 PinLight, HardMix, LighterColour, DarkerColour, Subtract, Divide, ThresholdBlue, MarkerGuard>;

inline constexpr int kPlaces = kQX_LastMode - kQX_FirstMode + 1;

/// Place of a mode's number in the list.
constexpr int place_of(int xfer) { return xfer - kQX_FirstMode; }

template <class... Ms> constexpr bool in_number_order(List<Ms...>) {
    int expected = kQX_FirstMode;
    return ((Ms::number == expected++) && ...) && expected == kQX_LastMode + 1;
}
static_assert(in_number_order(All{}));

template <int Number> using Numbered = All::At<place_of(Number)>;

template <class M> inline constexpr bool is_mode = M::number != -1;
template <class M>
inline constexpr bool has_row_of_its_own = std::is_same_v<M, MaskCrossfade> || std::is_same_v<M, Dissolve>;

}  // namespace qx::modes
