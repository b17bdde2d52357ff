// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TransferRect.h"

#include <algorithm>

#include "QX/compositing/QX_CompositeCheck.h"
#include "QX/compositing/QX_TransferLoop.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/world/QX_StackWorld.h"

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

template <class Pixel> int transfer(const Call& call, QX_WorldX<Pixel>& dst) {
    QX_WorldX<Pixel> src(call.src, false);
    QX_ScratchBlock shared{};
    if (call.scratch == nullptr) {
        const std::int64_t asked = std::int64_t{call.src_rect->right} - call.src_rect->left;
        const int width = static_cast<int>(std::clamp<std::int64_t>(asked, 0, std::max(src.width, 0)));
        throw_if(QXp_ReallocScratch(width, static_cast<int>(sizeof(QX_ChannelOf<Pixel>)), false, &shared));
    }
    const Transfer<Pixel> loop{src,           dst,       QX_BlendingMode<Pixel>(*call.mode),
                               call.tables,   call.mask, call.scratch != nullptr ? *call.scratch : shared,
                               call.progress, call.field};
    return transfer_rows(loop, *call.src_rect, call.dest_x, call.dest_y);
}

int run(const Call& call, const char* depths_differ) {
    return guarded([&] {
        const CompositeRecords records{call.src, call.dst, call.mask, call.mode, call.src_rect != nullptr};
        if (const int code = check_composite(kSite, records, depths_differ,
                                             "QX_TransferRect requires mask and dst worlds to have same bit depth")) {
            return code;
        }
        return with_stack_world(call.dst, kSite, "Unknown world bitdepth in##CONDITIONNAME",
                                [&](auto& dst) { return transfer(call, dst); });
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
