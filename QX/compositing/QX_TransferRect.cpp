// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TransferRect.h"

#include <algorithm>

#include "QX/compositing/QX_TransferLoop.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WorldDepth.h"

namespace {

using namespace qx;

constexpr int kSite = 95;

/// The arguments of a call, as both entries take them.
struct Call {
    const QX_ProgressInfo* progress;
    int field;
    const M_LRect* src_rect;
    QX_LayerDef* src;
    const QX_CompositeModePlus* mode;
    const QX_LinearBlendingTables* tables;
    const QX_MaskWorld* mask;
    QX_ScratchBlock* scratch;  ///< null takes the shared block
    int dest_x, dest_y;
    QX_LayerDef* dst;
};

template <class Pixel> int run_at_depth(const Call& call) {
    QX_WorldX<Pixel> src(call.src, false), dst(call.dst, false);
    QX_ScratchBlock shared{};
    if (call.scratch == nullptr) {
        const std::int64_t asked = std::int64_t{call.src_rect->right} - call.src_rect->left;
        const int width = static_cast<int>(std::clamp<std::int64_t>(asked, 0, std::max(src.width, 0)));
        throw_if(QXp_ReallocScratch(width, static_cast<int>(sizeof(QX_ChannelOf<Pixel>)), false, &shared));
    }
    const Transfer<Pixel> transfer{src,           dst,       QX_BlendingMode<Pixel>(*call.mode),
                                   call.tables,   call.mask, call.scratch != nullptr ? *call.scratch : shared,
                                   call.progress, call.field};
    return transfer_rows(transfer, *call.src_rect, call.dest_x, call.dest_y);
}

/// What can be wrong with the records, in a fixed order.
int check(const Call& call, const char* depths_differ) {
    const QX_LayerDef* mask = call.mask != nullptr ? &call.mask->world : nullptr;
    if (is_gpu_world(call.src) || is_gpu_world(call.dst) || is_gpu_world(mask)) return report_gpu_world(kSite);
    const auto has_pixels = [](const QX_LayerDef* world) { return world != nullptr && world->data != nullptr; };
    if (!has_pixels(call.src) || !has_pixels(call.dst) || (mask != nullptr && !has_pixels(mask)) ||
        call.mode == nullptr || call.src_rect == nullptr) {
        return report_bad_parameter(kSite);
    }
    if (call.mode->xfer == xfer_mask_crossfade && mask == nullptr) return report_bad_parameter(kSite);
    const int depth = QXp_WorldDepth(call.dst);
    if (QXp_WorldDepth(call.src) != depth) return report_failed_verification(kSite, depths_differ);
    if (mask != nullptr && QXp_WorldDepth(mask) != depth) {
        return report_failed_verification(kSite, "QX_TransferRect requires mask and dst worlds to have same bit depth");
    }
    return kQX_NoError;
}

int run(const Call& call, const char* depths_differ) {
    return guarded([&] {
        if (const int code = check(call, depths_differ)) return code;
        switch (QXp_WorldDepth(call.dst)) {
            case 8:
                return run_at_depth<QX_Pixel8>(call);
            case 16:
                return run_at_depth<QX_Pixel16>(call);
            case 32:
                return run_at_depth<QX_PixelFloat>(call);
            default:
                return report_failed_verification(kSite, "Unknown world bitdepth in##CONDITIONNAME");
        }
    });
}

}  // namespace

int QX_TransferRect(const QX_ProgressInfo* progress, int quality, int flags, int field, const M_LRect* src_rect,
                    QX_LayerDef* src_world, const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                    const QX_MaskWorld* mask, int dest_x, int dest_y, QX_LayerDef* dst_world) {
    return slot<Slot::TransferRect>()(progress, quality, flags, field, src_rect, src_world, mode, tables, mask, dest_x,
                                      dest_y, dst_world);
}

int QX_TransferRect_S(const QX_ProgressInfo* progress, int, int, int field, const M_LRect* src_rect,
                      QX_LayerDef* src_world, const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                      const QX_MaskWorld* mask, int dest_x, int dest_y, QX_LayerDef* dst_world) {
    return run({progress, field, src_rect, src_world, mode, tables, mask, nullptr, dest_x, dest_y, dst_world},
               "QX_TransferRect requires src and dst worlds to have same bit depth");
}

int QX_TransferRectPlus(const QX_ProgressInfo* progress, int, int, int field, const M_LRect* src_rect,
                        QX_LayerDef* src_world, const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                        const QX_MaskWorld* mask, QX_ScratchBlock* scratch, int dest_x, int dest_y,
                        QX_LayerDef* dst_world) {
    return run({progress, field, src_rect, src_world, mode, tables, mask, scratch, dest_x, dest_y, dst_world},
               "QX_TransferRectPlus requires src and dst worlds to have same bit depth");
}
