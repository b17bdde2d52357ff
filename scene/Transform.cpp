// SPDX-License-Identifier: Apache-2.0
#include "scene/Transform.h"

#include "QX/geometry/QX_TransformWorld.h"
#include "QX/indep/QX_Errors.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Progress.h"

namespace qx::tool {
namespace {

/// The library counts its own rows; the bar counts those of the background.
struct Rows {
    Progress* progress;
    int height;
    int told = 0;

    static int advance(void* refcon, std::int32_t count, std::int32_t total) {
        auto& rows = *static_cast<Rows*>(refcon);
        if (total > 0) rows.tell(static_cast<int>(std::int64_t{rows.height} * count / total));
        return abort(nullptr);
    }
    static int abort(void*) { return interrupted() ? kQX_Interrupted : 0; }
    void tell(int count) {
        if (progress != nullptr) progress->advance(count - told);
        told = count;
    }
};

}  // namespace

int transform(const Transfer& t, QX_World& background, Progress* progress) {
    QX_LayerDef layer{}, target{};
    t.layer->FillOutEffectWorld(&layer);
    background.FillOutEffectWorld(&target);
    QX_MaskWorld mask{};
    if (t.mask != nullptr) {
        t.mask->FillOutEffectWorld(&mask.world);
        mask.x = t.mask_x;
        mask.y = t.mask_y;
        mask.flags = t.mask_kind;
    }
    const QX_CompositeModePlus mode(t.mode, t.opacity, nullptr, t.rgb_only, t.seed);
    Rows rows{progress, background.height};
    const QX_ProgressInfo info{&rows, Rows::abort, Rows::advance};
    const int code =
        QX_TransformWorld(&info, t.quality, 0, t.field, &layer, &mode, t.tables, t.mask == nullptr ? nullptr : &mask,
                          t.matrices.data(), static_cast<int>(t.matrices.size()), true, nullptr, &target);
    if (interrupted()) return kQX_Interrupted;  // a code of the layer's own may have come first
    if (code == 0) rows.tell(rows.height);
    return code;
}

}  // namespace qx::tool
