// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_PixelData.h"

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"
#include "platform/TK_Report.h"

namespace {

void report(const char* words) { TKp_ReportErrString(qx::site(qx::Place::pixel_data), qx::kReportSeverity, words); }

int pixel_data(QX_LayerDef* world, void* pixels, int depth, const char* refusal, void** out) {
    if (qx::is_gpu_world(world)) return qx::report_gpu_world(qx::Place::pixel_data);
    if (out == nullptr) return qx::report_invalid_parameter(qx::Place::pixel_data);
    *out = nullptr;
    if (world == nullptr) {
        report(refusal);
        return kQX_BadParameter;
    }
    if (QXp_WorldDepth(world) == depth) *out = pixels != nullptr ? pixels : world->data;
    return 0;
}

}  // namespace

int QX_GetPixelData8(QX_LayerDef* world, void* pixels, void** out) {
    return pixel_data(world, pixels, 8, "bad parameter passed to QX_GetPixelData8", out);
}

int QX_GetPixelData16(QX_LayerDef* world, void* pixels, void** out) {
    // Kept: the report names the routine of 8 bits.
    return pixel_data(world, pixels, 16, "bad parameter passed to QX_GetPixelData8", out);
}

int QX_GetPixelDataFloat(QX_LayerDef* world, void* pixels, void** out) {
    return pixel_data(world, pixels, 32, "bad parameter passed to QX_GetPixelDataFloat", out);
}
