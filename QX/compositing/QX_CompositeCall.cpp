// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositeCall.h"

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"

namespace qx {

int check_composite(Place place, const CompositeCall& call, bool has_geometry, const char* depths_differ,
                    const char* mask_differs) {
    const QX_LayerDef* mask = call.mask != nullptr ? &call.mask->world : nullptr;
    if (is_gpu_world(call.src) || is_gpu_world(call.dst) || is_gpu_world(mask)) return report_gpu_world(place);
    const auto has_pixels = [](const QX_LayerDef* world) { return world != nullptr && world->data != nullptr; };
    if (!has_pixels(call.src) || !has_pixels(call.dst) || (mask != nullptr && !has_pixels(mask)) ||
        call.mode == nullptr || !has_geometry) {
        return report_bad_parameter(place);
    }
    if (call.mode->xfer == xfer_mask_crossfade && mask == nullptr) return report_bad_parameter(place);
    const int depth = QXp_WorldDepth(call.dst);
    if (QXp_WorldDepth(call.src) != depth) return report_failed_verification(place, depths_differ);
    if (mask != nullptr && QXp_WorldDepth(mask) != depth) return report_failed_verification(place, mask_differs);
    return kQX_NoError;
}

}  // namespace qx
