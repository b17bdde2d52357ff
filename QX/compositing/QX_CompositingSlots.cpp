// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositingSlots.h"

#include "QX/compositing/QX_BlendKernels.h"
#include "QX/compositing/QX_CompositeRect.h"
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

template <class Pixel> void fill_filters(const FilterSet<Pixel>& set) {
    for (int i = 0; i < kFilters; ++i) put(nth<SlotsOf<Pixel>.filters, kFilters>(i), set.filter[i]);
    put(SlotsOf<Pixel>.merge, set.merge);
}

}  // namespace

void fill_compositing_slots(Level level) {
    set_slot<Slot::CompositeRectDraft>(&QX_CompositeRectDraft_Straight);
    set_slot<Slot::CompositeRectDraftPremul>(&QX_CompositeRectDraft_Premul);
    set_slot<Slot::CompositeRectBest>(&QX_CompositeRectBest_Straight);
    set_slot<Slot::CompositeRectBestPremul>(&QX_CompositeRectBest_Premul);
    set_slot<Slot::TransferRect>(&QX_TransferRect_S);
    set_slot<Slot::TransferRectPlus>(&QX_TransferRectPlus);
    choose_compositing_kernels(level);
    choose_blend_kernels(level);
    for_each_pixel_type([=]<class Pixel>() {
        fill_lookups<Pixel>();
        fill_filters(compositing_kernels_of(level).filters.of<Pixel>());
        set_slot<SlotsOf<Pixel>.driver>(&drive_row<Pixel>);
    });
}

}  // namespace qx
