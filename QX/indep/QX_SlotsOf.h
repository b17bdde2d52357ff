// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>
#include <utility>

#include "QX/indep/QX_Slots.h"

/// The slots of one pixel type, for families that have a routine a depth.
namespace qx {

struct PixelSlots {
    Slot filters;  ///< the first of six: black, white, grey, each forward and reverse
    Slot merge;
    Slot rows;  ///< the first of four lookups: two on for masked rows, one on for linear light
    Slot driver;
};

template <class Pixel> inline constexpr PixelSlots SlotsOf{};
template <>
inline constexpr PixelSlots SlotsOf<QX_Pixel8>{
    .filters = Slot::BlackForward8, .merge = Slot::AlphaMerge8, .rows = Slot::Rows8, .driver = Slot::RowDriver8};
template <>
inline constexpr PixelSlots SlotsOf<QX_Pixel16>{
    .filters = Slot::BlackForward16, .merge = Slot::AlphaMerge16, .rows = Slot::Rows16, .driver = Slot::RowDriver16};
template <>
inline constexpr PixelSlots SlotsOf<QX_PixelFloat>{.filters = Slot::BlackForwardFloat,
                                                   .merge = Slot::AlphaMergeFloat,
                                                   .rows = Slot::RowsFloat,
                                                   .driver = Slot::RowDriverFloat};

inline constexpr int kFilters = 6, kRowLookups = 4;
/// Place of a lookup behind the first.
constexpr int lookup_place(bool masked, bool linear) { return (masked ? 2 : 0) + (linear ? 1 : 0); }
/// Place of a filter behind the first: pair 0 is black, 1 white, 2 grey.
constexpr int filter_place(int pair, bool forward) { return 2 * pair + (forward ? 0 : 1); }

/// The n-th of `Count` slots in a row, which hold routines of one type.
template <Slot First, int Count> Slot nth(int n) {
    constexpr bool one_type = []<int... I>(std::integer_sequence<int, I...>) {
        return (std::is_same_v<typename SlotType<First>::Fn, typename SlotType<First + I>::Fn> && ...);
    }
    (std::make_integer_sequence<int, Count>{});
    static_assert(one_type);
    return First + n;
}

template <class Pixel> FilterFn<Pixel>* filter_slot(int place) {
    return routine_at<FilterFn<Pixel>>(nth<SlotsOf<Pixel>.filters, kFilters>(place));
}
template <class Pixel> RowLookupFn<Pixel>* lookup_slot(bool masked, bool linear) {
    return routine_at<RowLookupFn<Pixel>>(nth<SlotsOf<Pixel>.rows, kRowLookups>(lookup_place(masked, linear)));
}

}  // namespace qx
