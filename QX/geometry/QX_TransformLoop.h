// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_MaskRow.h"
#include "QX/compositing/QX_TransferLoop.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Progress.h"

namespace qx {

/// One transform of a depth: where its rows go, and how they are put there.
template <class Pixel> struct TransformTarget {
    QX_WorldX<Pixel>& dst;
    QX_BlendingMode<Pixel> mode;
    const QX_LinearBlendingTables* tables;  ///< may be null
    const QX_MaskWorld* mask;               ///< may be null
    const QX_ScratchBlock& scratch;
    const QX_ProgressInfo* progress;  ///< may be null
    int field;
    std::int32_t quiet_rows;  ///< asks after rows whose index has none of these bits
    M_LRect rect;             ///< in the destination; not empty
};

/// Modes that change a destination under a clear row.
constexpr bool draws_clear_rows(int xfer) {
    return xfer == xfer_replace || xfer == xfer_premul_over || clears_alpha_outside(xfer);
}

/// True when `xfer_over` of an opaque row is a copy.
template <class Pixel> bool copies_opaque_rows(const TransformTarget<Pixel>& t) {
    return t.mode.xfer == xfer_over && t.mask == nullptr && t.mode.rgb_only == 0 &&
           t.mode.opacity >= DepthOf<Pixel>::full;
}

/// Samples row by row into the spare row of the scratch and composites each.
/// @param rows  sample(count, out) gives the sum of a row's alphas; advance() goes to the next row
/// @return 0, 5 for an unknown mode (nothing is written), or the code of a row or of the progress function
template <class Pixel, class Rows> int composite_rows(const TransformTarget<Pixel>& t, Rows rows) {
    QX_BlendModeDescriptor<Pixel> descriptor(t.mode, t.mask != nullptr, t.tables);
    if (descriptor.row == nullptr) return kQX_UnimplementedMode;
    if (clears_alpha_outside(t.mode.xfer)) {
        if (const int code = clear_alpha_around(t.rect, &t.dst)) return code;
    }
    const auto drive = row_driver<Pixel>();
    const std::int32_t count = t.rect.right - t.rect.left, total = t.rect.bottom - t.rect.top;
    const auto opaque =
        static_cast<QX_AlphaSumOf<Pixel>>(count) * static_cast<QX_AlphaSumOf<Pixel>>(DepthOf<Pixel>::full);
    auto* const row = static_cast<Pixel*>(t.scratch.spare_row);
    MaskRows<Pixel> mask(t.mask != nullptr ? *t.mask : QX_MaskWorld{}, static_cast<Pixel*>(t.scratch.mask_row));
    RowSeed seed(t.mode.rand_seed, 0, t.rect.top);
    int code = kQX_NoError;
    for (std::int32_t i = 0; i < total && code == kQX_NoError; ++i) {
        const std::int32_t y = t.rect.top + i;
        if (keeps_row(t.field, y)) {
            const auto alphas = rows.sample(count, row);
            Pixel* const to = t.dst.Row(y) + t.rect.left;
            if (alphas == opaque && copies_opaque_rows(t)) {
                std::copy_n(row, count, to);
            } else if (alphas != 0 || draws_clear_rows(t.mode.xfer)) {
                descriptor.mode.rand_seed = seed.value();
                const Pixel* coverage = t.mask != nullptr ? mask.row(t.rect.left, t.rect.right, y) : nullptr;
                code = drive(count, &descriptor, row, coverage, to,
                             static_cast<QX_ChannelOf<Pixel>*>(t.scratch.alpha_row));
            }
        }
        rows.advance();
        seed.advance();
        if (code == kQX_NoError && (i & t.quiet_rows) == 0) code = ask_progress(t.progress, i, total);
    }
    return code;
}

}  // namespace qx
