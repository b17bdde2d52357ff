// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_PixelopsSlots.h"

#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_Premul.h"

void qx::fill_pixelops_slots() { set_slot<Slot::PremulRect>(&QX_PremulRect_S); }
