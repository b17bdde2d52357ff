// SPDX-License-Identifier: Apache-2.0
#include "scene/Transfer.h"

namespace qx::scene {

TransferRecords::TransferRecords(const Transfer& t, const QX_World& onto)
    : mode(t.mode, t.opacity, nullptr, t.rgb_only, t.seed), masked_(t.mask != nullptr) {
    t.layer->FillOutEffectWorld(&layer);
    onto.FillOutEffectWorld(&background);
    if (!masked_) return;
    t.mask->FillOutEffectWorld(&mask_.world);
    mask_.x = t.mask_x;
    mask_.y = t.mask_y;
    mask_.flags = t.mask_kind;
}

}  // namespace qx::scene
