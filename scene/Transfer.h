// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/indep/QX_Records.h"
#include "QX/world/QX_World.h"
#include "platform/M_Matrix.h"

namespace qx::scene {

/// One layer's way onto the background.
struct Transfer {
    const QX_World* layer = nullptr;
    int x = 0, y = 0;  ///< where its left top corner lands
    int mode = xfer_over;
    float opacity = 1;
    bool rgb_only = false;
    int seed = 0;
    int field = 0;  ///< 0 all rows, 1 even, 2 odd
    const QX_LinearBlendingTables* tables = nullptr;
    const QX_World* mask = nullptr;
    int mask_x = 0, mask_y = 0;
    QX_MaskKind mask_kind = kQX_MaskAlpha;
    std::vector<M_Matrix3> matrices;  ///< from the layer to the background, in time order; none places it at (x, y)
    int quality = 1;                  ///< of transforms: 0 nearest, 1 bilinear, 2 bicubic
};

/// The same as the library takes it.
class TransferRecords {
public:
    TransferRecords(const Transfer& transfer, const QX_World& onto);
    const QX_MaskWorld* mask() const { return masked_ ? &mask_ : nullptr; }

    QX_LayerDef layer{}, background{};
    QX_CompositeModePlus mode;

private:
    QX_MaskWorld mask_{};
    bool masked_;
};

}  // namespace qx::scene
