// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_PixelopsSlots.h"

#include "QX/indep/QX_Slots.h"
#include "QX/pixelops/QX_CopyKernels.h"
#include "QX/pixelops/QX_GuessKernels.h"
#include "QX/pixelops/QX_MatteKernels.h"
#include "QX/pixelops/QX_PastCaches.h"
#include "QX/pixelops/QX_Premul.h"

void qx::fill_pixelops_slots(Level level) {
    choose_copy_kernels(level);
    choose_guess_kernels(level);
    choose_matte_kernels(level);
    choose_past_caches_kernels(level);
    set_slot<Slot::PremulRect>(&QX_PremulRect_S);
}
