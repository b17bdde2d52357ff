// SPDX-License-Identifier: Apache-2.0
#include "QX/library/QX_FillSlots.h"

#include "QX/compositing/QX_CompositingSlots.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/sampling/QX_SamplingSlots.h"

void qx::fill_slots(bool vector, bool faster) {
    set_slot<Slot::Iterate>(&iterate_plain);
    set_slot<Slot::IterateOrigin>(&iterate_origin_plain);
    set_slot<Slot::IterateLUT>(&iterate_lut_plain);
    set_slot<Slot::IterateOriginNoClip>(&iterate_origin_no_clip_plain);
    set_slot<Slot::IterateGeneric>(&QX_IterateGeneric_Static);
    fill_sampling_slots(vector, faster);
    fill_compositing_slots(vector, faster);
}
