// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositeCall.h"

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"

namespace qx {
namespace {

bool is_there(const void* argument, const char* name) {
    if (argument == nullptr) tell_detail("%s is missing", name);
    return argument != nullptr;
}

bool has_pixels(const QX_LayerDef* world, const char* name) {
    if (!is_there(world, name)) return false;
    if (world->data == nullptr) tell_detail("%s has no pixels", name);
    return world->data != nullptr;
}

}  // namespace

int check_composite(Place place, const CompositeCall& call, bool has_geometry, const char* depths_differ,
                    const char* mask_differs) {
    const QX_LayerDef* mask = call.mask != nullptr ? &call.mask->world : nullptr;
    if (is_gpu_world(call.src) || is_gpu_world(call.dst) || is_gpu_world(mask)) return report_gpu_world(place);
    if (!has_pixels(call.src, "source") || !has_pixels(call.dst, "destination") ||
        (mask != nullptr && !has_pixels(mask, "mask")) || !is_there(call.mode, "mode") ||
        !is_there(has_geometry ? &call : nullptr, "rectangle or matrix") ||
        (call.mode->xfer == xfer_mask_crossfade && !is_there(mask, "mask"))) {
        return report_bad_parameter(place);
    }
    const int depth = QXp_WorldDepth(call.dst);
    if (const int code = must_have_depth(depth, QXp_WorldDepth(call.src), "source", place, depths_differ)) return code;
    if (mask != nullptr) return must_have_depth(depth, QXp_WorldDepth(mask), "mask", place, mask_differs);
    return kQX_NoError;
}

}  // namespace qx
