// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_IterateSlots.h"

#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Iterate.h"

void qx::fill_iterate_slots() {
    set_slot<Slot::Iterate>(&iterate_plain);
    set_slot<Slot::IterateOrigin>(&iterate_origin_plain);
    set_slot<Slot::IterateLUT>(&iterate_lut_plain);
    set_slot<Slot::IterateOriginNoClip>(&iterate_origin_no_clip_plain);
    set_slot<Slot::IterateGeneric>(&QX_IterateGeneric_Static);
}
