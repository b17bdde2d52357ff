// SPDX-License-Identifier: Apache-2.0
#include "QX/filters/QX_Blur.h"

#include "QX/filters/QX_BlurRun.h"
#include "QX/indep/QX_Report.h"

namespace qx {

namespace {
const BlurKernels* kernels = &plain::blur_kernels;
}

void choose_blur_kernels(Level level) { kernels = &blur_kernels_of(level); }

const BlurKernels* blur_groups() { return kernels->has_groups ? kernels : nullptr; }

void check_blur(const QX_World* src, const QX_World* dst) {
    if (is_gpu_world(src) || is_gpu_world(dst)) throw report_gpu_world(Place::blur);
    const auto has_pixels = [](const QX_World* world) { return world != nullptr && world->data != nullptr; };
    if (!has_pixels(src) || !has_pixels(dst)) throw report_bad_parameter(Place::blur);
    if (src->Depth() != dst->Depth()) throw report_failed_verification(Place::blur, "");
}

}  // namespace qx

int QX_FastBlur_Straight(...) { return kQX_UnimplementedMode; }
int QX_FastBlur_Premul(...) { return kQX_UnimplementedMode; }
