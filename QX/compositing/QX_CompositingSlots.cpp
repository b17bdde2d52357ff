// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositingSlots.h"

#include "QX/compositing/QX_RowDriver.h"
#include "QX/compositing/QX_RowLookup.h"
#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_Premul.h"

namespace qx {

namespace {

template <class Fn> void set_slot_at(int number, Fn* routine) {
    if (routine != nullptr) QXp_G_OverFuncs[number] = reinterpret_cast<void*>(routine);
}

/// A depth's filters and merge; what the level lacks stays as it was.
template <class Pixel> void fill_filters(int first, int merge, const FilterSet<Pixel>& set) {
    for (int i = 0; i < 6; ++i) set_slot_at(first + i, set.filter[i]);
    set_slot_at(merge, set.merge);
}

template <class Pixel> void fill_lookups(int first, const RowLookups<Pixel>& lookups) {
    for (int k = 0; k < 4; ++k) set_slot_at(first + k, lookups.at[k]);
}

void fill_level(const Level& level) {
    choose_row_levels(&level);
    fill_filters(static_cast<int>(Slot::BlackForward8), static_cast<int>(Slot::AlphaMerge8), level.filters8);
    fill_filters(static_cast<int>(Slot::BlackForward16), static_cast<int>(Slot::AlphaMerge16), level.filters16);
    fill_filters(static_cast<int>(Slot::BlackForwardFloat), static_cast<int>(Slot::AlphaMergeFloat),
                 level.filters_float);
}

}  // namespace

void fill_compositing_slots(bool vector, bool faster) {
    set_slot<Slot::TransferRect>(&QX_TransferRect_S);
    set_slot<Slot::TransferRectPlus>(&QX_TransferRectPlus);
    set_slot<Slot::PremulRect>(&QX_PremulRect_S);
    fill_lookups(static_cast<int>(Slot::Rows8), row_lookups8);
    fill_lookups(static_cast<int>(Slot::Rows16), row_lookups16);
    fill_lookups(static_cast<int>(Slot::RowsFloat), row_lookups_float);
    set_slot<Slot::RowDriver8>(&drive_row<QX_Pixel8>);
    set_slot<Slot::RowDriver16>(&drive_row<QX_Pixel16>);
    set_slot<Slot::RowDriverFloat>(&drive_row<QX_PixelFloat>);

    fill_level(plain::level);
    if (vector) fill_level(sse4::level);
    if (faster) fill_level(avx2::level);
}

}  // namespace qx
