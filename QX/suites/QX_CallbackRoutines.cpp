// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_CallbackRoutines.h"

#include <optional>

#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/world/QX_EffectWorld.h"

namespace qx {

namespace {

/// The 8-bit opacity counts from one step up; a record without it has the 16-bit one.
float opacity_of(const QX_CompositeMode& mode) {
    const double coarse = mode.opacity / 255.0;
    return coarse >= kOpacityStep ? static_cast<float>(coarse) : static_cast<float>(mode.opacity16) * kRow16ToFloat;
}

/// A missing record stays missing: the routine behind the slot tells that.
std::optional<QX_CompositeModePlus> unpack(const QX_CompositeMode* mode) {
    if (mode == nullptr) return std::nullopt;
    return QX_CompositeModePlus(mode->xfer, opacity_of(*mode), nullptr, mode->rgb_only != 0, mode->rand_seed);
}

}  // namespace

int report_null_world() {
    return report_failed_verification(Place::callback_routine, "Invalid parameter, effect world cannot be null.");
}

int batch_sample_stub(...) {
    return report_failed_verification(Place::callback_routine,
                                      "Batch Sampling has been deprecated; please update your plug-in calling code");
}

int new_world_callback(void*, int width, int height, int flags, QX_LayerDef* world) {
    if (world == nullptr) return report_null_world();
    const int depth = (flags & 2) != 0 ? 16 : 8;
    return guarded([&] { throw_if(QX_NewEffectWorld(width, height, depth, 0, static_cast<char>(flags & 1), world)); });
}

int dispose_world_callback(void*, QX_LayerDef* world) {
    if (world == nullptr) return report_null_world();
    if (world->ownership_mark != kQX_OwnedMark) {
        return report_failed_verification(Place::callback_routine,
                                          "effects modules should only dispose worlds they have allocated.");
    }
    return guarded([&] { throw_if(QX_DisposeEffectWorld(world)); });
}

int transfer_rect_callback(void* ref, int quality, int flags, int field, const M_LRect* src_rect, QX_LayerDef* src,
                           const QX_CompositeMode* mode, const QX_MaskWorld* mask, int dest_x, int dest_y,
                           QX_LayerDef* dst) {
    if (is_gpu_world(src) || is_gpu_world(dst)) return report_gpu_world(Place::callback_routine);
    return guarded([&] {
        const auto plus = unpack(mode);
        return slot<Slot::TransferRect>()(static_cast<const QX_ProgressInfo*>(ref), quality, flags, field, src_rect,
                                          src, plus ? &*plus : nullptr, nullptr, mask, dest_x, dest_y, dst);
    });
}

int transform_world_callback(void* ref, int quality, int flags, int field, QX_LayerDef* src,
                             const QX_CompositeMode* mode, const QX_MaskWorld* mask, const M_Matrix3* matrices,
                             int num_matrices, bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst) {
    if (is_gpu_world(src) || is_gpu_world(dst)) return report_gpu_world(Place::callback_routine);
    return guarded([&] {
        const auto plus = unpack(mode);
        return slot<Slot::TransformWorld>()(static_cast<const QX_ProgressInfo*>(ref), quality, flags, field, src,
                                            plus ? &*plus : nullptr, nullptr, mask, matrices, num_matrices,
                                            src2dst_matrix, dest_rect, dst);
    });
}

int platform_data_callback(void*, int selector, void** out) {
    if (selector == 0 && out != nullptr) *out = nullptr;
    report_bad_parameter(Place::callback_routine);
    return kQX_BadParameter;
}

}  // namespace qx
