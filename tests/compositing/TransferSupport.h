// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/support/Test.h"

namespace qx::test {

/// All numbers that have a mode, from `first` on.
inline std::vector<int> modes_from(int first) {
    std::vector<int> all;
    for (int xfer = first; xfer <= kQX_LastMode; ++xfer) {
        if (QX_IsTransferMode(xfer)) all.push_back(xfer);
    }
    return all;
}
inline std::string name_of(int xfer) {
#define X(number, name) \
    if (xfer == number) return #name " (" #number ")";
    QX_TRANSFER_MODES(X)
#undef X
    return "none";
}

/// Floats agree by their bits, save that one NaN is as good as another.
template <class Pixel> bool same_pixel(const Pixel& a, const Pixel& b) {
    const auto same = [](auto x, auto y) { return (x != x && y != y) || std::memcmp(&x, &y, sizeof x) == 0; };
    return same(a.alpha, b.alpha) && same(a.red, b.red) && same(a.green, b.green) && same(a.blue, b.blue);
}

inline QX_LinearBlendingTables tables_of_gamma(float gamma) {
    QX_LinearBlendingTables tables;
    QX_BuildGammaBlendingTables(gamma, &tables);
    return tables;
}

/// The arguments of a transfer, with what is usual as default.
struct TransferCall {
    QX_CompositeModePlus mode = mode_of(xfer_over);
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
