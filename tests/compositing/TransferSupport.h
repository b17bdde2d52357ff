// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

namespace qx::test {

/// The arguments of a transfer, with what is usual as default.
struct TransferCall {
    QX_CompositeModePlus mode{xfer_over, 1.0f, nullptr, false, 1};
    M_LRect src_rect{0, 0, 1 << 20, 1 << 20};
    const QX_LinearBlendingTables* tables = nullptr;
    const QX_MaskWorld* mask = nullptr;
    const QX_ProgressInfo* progress = nullptr;
    int field = 0, dest_x = 0, dest_y = 0;

    int operator()(QX_LayerDef* src, QX_LayerDef* dst) const {
        return QX_TransferRect(progress, 1, 0, field, &src_rect, src, &mode, tables, mask, dest_x, dest_y, dst);
    }
    int with_scratch(QX_LayerDef* src, QX_LayerDef* dst, QX_ScratchBlock* scratch) const {
        return QX_TransferRectPlus(progress, 1, 0, field, &src_rect, src, &mode, tables, mask, scratch, dest_x, dest_y,
                                   dst);
    }
};

}  // namespace qx::test
