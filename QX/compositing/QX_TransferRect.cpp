// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TransferRect.h"

#include <algorithm>

#include "QX/compositing/QX_CompositeCall.h"
#include "QX/compositing/QX_TransferLoop.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WithDepth.h"

namespace {

using namespace qx;

/// Which pixels of the source land where.
struct Geometry {
    const M_LRect* src_rect;
    int dest_x, dest_y;
};

template <class Pixel> int transfer(const CompositeCall& call, const Geometry& geometry) {
    const M_LRect& rect = *geometry.src_rect;
    const std::int64_t asked = std::int64_t{rect.right} - rect.left;
    const CompositeRun<Pixel> run(call,
                                  static_cast<int>(std::clamp<std::int64_t>(asked, 0, std::max(call.src->width, 0))));
    return transfer_rows(run, rect, geometry.dest_x, geometry.dest_y);
}

int run(const CompositeCall& call, const Geometry& geometry, const char* depths_differ) {
    return guarded([&] {
        if (const int code = check_composite(Place::transfer, call, geometry.src_rect != nullptr, depths_differ,
                                             "QX_TransferRect requires mask and dst worlds to have same bit depth")) {
            return code;
        }
        return with_depth(*call.dst, Place::transfer, [&]<class Pixel>() { return transfer<Pixel>(call, geometry); });
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
    return run({progress, field, src_world, mode, tables, mask, nullptr, dst_world}, {src_rect, dest_x, dest_y},
               "QX_TransferRect requires src and dst worlds to have same bit depth");
}

int QX_TransferRectPlus(const QX_ProgressInfo* progress, int, int, int field, const M_LRect* src_rect,
                        QX_LayerDef* src_world, const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                        const QX_MaskWorld* mask, QX_ScratchBlock* scratch, int dest_x, int dest_y,
                        QX_LayerDef* dst_world) {
    return run({progress, field, src_world, mode, tables, mask, scratch, dst_world}, {src_rect, dest_x, dest_y},
               "QX_TransferRectPlus requires src and dst worlds to have same bit depth");
}
