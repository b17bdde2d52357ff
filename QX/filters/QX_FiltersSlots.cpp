// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_FiltersSlots.h"

#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BlurKernels.h"
#include "QX/filters/QX_Convolve.h"
#include "QX/filters/QX_ConvolveKernels.h"
#include "QX/filters/QX_UnoScan.h"
#include "QX/filters/QX_UnoScanKernels.h"
#include "QX/indep/QX_Slots.h"

void qx::fill_filters_slots(Level level) {
    choose_blur_kernels(level);
    choose_convolve_kernels(level);
    choose_uno_scan_kernels(level);
    set_slot<Slot::FastBlur>(&QX_FastBlur_Straight);
    set_slot<Slot::FastBlurPremul>(&QX_FastBlur_Premul);
    set_slot<Slot::Convolve>(&QX_Convolve);
    set_slot<Slot::BoxBlurUnoScan>(&QX_BoxBlurUnoScan);
    set_slot<Slot::BoxBlurDeepUnoScan>(&QX_BoxBlurDeepUnoScan);
    set_slot<Slot::GBlurUnoScan>(&QX_GBlurUnoScan);
    set_slot<Slot::GBlurDeepUnoScan>(&QX_GBlurDeepUnoScan);
}
