// SPDX-License-Identifier: Apache-2.0
// Premultiply on all processors: the saved routine runs once a band.
#include "QX/iterate/QX_ParallelRun.h"
#include "QX/pixelops/QX_PixelopsSlots.h"

namespace qx {

namespace {

struct PremulRectFunctor {
    PremulRectFn* routine;
    bool forward;
    QX_LayerDef* world;

    int operator()(const M_LRect& band, QX_ProgressInfo* info) const { return routine(info, forward, &band, world); }
};

int accelerated_premul_rect(void* effect_ref, bool forward, const M_LRect* area, QX_LayerDef* world) {
    if (is_gpu_world(world)) return report_gpu_in_wrapper(Place::premul_bands);
    PremulRectFn* const saved = slot<Slot::PremulRect>(acceleration.saved);
    const M_LRect rect = area_or_all(area, world);
    if (is_narrow(rect)) return guarded([&] { return saved(effect_ref, forward, area, world); });
    return run_bands(static_cast<const QX_ProgressInfo*>(effect_ref), rect, PremulRectFunctor{saved, forward, world});
}

}  // namespace

void add_premul_bands(void** routines) { set_slot<Slot::PremulRect>(&accelerated_premul_rect, routines); }

}  // namespace qx
