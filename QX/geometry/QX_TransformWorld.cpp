// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_TransformWorld.h"

#include <algorithm>

#include "QX/geometry/QX_PathRowsT.h"
#include "QX/geometry/QX_Placement.h"
#include "QX/geometry/QX_TransformCall.h"
#include "QX/geometry/QX_TransformLoop.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Progress.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WithDepth.h"

namespace qx {

namespace {

/// What the caller's rectangle leaves of the destination.
M_LRect wanted_rect(const QX_LayerDef& dst, const M_LRect* dest_rect) {
    M_LRect rect = whole_of(dst);
    if (dest_rect != nullptr) M_SectLRect(*dest_rect, rect, &rect);
    return rect;
}

/// The part of the destination that the call may change.
M_LRect reach(const TransformCall& call, const Motion& motion) {
    M_LRect clipped = wanted_rect(*call.dst, call.dest_rect);
    if (call.mask != nullptr && mask_clips(*call.mask)) M_SectLRect(clipped, mask_bounds(*call.mask), &clipped);
    return affected_rect(call.matrices, motion, clipped, whole_of(*call.src));
}

/// Rows between two questions to the caller, as a mask of the row's index.
std::int32_t quiet_rows(const TransformCall& call) {
    const std::int32_t rows = call.matrices.count > 1 ? 7 : call.quality == 0 ? 63 : 31;
    return call.field != 0 ? 2 * rows + 1 : rows;
}

/// Samples of a pixel while the shutter is open: two matrices make a straight line, more make a sub-frame each. The
/// closing one is not sampled.
std::int32_t motion_steps(const TransformCall& call) {
    if (call.matrices.count != 2) return call.matrices.count - 1;
    return call.quality == 0 ? 8 : 16;
}

/// Transfers ask the progress function alone; as a transform the call asks to abort where there is none.
QX_ProgressInfo asking_for(const QX_ProgressInfo& progress) {
    return {const_cast<QX_ProgressInfo*>(&progress), nullptr, [](void* refcon, std::int32_t count, std::int32_t total) {
                return ask_progress(static_cast<const QX_ProgressInfo*>(refcon), count, total);
            }};
}

/// A layer that only moves by whole pixels is a transfer: nothing is sampled.
template <class Pixel> int shift_pixels(const TransformCall& call, const M_LRect& rect, FixedPoint by, int width) {
    const QX_ProgressInfo asking = call.progress != nullptr ? asking_for(*call.progress) : QX_ProgressInfo{};
    CompositeCall transfer = call;
    transfer.progress = &asking;
    const CompositeRun<Pixel> run(transfer, width);
    constexpr FixedPoint half{kFixedHalf, kFixedHalf};
    const FixedPoint moved = by + half;
    const M_LRect from = M_OffsetLRect(rect, -(moved.x >> 16), -(moved.y >> 16));
    return transfer_rows(run, from, rect.left, rect.top);
}

/// Chooses the kind of row, once.
template <class Pixel>
int draw_rows(const TransformCall& call, const CompositeRun<Pixel>& run, const M_LRect& rect, const Motion& motion,
              const Footprint& footprint) {
    const TransformRows where{quiet_rows(call), rect};
    const std::int32_t left = rect.left, top = rect.top;
    const RowGeometry start = row_geometry(motion.start.to_src, left, top);
    const RowGeometry end = row_geometry(motion.end.to_src, left, top);
    QX_SampPB block{};
    footprint.write_to(&block);
    block.src = call.src;
    block.motion_steps = motion_steps(call);
    const LinearPaths paths(start, end, std::max(block.motion_steps, 1));
    if (call.quality == 0) {
        if (!motion.moving)
            return composite_rows(run, where, StillDraftRows<Pixel>(*call.src, start, nearest_run_form<Pixel>()));
        return composite_rows(run, where, MovingDraftRows<Pixel>(*call.src, paths));
    }
    const auto samplers = QXp_GetSamplerSet<Pixel>(call.quality);
    if (!motion.moving) {
        return composite_rows(run, where, StillQualityRows<Pixel>(samplers, block, footprint.averages(), start));
    }
    if (call.matrices.count != 2 && moves_unevenly(call.matrices, motion)) {
        const SubFrames frames(run.scratch, call.matrices, motion.start, block, left, top);
        return composite_rows(run, where, PathRows<Pixel>(samplers, frames));
    }
    return composite_rows(run, where, MovingQualityRows<Pixel>(samplers, block, footprint.averages(), paths));
}

template <class Pixel> int draw(const TransformCall& call) {
    const Motion motion(call.matrices);
    if (!motion.starts && !call.matrices.src2dst) return kQX_NoError;
    const Footprint footprint(motion.start.to_dst);
    if (!motion.starts && !footprint.degenerate) return kQX_NoError;
    const M_LRect rect = reach(call, motion);
    if (M_EmptyLRect(rect)) return kQX_NoError;
    if (footprint.degenerate) {  // a layer without size draws nothing but this
        return clears_alpha_outside(call.mode->xfer) ? clear_alpha_around({}, call.dst) : kQX_NoError;
    }
    const M_LRect wanted = wanted_rect(*call.dst, call.dest_rect);
    const int width = wanted.right - wanted.left;
    if (!motion.moving && is_pixel_shift(motion.start.to_dst, footprint.translation, call.quality)) {
        return shift_pixels<Pixel>(call, rect, footprint.translation, width);
    }
    const CompositeRun<Pixel> run(call, width);
    return draw_rows(call, run, rect, motion, footprint);
}

int check(const TransformCall& call) {
    const bool has_matrices = call.matrices.at != nullptr && call.matrices.count > 0;
    if (const int code = check_composite(Place::transform, call, has_matrices,
                                         "QX_TransformWorld requires src and dst worlds to have same bit depth",
                                         "QX_TransformWorld requires mask and dst worlds to have same bit depth")) {
        return code;
    }
    if (call.matrices.count <= kQX_MaxSubFrames + 1) return kQX_NoError;
    report_text(Place::transform, Text::invalid_parameter);
    return kQX_BadParameter;
}

int run(const TransformCall& call) {
    return guarded([&] {
        if (const int code = check(call)) return code;
        return with_depth(*call.dst, Place::transform, [&]<class Pixel>() { return draw<Pixel>(call); });
    });
}

}  // namespace

}  // namespace qx

