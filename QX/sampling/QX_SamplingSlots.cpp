// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_SamplingSlots.h"

#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_AreaRuns.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_BicubicForms.h"
#include "QX/sampling/QX_Runs.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {

void fill_samplers8(bool vector, bool faster) {
    set_slot<Slot::NNSample>(&QX_NNSample);
    set_slot<Slot::SubpixelSample>(&QX_SubpixelSample_Straight);
    set_slot<Slot::SubpixelSamplePremul>(&QX_SubpixelSample_Premul);
    set_slot<Slot::AreaSample>(vector ? &sampling::area_template8 : &sampling::area_plain8);
    set_slot<Slot::AreaSamplePremul>(&QX_AreaSample_Premul);
    set_slot<Slot::SampleWeight>(&QX_SubpixelSampleComputeWeight);
    set_slot<Slot::SubpixelTranslate>(&QX_SubpixelSampleTranslateNoClip_Straight);
    set_slot<Slot::SubpixelPlus>(&QX_SubpixelSamplePlus_Straight);
    set_slot<Slot::SubpixelNoClip>(vector ? &sampling::noclip_two_stage : &sampling::noclip_plain);
    if (faster) {
        set_slot<Slot::AreaSample>(&avx2::area_template8);
        set_slot<Slot::SubpixelNoClip>(&avx2::noclip_two_stage);
    }
    set_slot<Slot::SubpixelNoClip4>(&QX_SubpixelSampleNoClip_Straight_4);
    set_slot<Slot::SubpixelTranslate4>(&QX_SubpixelSampleTranslateNoClip_Straight_4);
    set_slot<Slot::SubpixelSpan>(&QX_SubpixelSpanSampleTranslateNoClip_Straight);
}

void fill_samplers16(bool vector) {
    set_slot<Slot::NNSample16>(&QX_NNSample16);
    set_slot<Slot::SubpixelSample16>(&QX_SubpixelSample_Straight16);
    set_slot<Slot::AreaSample16>(vector ? &sampling::area_template16 : &sampling::area_plain16);
    set_slot<Slot::SubpixelTranslate16>(&QX_SubpixelSampleTranslateNoClip_Straight16);
    set_slot<Slot::SubpixelPlus16>(&QX_SubpixelSamplePlus_Straight16);
    set_slot<Slot::SubpixelNoClip16>(&QX_SubpixelSampleNoClip_Straight16);
    set_slot<Slot::SubpixelSpan16>(&QX_SubpixelSpanSampleTranslateNoClip_Straight16);
}

}  // namespace

void fill_sampling_slots(bool vector, bool faster) {
    fill_samplers8(vector, faster);
    fill_samplers16(vector);
    choose_run_forms(faster);
    choose_area_runs(faster);
    sampling::cubic8 = faster ? &avx2::cubic8 : &sampling::cubic8_plain;
}

}  // namespace qx
