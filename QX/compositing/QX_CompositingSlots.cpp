// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositingSlots.h"

#include "QX/compositing/QX_RowDriver.h"
#include "QX/compositing/QX_RowLookup.h"
#include "QX/compositing/QX_TransferRect.h"
#include "QX/indep/QX_SlotsOf.h"

namespace qx {

namespace {

template <class Fn> void put(Slot slot, Fn* routine) { slot_address(slot) = reinterpret_cast<void*>(routine); }

template <class Pixel> void fill_lookups() {
    for (int k = 0; k < kRowLookups; ++k) {
        put(nth<SlotsOf<Pixel>.rows, kRowLookups>(k), row_lookups.of<Pixel>().at[k]);
    }
}

/// A depth's filters and merge; what the level lacks stays as it was.
template <class Pixel> void fill_filters(const FilterSet<Pixel>& set) {
    for (int i = 0; i < kFilters; ++i) {
        if (set.filter[i] != nullptr) put(nth<SlotsOf<Pixel>.filters, kFilters>(i), set.filter[i]);
    }
    if (set.merge != nullptr) put(SlotsOf<Pixel>.merge, set.merge);
}

void fill_level(const Level& level) {
    choose_row_levels(&level);
    for_each_pixel_type([&]<class Pixel>() { fill_filters(level.filters.of<Pixel>()); });
}

}  // namespace

void fill_compositing_slots(bool vector, bool faster) {
    set_slot<Slot::TransferRect>(&QX_TransferRect_S);
    set_slot<Slot::TransferRectPlus>(&QX_TransferRectPlus);
    for_each_pixel_type([]<class Pixel>() {
        fill_lookups<Pixel>();
        set_slot<SlotsOf<Pixel>.driver>(&drive_row<Pixel>);
    });
    fill_level(plain::level);
    if (vector) fill_level(sse4::level);
    if (faster) fill_level(avx2::level);
}

}  // namespace qx
