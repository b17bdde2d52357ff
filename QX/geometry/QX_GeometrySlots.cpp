// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_GeometrySlots.h"

#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_TransformWorld.h"
#include "QX/indep/QX_Slots.h"

void qx::fill_geometry_slots() {
    set_slot<Slot::CopyBitsDraft>(&QX_CopyBits_Draft_Static);
    set_slot<Slot::CopyBitsHQ>(&QX_CopyBits_HQ_Straight_Static);
    set_slot<Slot::CopyBitsHQPremul>(&QX_CopyBits_HQ_Premul_Static);
    set_slot<Slot::TransformWorld>(&QX_TransformWorld_S);
    set_slot<Slot::TransformWorldPlus>(&QX_TransformWorldPlus);
}
