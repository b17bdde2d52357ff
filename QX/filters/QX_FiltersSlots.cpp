// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_FiltersSlots.h"

#include "QX/filters/QX_Convolve.h"
#include "QX/filters/QX_ConvolveKernels.h"
#include "QX/filters/QX_UnoScanKernels.h"
#include "QX/indep/QX_Slots.h"

void qx::fill_filters_slots(Level level) {
    choose_convolve_kernels(level);
    choose_uno_scan_kernels(level);
    set_slot<Slot::Convolve>(&QX_Convolve);
}
