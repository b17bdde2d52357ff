// SPDX-License-Identifier: Apache-2.0
// Worlds that plug-ins own through a plain record.
#include <memory>

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_EffectWorld.h"
#include "QX/world/QX_World.h"
#include "platform/FK_Frames.h"

namespace {

/// Kept: without a text to show, a record of someone else's is let through.
bool refused(bool ours) {
    if (ours || qx::text_of(qx::Text::not_your_world) == nullptr) return false;
    qx::report_text(qx::Place::dispose_effect_world, qx::Text::not_your_world);
    return true;
}

}  // namespace

int QX_NewEffectWorld(int width, int height, int depth, char reserved, char clear, QX_LayerDef* out) {
    if (out == nullptr) return qx::report_invalid_parameter(qx::Place::new_effect_world);
    if (reserved != 0) return kQX_UnknownSelector;
    return qx::guarded([&] {
        if (depth != static_cast<short>(depth)) throw int{kQX_FailedVerification};
        const int flags = (clear != 0 ? 1 : 0) | (depth == 16 ? 2 : 0);
        std::unique_ptr<QX_World> world(QX_World::New(width, height, static_cast<short>(depth), flags));
        world->FillOutEffectWorld(out);
        static_cast<void>(world.release());  // the record owns it now
        out->ownership_mark = kQX_OwnedMark;
    });
}

int QX_DisposeEffectWorld(QX_LayerDef* world) {
    if (world == nullptr) return qx::report_invalid_parameter(qx::Place::dispose_effect_world);
    const bool marked = world->ownership_mark == kQX_OwnedMark;
    if (qx::is_gpu_world(world)) {
        if (refused(marked)) return kQX_BadParameter;
        FK::DisposeVPixFromVideoFrame(world->platform_ref);
    } else {
        if (refused(marked && world->world != nullptr)) return kQX_BadParameter;
        delete world->world;
    }
    *world = QX_LayerDef{};
    return 0;
}
