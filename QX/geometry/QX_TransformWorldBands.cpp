// SPDX-License-Identifier: Apache-2.0
#include <cstddef>

#include "QX/compositing/QX_TransferLoop.h"
#include "QX/geometry/QX_GeometrySlots.h"
#include "QX/geometry/QX_TransformCall.h"
#include "QX/indep/QX_Area.h"
#include "QX/iterate/QX_ParallelRun.h"

namespace qx {

namespace {

constexpr int kWidestChannel = 4;

/// The saved routine with its arguments, bound by value. Each run has a scratch block of its own.
struct TransformWorldFunctor {
    TransformWorldPlusFn* routine;
    TransformCall call;
    int flags;

    /// Rows are as wide as what is drawn: a caller's rectangle may reach far beyond the destination.
    int run(const M_LRect* area, const M_LRect& rect, const QX_ProgressInfo* info) const {
        const std::size_t room = call.dst != nullptr ? columns_of(clip_to(*call.dst, &rect)) : 0;
        OwnScratch scratch;
        if (const int code = scratch.allocate(static_cast<int>(room), kWidestChannel, true)) return code;
        const MatrixList& matrices = call.matrices;
        return routine(info, call.quality, flags, call.field, call.src, call.mode, call.tables, call.mask,
                       scratch.get(), matrices.at, matrices.count, matrices.src2dst, area, call.dst);
    }
    int operator()(const M_LRect& band, const QX_ProgressInfo* info) const { return run(&band, band, info); }
};

/// A band cannot clear what lies outside its rectangle. A missing mode is the saved routine's to refuse, once.
bool reaches_outside(const QX_CompositeModePlus* mode) { return mode == nullptr || clears_alpha_outside(mode->xfer); }

int accelerated_transform_world(const QX_ProgressInfo* progress, int quality, int flags, int field, QX_LayerDef* src,
                                const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                                const QX_MaskWorld* mask, const M_Matrix3* matrices, int num_matrices,
                                bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst) {
    if (is_gpu_world(src) || is_gpu_world(dst)) return report_gpu_in_wrapper(Place::transform_bands);
    const TransformCall call{{progress, field, src, mode, tables, mask, nullptr, dst},
                             quality,
                             {matrices, num_matrices, src2dst_matrix},
                             dest_rect};
    const TransformWorldFunctor functor{slot<Slot::TransformWorldPlus>(acceleration.saved), call, flags};
    const M_LRect rect = area_or_all(dest_rect, dst);
    if (is_narrow(rect) || reaches_outside(mode)) {
        return guarded([&] { return functor.run(dest_rect, rect, progress); });
    }
    return run_bands(progress, rect, functor);
}

}  // namespace

void add_transform_bands(void** routines) { set_slot<Slot::TransformWorld>(&accelerated_transform_world, routines); }

}  // namespace qx
