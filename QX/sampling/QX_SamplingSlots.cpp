// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_SamplingSlots.h"

#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampForms.h"
#include "QX/sampling/QX_SummedAreaKernels.h"

namespace qx {

namespace {

void fill_samplers8() {
    set_slot<Slot::NNSample>(&QX_NNSample);
    set_slot<Slot::SubpixelSample>(&QX_SubpixelSample_Straight);
    set_slot<Slot::SubpixelSamplePremul>(&QX_SubpixelSample_Premul);
    set_slot<Slot::AreaSample>(samp_forms->area8);
    set_slot<Slot::AreaSamplePremul>(&QX_AreaSample_Premul);
    set_slot<Slot::SampleWeight>(&QX_SubpixelSampleComputeWeight);
    set_slot<Slot::SubpixelTranslate>(&QX_SubpixelSampleTranslateNoClip_Straight);
    set_slot<Slot::SubpixelPlus>(&QX_SubpixelSamplePlus_Straight);
    set_slot<Slot::SubpixelNoClip>(samp_forms->unclipped8);
    set_slot<Slot::SubpixelNoClip4>(&QX_SubpixelSampleNoClip_Straight_4);
    set_slot<Slot::SubpixelTranslate4>(&QX_SubpixelSampleTranslateNoClip_Straight_4);
    set_slot<Slot::SubpixelSpan>(&QX_SubpixelSpanSampleTranslateNoClip_Straight);
}

void fill_samplers16() {
    set_slot<Slot::NNSample16>(&QX_NNSample16);
    set_slot<Slot::SubpixelSample16>(&QX_SubpixelSample_Straight16);
    set_slot<Slot::AreaSample16>(samp_forms->area16);
    set_slot<Slot::SubpixelTranslate16>(&QX_SubpixelSampleTranslateNoClip_Straight16);
    set_slot<Slot::SubpixelPlus16>(&QX_SubpixelSamplePlus_Straight16);
    set_slot<Slot::SubpixelNoClip16>(&QX_SubpixelSampleNoClip_Straight16);
    set_slot<Slot::SubpixelSpan16>(&QX_SubpixelSpanSampleTranslateNoClip_Straight16);
}

}  // namespace

void fill_sampling_slots(const Processor& processor) {
    choose_samp_forms(processor);
    choose_summed_area_kernels(processor.level());
    fill_samplers8();
    fill_samplers16();
}

}  // namespace qx