int QX_TransformWorld(const QX_ProgressInfo* progress, int quality, int flags, int field, QX_LayerDef* src_world,
                      const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                      const M_Matrix3* matrices, int num_matrices, bool src2dst_matrix, const M_LRect* dest_rect,
                      QX_LayerDef* dst_world) {
    const auto routine = qx::slot<qx::Slot::TransformWorld>();
    M_LRect rect;
    if (routine != &QX_TransformWorld_S) {  // bands are cut from what the layer reaches
        if (dst_world == nullptr) return qx::report_failed_verification(qx::Place::transform, "dst_world is NULL");
        const qx::TransformCall call{{progress, field, src_world, mode, tables, mask, nullptr, dst_world},
                                     quality,
                                     {matrices, num_matrices, src2dst_matrix},
                                     dest_rect};
        if (const int code = qx::guarded([&] { return qx::check(call); })) return code;
        const qx::Motion motion(call.matrices);
        if (motion.starts) {
            rect = qx::reach(call, motion);
            if (M_EmptyLRect(rect)) return kQX_NoError;
            dest_rect = &rect;
        }
    }
    return routine(progress, quality, flags, field, src_world, mode, tables, mask, matrices, num_matrices,
                   src2dst_matrix, dest_rect, dst_world);
}

int QX_TransformWorld_S(const QX_ProgressInfo* progress, int quality, int flags, int field, QX_LayerDef* src_world,
                        const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                        const QX_MaskWorld* mask, const M_Matrix3* matrices, int num_matrices, bool src2dst_matrix,
                        const M_LRect* dest_rect, QX_LayerDef* dst_world) {
    return QX_TransformWorldPlus(progress, quality, flags, field, src_world, mode, tables, mask, nullptr, matrices,
                                 num_matrices, src2dst_matrix, dest_rect, dst_world);
}

int QX_TransformWorldPlus(const QX_ProgressInfo* progress, int quality, int, int field, QX_LayerDef* src_world,
                          const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                          const QX_MaskWorld* mask, QX_ScratchBlock* scratch, const M_Matrix3* matrices,
                          int num_matrices, bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst_world) {
    return qx::run({{progress, field, src_world, mode, tables, mask, scratch, dst_world},
                    quality,
                    {matrices, num_matrices, src2dst_matrix},
                    dest_rect});
}
